#pragma once

#include "side_by_side.h"

namespace quellix {

// The window of search results with 200,000 rows, in the real program: what its user waits for.
// Starts C:\Program Files\Quellix\quellix.exe with the settings of a first start.
void MeasureResultsWindow(SideBySide& table);

}  // namespace quellix
