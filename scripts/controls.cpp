// A look from outside at the windows on the sandbox's screen, for the scripts that drive them:
//
//   controls.exe at TITLE ID      prints the screen position of a control's middle
//   controls.exe text TITLE ID    prints a control's text
//   controls.exe choose TITLE ID  chooses an entry of a window's menu, or presses a button
//   controls.exe place TITLE 0    brings a window to the front; prints its place, as 640x480+10+20
//   controls.exe close TITLE 0    asks a window to close
//
// Ends with 1 while there is no such visible window or control, or the control is disabled.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// The program has a hidden window with the main window's title.
HWND FindVisible(const char* title) {
  HWND window = nullptr;
  do {
    window = FindWindowExA(nullptr, window, nullptr, title);
  } while (window != nullptr && !IsWindowVisible(window));
  return window;
}

HWND FindControl(const char* title, int id) {
  const HWND window = FindVisible(title);
  if (window == nullptr) return nullptr;
  const HWND control = GetDlgItem(window, id);
  return control != nullptr && IsWindowVisible(control) ? control : nullptr;
}

int PrintMiddle(HWND control) {
  RECT area{};
  if (!IsWindowEnabled(control) || !GetWindowRect(control, &area)) return 1;
  // The label stands at the left of a wide control.
  const LONG reach = std::min<LONG>(area.right - area.left, 60);
  std::printf("%ld %ld\n", area.left + reach / 2, (area.top + area.bottom) / 2);
  return 0;
}

int PrintText(HWND control) {
  const LRESULT length = SendMessageW(control, WM_GETTEXTLENGTH, 0, 0);
  std::wstring text(static_cast<size_t>(length) + 1, L'\0');
  const LRESULT got =
      SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  std::string utf8(static_cast<size_t>(got) * 3, '\0');
  utf8.resize(static_cast<size_t>(
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(got), utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr)));
  std::printf("%s\n", utf8.c_str());
  return 0;
}

// Brings it to the front, for its picture.
int PrintPlace(HWND window) {
  SetForegroundWindow(window);
  RECT place{};
  GetWindowRect(window, &place);
  std::printf("%ldx%ld+%ld+%ld\n", place.right - place.left, place.bottom - place.top, place.left,
              place.top);
  return 0;
}

// 2 when the command is none for a window.
int DoToWindow(const std::string& what, HWND window, int id) {
  if (what == "place") return PrintPlace(window);
  const bool chosen = what == "choose";
  if (!chosen && what != "close") return 2;
  PostMessageW(window, chosen ? WM_COMMAND : WM_CLOSE, static_cast<WPARAM>(chosen ? id : 0), 0);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string what = argv[1];
  const int id = std::atoi(argv[3]);
  const HWND window = FindVisible(argv[2]);
  const int done = window == nullptr ? 1 : DoToWindow(what, window, id);
  if (done != 2) return done;
  const HWND control = FindControl(argv[2], id);
  if (control == nullptr) return 1;
  if (what == "at") return PrintMiddle(control);
  return PrintText(control);
}
