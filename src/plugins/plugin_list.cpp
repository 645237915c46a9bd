#include "plugins/plugin_list.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/text.h"
#include "plugins/plugin_file.h"
#include "settings/list_files.h"
#include "settings/numbers.h"

namespace quellix::modPlugin {
namespace {

constexpr std::string_view kListName = "plg.txt";

std::string ListPath(const Machine& machine) {
  return machine.program_folder + "\\" + std::string(kListName);
}

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

std::string DescriptionOf(const Machine& machine, const std::string& file) {
  try {
    return ReadDescription(machine, PluginPath(machine, file));
  } catch (const Error&) {
    return {};  // what is wrong with it is told when it is used
  }
}

std::vector<InstalledPlugin> ListFolder(const Machine& machine) {
  std::vector<InstalledPlugin> plugins;
  machine.files.Enumerate(machine.program_folder + "\\Plugins", Detail::kKind,
                          [&](const Entry& entry) {
                            if (!entry.info.is_folder && MatchesMask(entry.name, "*.cdp")) {
                              plugins.push_back({false, std::string(entry.name), ""});
                            }
                            return true;
                          });
  std::ranges::sort(plugins, {}, [](const InstalledPlugin& plugin) { return UpCase(plugin.file); });
  for (InstalledPlugin& plugin : plugins) plugin.description = DescriptionOf(machine, plugin.file);
  return plugins;
}

}  // namespace

std::string PluginPath(const Machine& machine, std::string_view file) {
  if (!StaysInFolder(file)) return {};
  return machine.program_folder + "\\Plugins\\" + std::string(file);
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
