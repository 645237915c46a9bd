#pragma once

#include <filesystem>

#include "side_by_side.h"

namespace quellix {

// Backing up and removing, against "zip -m" at the same level. `home` is emptied.
void MeasureBackups(const std::filesystem::path& home, SideBySide& table);

// Whether a file costs the same, however many are put back into one folder. `home` is emptied; best
// in memory, where the program is measured and not what the disk makes of it.
void MeasureRestores(const std::filesystem::path& home, SideBySide& table);

}  // namespace quellix
