#pragma once

#include <filesystem>

#include "side_by_side.h"

namespace quellix {

// The registry tools on a volume whose hives are below `home`.
void MeasureRegistry(const std::filesystem::path& home, SideBySide& table);

}  // namespace quellix
