#pragma once

#include "ui/windows_api.h"

namespace quellix {

// The heading of a group of boxes: a button that looks like a link. Space and Enter press it; Enter
// would otherwise press the window's default button.
void MakeGroupHeading(HWND button);
// Draws it, or an owner-drawn label as a heading that cannot be pressed.
void DrawGroupHeading(const DRAWITEMSTRUCT& item, HBRUSH background);

}  // namespace quellix
