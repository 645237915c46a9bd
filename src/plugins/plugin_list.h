#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix::modPlugin {

// One installed plug-in, a line of plg.txt.
struct InstalledPlugin {
  bool ticked = false;
  std::string file;  // name in the folder Plugins, with ".cdp"
  std::string description;
};

// What a plug-in tells of itself besides.
struct PluginGuide {
  std::string group;
  std::string cost;  // what its user loses besides traces, a clause; "" for nothing
  bool loses_data = false;
  bool is_found = true;  // here, by what it looks for
};

// One that cannot be read tells nothing.
PluginGuide ReadGuide(const Machine& machine, std::string_view file);

// Whether plg.txt is there at all.
bool HasPluginList(const Machine& machine);

// plg.txt in its order. Dropped are lines of a file that is not in the folder, of a name that leads
// out of it, and of a name that stood above in any case; a tick of any of these lines counts.
// Without plg.txt, as before a first start, all of the folder by group and name, none ticked.
// Throws Error when the list is there but cannot be read.
std::vector<InstalledPlugin> ReadPluginList(const Machine& machine);
// Replaces plg.txt. Throws Error; the old file then stays.
void WritePluginList(const Machine& machine, const std::vector<InstalledPlugin>& plugins);

// What windows call a plug-in, or another rule of a run: in the language of the windows where the
// catalogue has its name (that of its file, without ".cdp"), else as it is called.
std::string ShownName(std::string_view file);

// A plug-in's path in the folder Plugins; "" for a name that leads out of it.
std::string PluginPath(const Machine& machine, std::string_view file);

}  // namespace quellix::modPlugin
