// What a screen reader tells of a window's controls.
#pragma once

#include <string>

#include "ui/windows_api.h"

namespace quellix::test {

// The name of a control: its own text, or of what shows values or rows the label right before it;
// "" for none.
std::wstring SpokenName(HWND control);

// Each control of the window, and of the dialogs within it, has a name. Labels that are filled
// while the window is used may be empty.
void ExpectNames(HWND window);

// Each control that is shown has that name, and the role of its kind, in the accessible object that
// the system makes of it, as far as this system knows its kind.
void ExpectSpoken(HWND window);

}  // namespace quellix::test
