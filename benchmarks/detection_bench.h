#pragma once

#include "side_by_side.h"
#include "support/test_machine.h"

namespace quellix {

// Which of a list of 4,067 recipes find something on a machine, in at most so many seconds.
void MeasureDetection(TestMachine& machine, double at_most, SideBySide& table);

}  // namespace quellix
