#pragma once

#include "ui/handles.h"

namespace quellix {

// The shield by which Windows marks what needs administrator rights, in pixels; empty where this
// Windows has none.
UniqueIcon LoadShield(int side);

// Images for a list whose rows have one or not, and stand below each other; empty likewise.
inline constexpr int kShieldImage = 0, kNoShieldImage = 1;
UniqueImages MakeShieldImages(int side);

}  // namespace quellix
