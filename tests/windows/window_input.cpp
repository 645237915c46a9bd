#include "window_input.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <dlgs.h>

#include "ui/resource.h"

namespace quellix::test {
namespace {

// The main window's progress bar, from any window of the program; null where it has none.
HWND BarOf(HWND window) {
  for (HWND at = GetAncestor(window, GA_ROOT); at; at = GetWindow(at, GW_OWNER)) {
    if (const HWND bar = GetDlgItem(at, pgClean)) return bar;
  }
  return nullptr;
}

// The window that holds a control takes input.
bool TakesInput(HWND control) {
  return IsWindowEnabled(control) && IsWindowEnabled(GetAncestor(control, GA_ROOT));
}

}  // namespace

// What is posted arrives in order, and the bar keeps a step that the program has no use for: it
// tells how far that has come.
void PostAndAwait(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  static WPARAM step = 1000;
  const HWND bar = BarOf(window);
  PostMessageW(window, message, wparam, lparam);
  if (!bar) return;
  PostMessageW(bar, PBM_SETSTEP, ++step, 0);
  Await([&] {
    return !IsWindow(bar) || SendMessageW(bar, PBM_GETSTEP, 0, 0) == static_cast<LRESULT>(step);
  });
}

// Most comes within some milliseconds.
bool Await(const std::function<bool()>& condition) {
  for (DWORD waited = 0, pause = 1; waited < 60000; waited += pause) {
    if (condition()) return true;
    Sleep(pause);
    if (waited > 30) pause = 20;
  }
  return false;
}

std::wstring TextOf(HWND control) {
  std::wstring text(static_cast<size_t>(SendMessageW(control, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  const LRESULT length =
      SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}

bool IsOfClass(HWND window, std::wstring_view name) {
  wchar_t text[50] = {};
  GetClassNameW(window, text, 50);
  return text == name;
}

std::wstring Shown(HWND window, int id) { return TextOf(GetDlgItem(window, id)); }
bool IsEnabled(HWND window, int id) { return IsWindowEnabled(GetDlgItem(window, id)) != FALSE; }
bool AwaitEnabled(HWND window, int id) {
  return Await([&] { return IsEnabled(window, id); });
}
bool AwaitText(HWND window, int id, std::wstring_view text) {
  return Await([&] { return Shown(window, id) == text; });
}
bool AwaitPart(HWND window, int id, std::wstring_view part) {
  return Await([&] { return Shown(window, id).find(part) != std::wstring::npos; });
}
void Type(HWND window, int id, const std::wstring& text) {
  SendMessageW(GetDlgItem(window, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}
void Click(HWND window, int id) { SendMessageW(AwaitControl(window, id), BM_CLICK, 0, 0); }

bool AwaitGone(HWND window) {
  return Await([&] { return !IsWindow(window); });
}

bool CloseAndAwait(HWND window) {
  SendMessageW(window, WM_CLOSE, 0, 0);
  return AwaitGone(window);
}

int CountRows(HWND list) { return static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)); }
bool AwaitRows(HWND list, int count) {
  return Await([&] { return CountRows(list) == count; });
}

// With a list of earlier names, or without.
void TypeFileName(HWND dialog, const std::wstring& path) {
  EXPECT_TRUE(Await([&] { return GetDlgItem(dialog, cmb13) || GetDlgItem(dialog, edt1); }));
  Type(dialog, GetDlgItem(dialog, cmb13) ? cmb13 : edt1, path);
}

std::wstring RegistryText(HKEY root, const std::wstring& key, const wchar_t* name) {
  wchar_t text[600] = {};
  DWORD size = sizeof(text) - sizeof(wchar_t);
  return RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS
             ? text
             : L"<missing>";
}

void SetRegistryText(HKEY root, const std::wstring& key, const wchar_t* name,
                     const std::wstring& text) {
  RegSetKeyValueW(root, key.c_str(), name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

namespace {

// Pages are dialogs within the window.
void CheckKeys(HWND parent, const std::set<HWND>& reached, std::set<wchar_t>& letters) {
  for (HWND at = GetWindow(parent, GW_CHILD); at; at = GetWindow(at, GW_HWNDNEXT)) {
    if (!IsWindowVisible(at)) continue;
    if (IsOfClass(at, L"#32770")) CheckKeys(at, reached, letters);
    const std::wstring text = TextOf(at);
    SCOPED_TRACE(testing::PrintToString(text) + " " + std::to_string(GetDlgCtrlID(at)));
    const LRESULT code = SendMessageW(at, WM_GETDLGCODE, 0, 0);
    const bool is_told_of = (code & (DLGC_STATIC | DLGC_RADIOBUTTON)) != 0 ||
                            IsOfClass(at, PROGRESS_CLASSW) || IsOfClass(at, L"#32770");
    EXPECT_TRUE(is_told_of || !IsWindowEnabled(at) || reached.contains(at));
    const size_t ampersand = text.find(L'&');
    if (ampersand == text.npos || text[ampersand + 1] == L'&') continue;
    const auto letter = static_cast<wchar_t>(towlower(text[ampersand + 1]));
    EXPECT_TRUE(letters.insert(letter).second);
  }
}

}  // namespace

size_t ExpectKeys(HWND window, std::set<wchar_t> letters) {
  SendMessageW(window, WM_NULL, 0, 0);  // taken between two steps of the window, not within one
  std::set<HWND> reached;
  for (HWND at = GetNextDlgTabItem(window, nullptr, FALSE); at && reached.insert(at).second;)
    at = GetNextDlgTabItem(window, at, FALSE);
  CheckKeys(window, reached, letters);
  return letters.size();
}

void AwaitInput(HWND control) {
  if (Await([&] { return TakesInput(control); })) return;
  ADD_FAILURE() << "cannot be used: " << testing::PrintToString(TextOf(control));
}

HWND AwaitControl(HWND window, int id) {
  HWND control = nullptr;
  if (!Await([&] { return (control = GetDlgItem(window, id)) && TakesInput(control); })) {
    ADD_FAILURE() << "cannot be used: control " << id << " of "
                  << testing::PrintToString(TextOf(window));
  }
  return control;
}

void PressIn(HWND window, int id) {
  const HWND button = GetDlgItem(window, id);
  AwaitInput(button ? button : window);
  PostAndAwait(window, WM_COMMAND, static_cast<WPARAM>(id), reinterpret_cast<LPARAM>(button));
}

void Press(HWND button) {
  AwaitInput(button);
  PostAndAwait(button, BM_CLICK, 0, 0);
}

HWND FocusOf(HWND window) {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
  return thread.hwndFocus;
}

bool AwaitFocus(HWND window, int control) {
  return Await([&] { return FocusOf(window) && FocusOf(window) == GetDlgItem(window, control); });
}

void PressKeys(HWND window, const std::vector<WORD>& keys) {
  EXPECT_TRUE(Await([&] {
    SetForegroundWindow(window);
    return GetForegroundWindow() == window && GetAncestor(FocusOf(window), GA_ROOT) == window;
  })) << "does not come to the front: "
      << testing::PrintToString(TextOf(window));
  std::vector<INPUT> strokes;
  for (const DWORD flags : {DWORD{0}, DWORD{KEYEVENTF_KEYUP}}) {
    for (const WORD key : keys) {
      INPUT stroke{};
      stroke.type = INPUT_KEYBOARD;
      stroke.ki.wVk = key;
      stroke.ki.dwFlags = flags;
      strokes.push_back(stroke);
    }
  }
  SendInput(static_cast<UINT>(strokes.size()), strokes.data(), sizeof(INPUT));
}

// Letters and digits have the numbers of their keys.
void TypeWord(HWND window, std::wstring_view word) {
  for (const wchar_t letter : word) PressKeys(window, {static_cast<WORD>(towupper(letter))});
}

int BoxOf(HWND list, int row) {
  const LRESULT state =
      SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK);
  return static_cast<int>(state >> 12) & 15;
}

}  // namespace quellix::test
