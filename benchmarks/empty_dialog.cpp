// The smallest program with a dialog, to measure start-up against; with BARE without the common
// controls, too.

#include <windows.h>
// Needs the former.
#include <commctrl.h>

namespace {

INT_PTR CALLBACK OnMessage(HWND window, UINT message, WPARAM, LPARAM) {
  if (message == WM_CLOSE) EndDialog(window, 0);
  return message == WM_INITDIALOG;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
#ifndef BARE
  InitCommonControls();
#endif
  // A template without menu, class, title and controls.
  struct {
    DLGTEMPLATE dialog;
    WORD menu_class_title[3];
  } empty{};
  empty.dialog.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE;
  empty.dialog.cx = 390;
  empty.dialog.cy = 280;
  DialogBoxIndirectParamW(instance, &empty.dialog, nullptr, OnMessage, 0);
  return 0;
}
