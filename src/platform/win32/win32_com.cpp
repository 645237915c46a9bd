#include "platform/win32/win32_com.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <objbase.h>

#include "platform/win32/lazy_library.h"

namespace quellix {
namespace {

LazyLibrary ole32(L"ole32.dll");

}  // namespace

Win32Com::~Win32Com() {
  if (started_) ole32.Find<decltype(&CoUninitialize)>("CoUninitialize")();
}

void Win32Com::Start() {
  if (started_) return;
  static const auto start = ole32.Find<decltype(&CoInitializeEx)>("CoInitializeEx");
  started_ = SUCCEEDED(start(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
}

}  // namespace quellix
