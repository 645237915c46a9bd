#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// An address of the form scheme://host/..., taken apart. What is escaped stays so.
struct Url {
  std::string scheme;     // in lower case
  std::string user_info;  // what stands before "@"
  std::string host;       // in lower case; an IPv6 address without its brackets
  uint16_t port = 0;      // 0 where none is written
  std::string path;       // begins with "/", or ""
  std::string query;      // with its "?", or ""
  std::string fragment;   // with its "#", or ""

  bool IsWeb() const { return scheme == "http" || scheme == "https"; }
};

// What stands before the first ":" of an address, in lower case; "" where that is no scheme.
std::string SchemeOf(std::string_view address);

// Nothing for what has not that form: no host, blanks or control characters, a port that is none.
// Blanks around it do not count.
std::optional<Url> ParseUrl(std::string_view address);

// As it is asked for: without what is before "@" and behind "#", other scripts escaped.
std::string RequestText(const Url& url);
// Of that what stands behind the host.
std::string RequestTarget(const Url& url);

// What a reference on the page of `base` leads to, such as that of a redirect; nothing where that
// is no address of this form.
std::optional<Url> Resolve(const Url& base, std::string_view reference);

// Whether the host is this machine itself, as far as its name or number tells: 127.0.0.0/8, ::1 and
// localhost.
bool IsThisMachine(const Url& url);

// Whether it may be this machine or one of its own network, as far as its name or number tells:
// also private numbers, those written in unusual ways, and names without a dot. What a name leads
// to is not asked.
bool MayBeNear(const Url& url);

}  // namespace quellix
