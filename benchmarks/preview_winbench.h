#pragma once

#include "side_by_side.h"

namespace quellix {

// A preview of 200,000 files in the real program: how soon its first rows are seen, how long the
// window does not answer meanwhile, and how long its list is sorted and filtered.
// Starts C:\Program Files\Quellix\quellix.exe with the settings of a first start.
void MeasurePreviewWindow(SideBySide& table);

}  // namespace quellix
