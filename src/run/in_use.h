#pragma once

#include <cstddef>
#include <vector>

namespace quellix {

// What a run came by and could not remove because it is locked or in use: indexes of its entries.
// Kept among its parts.
struct InUse {
  std::vector<size_t> entries;
};

}  // namespace quellix
