#pragma once

#include "settings/removal_options.h"
#include "ui/resource.h"

namespace quellix {

// The buttons that choose how files go, wherever that can be chosen.
struct RemovalChoice {
  int control;
  RemovalModes mode;
};
inline constexpr RemovalChoice kRemovalChoices[] = {
    {optRecyclebin, kRecycle}, {optDelete, kDelete}, {optWipe, kWipe}, {optZip, kBackUp}};

}  // namespace quellix
