#pragma once

#include <filesystem>

#include "side_by_side.h"

namespace quellix {

// The console over ten volumes below `home`, one after the other and two at a time.
void MeasureVolumes(const std::filesystem::path& home, SideBySide& table);

}  // namespace quellix
