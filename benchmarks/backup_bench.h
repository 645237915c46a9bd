#pragma once

#include <filesystem>

#include "side_by_side.h"

namespace quellix {

// Backing up and removing, against "zip -m" at the same level. `home` is emptied.
void MeasureBackups(const std::filesystem::path& home, SideBySide& table);

}  // namespace quellix
