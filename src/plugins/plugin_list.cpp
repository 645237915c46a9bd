#include "plugins/plugin_list.h"

#include <algorithm>
#include <map>
#include <set>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/plugin_file.h"
#include "plugins/recipe_detection.h"
#include "settings/list_files.h"
#include "settings/numbers.h"
#include "settings/own_files.h"

namespace quellix::modPlugin {
namespace {

constexpr std::string_view kListName = "plg.txt";

std::string ListPath(const Machine& machine) { return FoundPath(machine, kListName); }

// A part of a path that Windows would take for "", "." or "..".
bool IsStep(std::string_view part) {
  return part.find_first_not_of(" .") == std::string_view::npos;
}

bool StaysInFolder(std::string_view file) {
  return file.find_first_of(":/") == std::string_view::npos &&
         std::ranges::none_of(Split(file, '\\'), IsStep);
}

bool IsFile(const Machine& machine, const std::string& path) {
  const std::optional<FileInfo> info = machine.files.Look(path, Detail::kKind);
  return info && !info->is_folder;
}

// What is wrong with it is told when it is used.
Plugin LoadOrNothing(const Machine& machine, std::string_view file) {
  try {
    return LoadPluginFile(machine, PluginPath(machine, file)).value_or(Plugin{});
  } catch (const Error&) {
    return {};
  }
}

// The user's own, and those that came with the program; of two of one name there is one.
std::vector<InstalledPlugin> FilesOf(const Machine& machine) {
  std::vector<InstalledPlugin> plugins;
  for (const std::string& folder : std::set{machine.program_folder, machine.installed_folder}) {
    machine.files.Enumerate(folder + "\\Plugins", Detail::kKind, [&](const Entry& entry) {
      if (!entry.info.is_folder && MatchesMask(entry.name, "*.cdp")) {
        plugins.push_back({false, std::string(entry.name), ""});
      }
      return true;
    });
  }
  return plugins;
}

std::vector<InstalledPlugin> ListFolder(const Machine& machine) {
  std::vector<InstalledPlugin> plugins = FilesOf(machine);
  std::map<std::pair<std::string, std::string>, InstalledPlugin> sorted;
  for (InstalledPlugin& plugin : plugins) {
    const Plugin loaded = LoadOrNothing(machine, plugin.file);
    plugin.description = loaded.description;
    sorted[{UpCase(loaded.group), UpCase(plugin.file)}] = plugin;
  }
  plugins.clear();
  for (auto& [key, plugin] : sorted) plugins.push_back(std::move(plugin));
  return plugins;
}

}  // namespace

std::string ShownName(std::string_view file) {
  constexpr std::string_view kEnding = ".cdp";
  const bool is_file = file.ends_with(kEnding);
  const std::string_view name = file.substr(0, file.size() - (is_file ? kEnding.size() : 0));
  const std::string shown = Tr(name);
  return shown == name ? std::string(file) : shown;
}

std::string PluginPath(const Machine& machine, std::string_view file) {
  if (!StaysInFolder(file)) return {};
  return FoundPath(machine, "Plugins\\" + std::string(file));
}

PluginGuide ReadGuide(const Machine& machine, std::string_view file) {
  const Plugin plugin = LoadOrNothing(machine, file);
  return {plugin.group, plugin.cost, plugin.loses_data, IsFound(machine, plugin)};
}

bool HasPluginList(const Machine& machine) { return IsFile(machine, ListPath(machine)); }

std::vector<InstalledPlugin> ReadPluginList(const Machine& machine) {
  if (!machine.files.Look(ListPath(machine), Detail::kKind)) return ListFolder(machine);
  std::vector<InstalledPlugin> plugins;
  for (const std::string& line : ReadListFile(machine, kListName)) {
    const std::vector<std::string> fields = Split(line, kSeparator);
    if (fields.size() < 2 || line.find('\0') != std::string::npos) continue;
    const std::string path = PluginPath(machine, fields[1]);
    const bool ticked = ToNumber(fields[0]) == 1.0;
    const auto known = std::ranges::find_if(plugins, [&](const InstalledPlugin& plugin) {
      return EqualsNoCase(plugin.file, fields[1]);
    });
    if (known != plugins.end()) {
      known->ticked |= ticked;
    } else if (!path.empty() && IsFile(machine, path)) {
      plugins.push_back({ticked, fields[1], fields.size() > 2 ? fields[2] : ""});
    }
  }
  return plugins;
}

void WritePluginList(const Machine& machine, const std::vector<InstalledPlugin>& plugins) {
  std::vector<std::string> lines;
  for (const InstalledPlugin& plugin : plugins) {
    lines.push_back((plugin.ticked ? "1" : "0") + std::string(1, kSeparator) + plugin.file +
                    kSeparator + plugin.description);
  }
  WriteListFile(machine, kListName, lines);
}

}  // namespace quellix::modPlugin
