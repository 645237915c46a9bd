#include <cstdlib>

#include "support/system_proxy.h"

namespace quellix {

bool SystemProxy::IsHeeded() { return true; }

SystemProxy::SystemProxy(const std::string& host_and_port) {
  setenv("http_proxy", ("http://" + host_and_port).c_str(), 1);
}

SystemProxy::~SystemProxy() { unsetenv("http_proxy"); }

}  // namespace quellix
