#pragma once

#include <span>
#include <string_view>

#include "run/item.h"

namespace quellix {

// What can be cleaned of a Windows that does not run, and of no other: the files that a running one
// holds or works with, and makes anew at its next start, and what all its users have thrown away.
// They have no run order, no box and no place in the check-state file; nothing but their names asks
// for them.
std::span<const Item> VolumeItems();

// By key ("VolumePageFile"), without regard to case; null for none.
const Item* FindVolumeItem(std::string_view key);

}  // namespace quellix
