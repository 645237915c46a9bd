#pragma once

#include <span>
#include <string_view>

#include "run/item.h"

namespace quellix {

// The 30 items in run order.
std::span<const Item> AllItems();

// By key ("CleanTempFiles") or control ("chkTemp"), without regard to case; null for none.
const Item* FindItem(std::string_view name);

std::string_view GroupTitle(Group group);

}  // namespace quellix
