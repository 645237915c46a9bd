#include "platform/url.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "platform/text.h"

namespace quellix {
namespace {

bool IsLetter(char character) { return std::isalpha(static_cast<unsigned char>(character)) != 0; }
bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
  }
  return lower;
}

// What a text holds up to one of `ends`, which is taken off it.
std::string_view TakeUntil(std::string_view& text, std::string_view ends) {
  const size_t end = std::min(text.find_first_of(ends), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end);
  return taken;
}

template <typename Number>
std::optional<Number> NumberOf(std::string_view digits) {
  Number number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

// Of names in other scripts every byte is taken.
bool IsHostName(std::string_view host) {
  if (host.empty() || host.front() == '.' || host.find("..") != host.npos) return false;
  return std::ranges::all_of(host, [](char each) {
    return std::isalnum(static_cast<unsigned char>(each)) || static_cast<signed char>(each) < 0 ||
           each == '-' || each == '.' || each == '_';
  });
}

bool IsIpv6(std::string_view host) {
  return host.size() >= 2 && std::ranges::count(host, ':') >= 2 &&
         host.find_first_not_of("0123456789abcdefABCDEF:.") == host.npos;
}

bool ReadPort(std::string_view text, Url& url) {
  if (text.empty()) return true;
  if (text[0] != ':') return false;
  if (text.size() == 1) return true;  // an empty port is none
  const auto port = NumberOf<uint16_t>(text.substr(1));
  url.port = port.value_or(0);
  return url.port != 0;
}

// "user@host:80" or "[::1]:80".
bool ReadAuthority(std::string_view text, Url& url) {
  const size_t at = text.rfind('@');
  if (at != text.npos) {
    url.user_info = text.substr(0, at);
    text.remove_prefix(at + 1);
  }
  if (!text.starts_with('[')) {
    url.host = LowerCase(TakeUntil(text, ":"));
    return IsHostName(url.host) && ReadPort(text, url);
  }
  text.remove_prefix(1);
  url.host = LowerCase(TakeUntil(text, "]"));
  if (text.empty()) return false;
  text.remove_prefix(1);
  return IsIpv6(url.host) && ReadPort(text, url);
}

std::string HostText(const Url& url) {
  std::string text = url.host.find(':') == url.host.npos ? url.host : "[" + url.host + "]";
  if (url.port != 0) text += ":" + std::to_string(url.port);
  return text;
}

// Of four parts; what is no usual number counts as near.
bool IsNearNumber(const std::vector<std::string>& parts) {
  int numbers[4];
  for (size_t i = 0; i < 4; ++i) {
    const bool is_octal = parts[i].size() > 1 && parts[i][0] == '0';
    const auto number = is_octal ? std::nullopt : NumberOf<uint8_t>(parts[i]);
    if (!number) return true;
    numbers[i] = *number;
  }
  const auto [a, b, c, d] = numbers;
  return a == 0 || a == 10 || a == 127 || a >= 224 || (a == 100 && b >= 64 && b < 128) ||
         (a == 169 && b == 254) || (a == 172 && b >= 16 && b < 32) || (a == 192 && b == 168);
}

}  // namespace

std::string SchemeOf(std::string_view address) {
  const size_t colon = address.find(':');
  if (colon == address.npos || colon == 0 || !IsLetter(address[0])) return {};
  const std::string_view scheme = address.substr(0, colon);
  const bool fits = std::ranges::all_of(scheme, [](char each) {
    return IsLetter(each) || IsDigit(each) || each == '+' || each == '-' || each == '.';
  });
  return fits ? LowerCase(scheme) : std::string();
}

std::optional<Url> ParseUrl(std::string_view address) {
  address = TrimBlanks(address);
  const bool has_blanks = std::ranges::any_of(
      address, [](char each) { return static_cast<unsigned char>(each) <= ' ' || each == 127; });
  Url url;
  url.scheme = SchemeOf(address);
  if (has_blanks || url.scheme.empty()) return std::nullopt;
  address.remove_prefix(url.scheme.size() + 1);
  if (!address.starts_with("//")) return std::nullopt;
  address.remove_prefix(2);
  if (!ReadAuthority(TakeUntil(address, "/?#"), url)) return std::nullopt;
  url.path = TakeUntil(address, "?#");
  url.query = TakeUntil(address, "#");
  url.fragment = address;
  return url;
}

std::string RequestTarget(const Url& url) {
  std::string text = url.path.empty() ? "/" : "";
  for (const char each : url.path + url.query) {
    if (static_cast<signed char>(each) >= 0) {
      text += each;
    } else {
      constexpr char kDigits[] = "0123456789ABCDEF";
      text += {'%', kDigits[static_cast<unsigned char>(each) >> 4], kDigits[each & 15]};
    }
  }
  return text;
}

std::string RequestText(const Url& url) {
  return url.scheme + "://" + HostText(url) + RequestTarget(url);
}

std::optional<Url> Resolve(const Url& base, std::string_view reference) {
  reference = TrimBlanks(reference);
  if (!SchemeOf(reference).empty()) return ParseUrl(reference);
  const std::string start = base.scheme + "://" + HostText(base);
  const std::string text(reference);
  if (text.starts_with("//")) return ParseUrl(base.scheme + ":" + text);
  if (text.starts_with("/")) return ParseUrl(start + text);
  const std::string path = base.path.empty() ? "/" : base.path;
  if (text.empty() || text[0] == '#') return ParseUrl(start + path + base.query + text);
  if (text[0] == '?') return ParseUrl(start + path + text);
  // "..", which servers resolve as well, is left as it stands.
  return ParseUrl(start + path.substr(0, path.rfind('/') + 1) + text);
}

bool IsThisMachine(const Url& url) {
  if (url.host == "localhost" || url.host == "::1") return true;
  const std::vector<std::string> parts = Split(url.host, '.');
  return parts.size() == 4 && parts[0] == "127" && std::ranges::all_of(parts, [](const auto& part) {
           return NumberOf<uint8_t>(part).has_value();
         });
}

bool MayBeNear(const Url& url) {
  std::string_view host = url.host;
  while (host.ends_with('.')) host.remove_suffix(1);
  if (host.find(':') != host.npos) return host[0] != '2' && host[0] != '3';  // of IPv6, all else
  const std::vector<std::string> parts = Split(host, '.');
  const bool is_number = !parts.empty() && !parts.back().empty() && IsDigit(parts.back()[0]);
  if (is_number) return parts.size() != 4 || IsNearNumber(parts);
  constexpr std::string_view kNearEnds[] = {"localhost", "local", "internal", "lan", "arpa"};
  return parts.size() < 2 || std::ranges::find(kNearEnds, parts.back()) != std::end(kNearEnds);
}

}  // namespace quellix
