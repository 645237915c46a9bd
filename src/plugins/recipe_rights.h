#pragma once

#include "plugins/plugin_file.h"

namespace quellix::modPlugin {

// Whether only administrators may change some of what a recipe names: folders of Windows and of
// programs, keys outside the user's own. By its texts alone, so the same on every machine.
bool NeedsAdministrator(const Plugin& plugin);

// The same recipe without that; it may name nothing any more.
Plugin WithoutAdministrator(Plugin plugin);

// Whether it names anything that goes.
bool NamesAnything(const Plugin& plugin);

}  // namespace quellix::modPlugin
