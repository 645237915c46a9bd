#pragma once

#include "ui/handles.h"

namespace quellix {

// The texts that a window's template has, title, menu and controls, in the language that is spoken.
// Before anything else is written there.
void TranslateWindow(HWND window);

// A menu of the program's resources, likewise.
UniqueMenu LoadProgramMenu(int id);

}  // namespace quellix
