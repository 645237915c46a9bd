#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/pause.h"

namespace quellix {

// How a request ended.
enum class HttpEnd {
  kAnswered,      // the server's answer is there, whatever its status says
  kBadAddress,    // no address of http or https
  kNoName,        // its host has no address
  kNoConnection,  // nobody answers there
  kProxy,         // the proxy is not there, refuses, or wants a password
  kNoTls,         // no encrypted connection came about
  kCertificate,   // the server cannot prove that it is the one that was asked
  kTimeout,       // the time is over
  kTooLarge,      // there is more than was allowed
  kCutOff,        // the connection ended before the answer did
  kNoHttp,        // what came is no answer of a web server; on Windows also where nothing came
  kStopped,       // by the Pause of Fetch
};

struct HttpRequest {
  std::string url;             // http or https
  bool head = false;           // HEAD; else GET
  bool headers_only = false;   // a GET that ends once status and headers are there
  uint64_t limit = 64u << 10;  // bytes of the answer's body; more is kTooLarge
  int seconds = 10;            // for all of it
};

struct HttpAnswer {
  HttpEnd end = HttpEnd::kStopped;
  int status = 0;             // 404; 0 unless answered
  std::string location = {};  // where a redirect leads, as the server wrote it
  std::string body = {};      // whole where it was answered, else ""
  std::string reason = {};    // the system's own words for what went wrong; may be ""
};

// Asks web servers, several at a time. Nothing but the request is sent: no name, no password, no
// cookie, no page that one comes from. Redirects are told and never followed. Addresses of this
// machine are asked without a proxy, unless one is named; certificates are always checked. Nothing
// is asked or kept beyond the life of the object, which ends what is in hand.
class Http {
 public:
  virtual ~Http() = default;

  // Begins a request; `id` names it until it has ended.
  virtual void Begin(size_t id, const HttpRequest& request) = 0;
  // Waits until a request has ended, no longer than that, and hands over those that have. Returns
  // at once when none is in hand.
  virtual std::vector<std::pair<size_t, HttpAnswer>> Wait(int milliseconds) = 0;
  // The bytes of a body that have come so far; 0 for one that is not in hand.
  virtual uint64_t Received(size_t id) = 0;
  // Gives up what is in hand, at once; nothing is handed over of it.
  virtual void GiveUp() = 0;
};

struct HttpOptions {
  std::string proxy;  // "http://proxy.example:8080"; "" for the one that the system's settings name
};

// Throws NotAvailable where this program can ask nobody.
std::unique_ptr<Http> OpenHttp(const HttpOptions& options = {});

// One request alone; kStopped as soon as the pause says so. `total`: the bytes that are expected,
// for the progress; 0 where nobody knows.
HttpAnswer Fetch(Http& http, const HttpRequest& request, const Pause& pause = {},
                 uint64_t total = 0);

// "the server's name is not known": an end as a part of a sentence; "" for kAnswered.
const char* HttpEndText(HttpEnd end);

}  // namespace quellix
