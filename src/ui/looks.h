#pragma once

#include "ui/windows_api.h"

namespace quellix {

// How windows are painted: in the system's colours, or in dark ones while Windows has programs use
// them. Where its user needs high contrast there are the system's colours alone.
enum class Paint {
  kPaper,    // behind what is read: lists, fields
  kText,     // on either
  kFace,     // behind controls
  kLine,     // between areas
  kDimmed,   // text of less weight
  kMarked,   // text of what failed, which a sign or a word tells as well
  kHeading,  // text of headings
};

bool IsDark();
// Reads Windows' setting anew; true when something differs.
bool RefreshLooks();
COLORREF ColorOf(Paint paint);
// Not to be deleted.
HBRUSH BrushOf(Paint paint);
// The brush behind text that is painted on it, with the target's colours set.
HBRUSH PaintOn(HDC target, Paint background);

// Gives a window and its controls the present looks: its title bar, and what the themes that
// Windows documents reach. Lists, fields and labels are painted by who owns them.
void ApplyLooks(HWND window);

}  // namespace quellix
