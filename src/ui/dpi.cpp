#include "ui/dpi.h"

namespace quellix {
namespace {

// Found at run time: Windows 7 does not have them.
template <typename Function>
Function User32(const char* name) {
  FARPROC address = GetProcAddress(GetModuleHandleW(L"user32.dll"), name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}

int ScreenDpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi;
}

}  // namespace

int DpiOf(HWND window) {
  const auto get_dpi = User32<UINT(WINAPI*)(HWND)>("GetDpiForWindow");
  const UINT dpi = get_dpi ? get_dpi(window) : 0;
  return dpi != 0 ? static_cast<int>(dpi) : ScreenDpi();
}

void LayOutByOurselves(HWND dialog) {
  constexpr int kDisableAll = 1;
  const auto set_behavior = User32<BOOL(WINAPI*)(HWND, int, int)>("SetDialogDpiChangeBehavior");
  if (set_behavior) set_behavior(dialog, kDisableAll, kDisableAll);
}

}  // namespace quellix
