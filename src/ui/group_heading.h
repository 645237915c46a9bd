#pragma once

#include "ui/windows_api.h"

namespace quellix {

// Draws an owner-drawn label as a heading: bold, with a rule behind it.
void DrawGroupHeading(const DRAWITEMSTRUCT& item, HBRUSH background);

}  // namespace quellix
