#include <windows.h>

// After windows.h, whose types it uses.
#include <winhttp.h>

#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_text.h"
#include "support/system_proxy.h"

namespace quellix {
namespace {

void Store(DWORD access, const std::string& proxy) {
  static LazyLibrary winhttp(L"winhttp.dll");
  std::wstring server = Wide(proxy);
  WINHTTP_PROXY_INFO info{access, server.empty() ? nullptr : server.data(), nullptr};
  winhttp.Find<decltype(&WinHttpSetDefaultProxyConfiguration)>(
      "WinHttpSetDefaultProxyConfiguration")(&info);
}

}  // namespace

bool SystemProxy::IsHeeded() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}

SystemProxy::SystemProxy(const std::string& host_and_port) {
  Store(WINHTTP_ACCESS_TYPE_NAMED_PROXY, host_and_port);
}

SystemProxy::~SystemProxy() { Store(WINHTTP_ACCESS_TYPE_NO_PROXY, ""); }

}  // namespace quellix
