#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// A control's text, in UTF-8.
std::string ControlText(HWND control);

// Gives it another text: nothing where it has that already, so that nothing flickers and no screen
// reader repeats itself.
void ShowControlText(HWND control, std::string_view text);

// Lists that windows fill with texts: combo boxes and list boxes.
void FillCombo(HWND combo, const std::vector<std::string>& texts);
void FillList(HWND list, const std::vector<std::string>& texts);

bool IsTicked(HWND dialog, int box);

// Enables a control of a dialog or disables it. Where the keyboard is on one that is disabled it
// moves to another one: a disabled control would swallow it. Null is no control.
void EnableWithFocus(HWND control, bool enabled, HWND other);

}  // namespace quellix
