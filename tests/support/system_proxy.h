#pragma once

#include <string>

namespace quellix {

// What the system's settings name as the proxy of all servers, for as long as it lives: nothing
// before and after.
class SystemProxy {
 public:
  // Wine's WinHTTP asks no settings for the system's proxy.
  static bool IsHeeded();
  // "127.0.0.1:8080"
  explicit SystemProxy(const std::string& host_and_port);
  ~SystemProxy();
  SystemProxy(const SystemProxy&) = delete;
  SystemProxy& operator=(const SystemProxy&) = delete;
};

}  // namespace quellix
