#pragma once

#include <filesystem>

#include "side_by_side.h"

namespace quellix {

// A list of recipes as people keep it: which find something here, and what all of them would
// remove, beside find over the same folders. `home` is a folder in memory.
void MeasureRecipes(const std::filesystem::path& home, SideBySide& table);

}  // namespace quellix
