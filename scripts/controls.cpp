// A look from outside at the windows on the sandbox's screen, for ./run, which drives them by
// mouse:
//
//   controls.exe at TITLE ID      prints the screen position of a control's middle
//   controls.exe checked TITLE ID prints 1 or 0
//   controls.exe text TITLE ID    prints a control's text
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
  // The label stands at the left of a wide check box.
  const LONG reach = std::min<LONG>(area.right - area.left, 60);
  std::printf("%ld %ld\n", area.left + reach / 2, (area.top + area.bottom) / 2);
  return 0;
}

int PrintChecked(HWND control) {
  std::printf("%d\n", SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0);
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

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const HWND control = FindControl(argv[2], std::atoi(argv[3]));
  if (control == nullptr) return 1;
  const std::string what = argv[1];
  if (what == "at") return PrintMiddle(control);
  if (what == "checked") return PrintChecked(control);
  return PrintText(control);
}
