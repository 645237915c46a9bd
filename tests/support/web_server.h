#pragma once

#include <cstdlib>
#include <string>

#include "platform/error.h"
#include "platform/http.h"
#include "support/holds.h"

namespace quellix {

// The servers that scripts/with-server runs beside the tests.
struct WebServerTest : testing::Test {
  void SetUp() override {
    if (std::getenv("QUELLIX_HTTP_PORT") == nullptr)
      GTEST_SKIP() << "scripts/with-server runs these tests beside its servers";
    try {
      http = OpenHttp();
    } catch (const NotAvailable& error) {
      GTEST_SKIP() << error.what();
    }
  }
  // Wine tells a certificate that is refused as no encryption, and an answer that never came as
  // none of HTTP.
  static HttpEnd AsHere(HttpEnd end) {
    if (Variable("QUELLIX_SANDBOX").empty()) return end;
    if (end == HttpEnd::kCertificate) return HttpEnd::kNoTls;
    return end == HttpEnd::kCutOff ? HttpEnd::kNoHttp : end;
  }
  static std::string TextHere(HttpEnd end) { return HttpEndText(AsHere(end)); }
  static std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
  }
  static std::string Address(const char* port, const std::string& path,
                             const std::string& scheme = "http") {
    return scheme + "://127.0.0.1:" + Variable(port) + path;
  }
  // Of the server that does what the path says.
  static std::string At(const std::string& path) { return Address("QUELLIX_HTTP_PORT", path); }

  std::unique_ptr<Http> http;
};

}  // namespace quellix
