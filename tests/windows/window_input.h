// What a test reads of a program's controls and does to them, from outside.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ui/windows_api.h"

namespace quellix::test {

// Waits until the condition holds; false when it never does.
bool Await(const std::function<bool()>& condition);

// The tests only press what their user could: these wait until a control is there, and it and its
// window are enabled; it is a failure of the test when that never happens.
void AwaitInput(HWND control);
HWND AwaitControl(HWND window, int id);
// Presses a button of a window that starts something longer, or answers a message box; returns when
// the program has taken that up. An id without control is a menu entry, or Esc.
void PressIn(HWND window, int id);
void Press(HWND button);
// Waits until a control has the keyboard.
bool AwaitFocus(HWND window, int control);
// Presses keys one after another and lets them go together, in the window before all others.
void PressKeys(HWND window, const std::vector<WORD>& keys);
// Presses the keys of letters and digits one after another.
void TypeWord(HWND window, std::wstring_view word);

// Posts a message and waits until the program has taken it up.
void PostAndAwait(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

std::wstring TextOf(HWND control);
bool IsOfClass(HWND window, std::wstring_view name);
// What has the keyboard in the program of a window; null for nothing.
HWND FocusOf(HWND window);

// By the number of a control in a window.
std::wstring Shown(HWND window, int id);
bool IsEnabled(HWND window, int id);
bool AwaitEnabled(HWND window, int id);
bool AwaitText(HWND window, int id, std::wstring_view text);
bool AwaitPart(HWND window, int id, std::wstring_view part);
void Type(HWND window, int id, const std::wstring& text);
void Click(HWND window, int id);

bool AwaitGone(HWND window);
bool CloseAndAwait(HWND window);
int CountRows(HWND list);
bool AwaitRows(HWND list, int count);
// Waits for the field of one of the system's file dialogs that holds the name, and fills it.
void TypeFileName(HWND dialog, const std::wstring& path);
// A text of the user's part of the registry, or of the machine's; "<missing>" without one.
std::wstring RegistryText(HKEY root, const std::wstring& key, const wchar_t* name);
void SetRegistryText(HKEY root, const std::wstring& key, const wchar_t* name,
                     const std::wstring& text);
// Every control that takes input is reached by Tab, and no two have the same letter; `letters` are
// those of the menus. Returns how many letters there are then.
size_t ExpectKeys(HWND window, std::set<wchar_t> letters = {});
// The state image of a row of a list with check boxes: 0 none, 1 not ticked, 2 ticked, 3 in part, 4
// and 5 dimmed.
int BoxOf(HWND list, int row);
inline bool IsRowTicked(HWND list, int row) { return BoxOf(list, row) == 2; }

}  // namespace quellix::test
