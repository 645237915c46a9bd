#include "ui/cls_prev_instance.h"

#include <algorithm>
#include <optional>

#include "engine.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

// Tools of users look for this class to find the program.
constexpr wchar_t kClass[] = L"ThunderRT6Main";

// A main window and, at times, a helper window of an input method have the same owner.
bool IsMainWindow(HWND window, HWND owner) {
  return GetWindow(window, GW_OWNER) == owner &&
         (GetWindowLongW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
}

struct Search {
  HWND owner;
  HWND found;
};

BOOL CALLBACK TakeMainWindow(HWND window, LPARAM parameter) {
  Search& search = *reinterpret_cast<Search*>(parameter);
  if (!IsMainWindow(window, search.owner)) return TRUE;
  search.found = window;
  return FALSE;
}

// Right above its owner, unless a helper window is in between.
HWND MainWindowOf(HWND owner) {
  const HWND above = GetWindow(owner, GW_HWNDPREV);
  if (above && IsMainWindow(above, owner)) return above;
  Search search{owner, nullptr};
  EnumWindows(TakeMainWindow, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND PrevMainWindow() {
  const HWND owner = FindWindowW(kClass, Wide(kApplicationTitle).c_str());
  return owner ? MainWindowOf(owner) : nullptr;
}

constexpr UINT kPatience = 10'000, kBetweenLooks = 100;  // milliseconds

// Of a copy that may be starting just now.
HWND AwaitMainWindow() {
  HWND main = nullptr;
  const ULONGLONG until = GetTickCount64() + kPatience;
  while ((main = PrevMainWindow()) == nullptr && GetTickCount64() < until) Sleep(kBetweenLooks);
  return main;
}

// Nothing when it does not answer.
std::optional<LRESULT> AnswerOf(HWND main, UINT message, LPARAM lparam) {
  DWORD_PTR answer = 0;
  if (!SendMessageTimeoutW(main, message, 0, lparam, SMTO_ABORTIFHUNG, kPatience, &answer))
    return std::nullopt;
  return static_cast<LRESULT>(answer);
}

// What ends programs from outside asks every top-level window; only the main one can answer.
LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != WM_CLOSE) return DefWindowProcW(window, message, wparam, lparam);
  const HWND main = MainWindowOf(window);
  if (main) PostMessageW(main, WM_CLOSE, 0, 0);
  return 0;
}

constexpr ULONG_PTR kPath = 0x51784E50;
constexpr DWORD kLongestPath = 64 << 10;  // bytes

}  // namespace

HiddenOwner::HiddenOwner(std::string_view title) {
  WNDCLASSW description{};
  description.lpfnWndProc = OwnerProcedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.lpszClassName = kClass;
  RegisterClassW(&description);
  window_.Reset(CreateWindowExW(0, kClass, Wide(title).c_str(), WS_POPUP, 0, 0, 0, 0, nullptr,
                                nullptr, description.hInstance, nullptr));
}

UINT clsPrevInstance::CleanMessage() {
  static const UINT message = RegisterWindowMessageW(L"QuellixCleanNow");
  return message;
}

bool clsPrevInstance::AskToClean() {
  const HWND main = AwaitMainWindow();
  return main && AnswerOf(main, CleanMessage(), 0) == kTakenOn;
}

void clsPrevInstance::ActivatePrevInstance() {
  const HWND main = PrevMainWindow();
  if (!main) return;
  ShowWindow(main, SW_SHOW);
  OpenIcon(main);
  // A window that it has opened, such as a question, takes the keyboard in its place.
  SetForegroundWindow(GetLastActivePopup(main));
}

clsPrevInstance::Taken clsPrevInstance::HandOver(const std::wstring& path) {
  const HWND main = AwaitMainWindow();
  if (!main) return Taken::kNoAnswer;
  DWORD process = 0;
  GetWindowThreadProcessId(main, &process);
  AllowSetForegroundWindow(process);
  COPYDATASTRUCT data{kPath, static_cast<DWORD>(path.size() * sizeof(wchar_t)),
                      const_cast<wchar_t*>(path.data())};
  const auto answer = AnswerOf(main, WM_COPYDATA, reinterpret_cast<LPARAM>(&data));
  if (!answer) return Taken::kNoAnswer;
  return *answer == TRUE ? Taken::kYes : Taken::kRefused;
}

std::wstring clsPrevInstance::HandedOver(LPARAM message) {
  const auto* const data = reinterpret_cast<const COPYDATASTRUCT*>(message);
  if (!data || data->dwData != kPath || data->cbData > kLongestPath || !data->lpData) return {};
  const std::wstring path(static_cast<const wchar_t*>(data->lpData),
                          data->cbData / sizeof(wchar_t));
  const bool is_path = data->cbData % sizeof(wchar_t) == 0 &&
                       std::ranges::none_of(path, [](wchar_t letter) { return letter < L' '; });
  return is_path ? path : std::wstring();
}

}  // namespace quellix
