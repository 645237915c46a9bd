#include "platform/http.h"

#include "platform/words.h"

namespace quellix {

HttpAnswer Fetch(Http& http, const HttpRequest& request, const Pause& pause, uint64_t total) {
  constexpr int kMilliseconds = 20;
  constexpr size_t kId = 0;
  http.Begin(kId, request);
  while (!pause({.done = http.Received(kId), .total = total, .path = request.url})) {
    auto ended = http.Wait(kMilliseconds);
    if (!ended.empty()) return std::move(ended[0].second);
  }
  http.GiveUp();
  return {};
}

const char* HttpEndText(HttpEnd end) {
  switch (end) {
    case HttpEnd::kAnswered:
      return "";
    case HttpEnd::kBadAddress:
      return Mark("the address is none of the web");
    case HttpEnd::kNoName:
      return Mark("the server's name is not known");
    case HttpEnd::kNoConnection:
      return Mark("the server cannot be reached");
    case HttpEnd::kProxy:
      return Mark("the proxy does not let it through");
    case HttpEnd::kNoTls:
      return Mark("the server speaks no encryption that is known here");
    case HttpEnd::kCertificate:
      return Mark("the server's certificate is not valid");
    case HttpEnd::kTimeout:
      return Mark("the server took too long");
    case HttpEnd::kTooLarge:
      return Mark("the answer is too large");
    case HttpEnd::kCutOff:
      return Mark("the connection broke off");
    case HttpEnd::kNoHttp:
      return Mark("the answer is none of a web server");
    case HttpEnd::kStopped:
      break;
  }
  return Mark("it was stopped");
}

}  // namespace quellix
