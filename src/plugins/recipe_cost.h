#pragma once

#include <string>
#include <vector>

#include "plugins/plugin_file.h"

namespace quellix::modPlugin {

struct Cost {
  bool loses_data = false;  // which cannot be had again
  std::string text;         // a clause, named for the catalogues
};

// What a recipe costs by what it names, whatever its author says: key stores, passwords, sessions,
// what sites and programs store, work that is not saved, bookmarks, the user's own folders,
// cookies. By its texts alone, so the same on every machine.
std::vector<Cost> CostsOf(const Plugin& plugin);

}  // namespace quellix::modPlugin
