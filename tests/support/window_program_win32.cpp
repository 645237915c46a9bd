// A program with a window, for the tests. It closes as it should, or with an argument never.
#include <windows.h>

namespace {

bool refuses = false;

LRESULT CALLBACK Answer(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_CLOSE && refuses) return 0;
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR arguments, int) {
  refuses = *arguments != '\0';
  WNDCLASSW kind{};
  kind.lpfnWndProc = Answer;
  kind.hInstance = instance;
  kind.lpszClassName = L"qxprogram";
  RegisterClassW(&kind);
  CreateWindowW(kind.lpszClassName, L"A program that runs", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 30,
                30, 300, 120, nullptr, nullptr, instance, nullptr);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  return 0;
}
