#include "plugins/recipe_rights.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

// Of a path behind its drive, or a whole variable; each is the start of a name or all of it.
constexpr std::string_view kFolders[] = {
    "\\Windows\\", "\\Program Files\\", "\\Program Files (x86)\\", "%WinDir%",      "%SystemRoot%",
    "%SysDir%",    "%ProgramFiles",     "%ProgramW6432%",          "%CommonProgram"};

// A path without its drive, however that is written.
std::string_view BehindDrive(std::string_view path) {
  constexpr std::string_view kDrive = "%SystemDrive%";
  if (EqualsNoCase(path.substr(0, kDrive.size()), kDrive)) return path.substr(kDrive.size());
  return path.size() > 1 && path[1] == ':' ? path.substr(2) : path;
}

bool IsOfAdministrators(std::string_view path) {
  path = BehindDrive(path);
  return std::ranges::any_of(kFolders, [path](std::string_view folder) {
    return EqualsNoCase(path.substr(0, folder.size()), folder);
  });
}

bool NeedsIt(const FileEntry& entry) { return IsOfAdministrators(entry.location); }
bool NeedsIt(const IniEntry& entry) { return IsOfAdministrators(entry.folder); }
bool NeedsIt(const RegistryEntry& entry) { return !entry.key.starts_with("HKEY_CURRENT_USER\\"); }

constexpr auto kNeedsIt = [](const auto& entry) { return NeedsIt(entry); };

}  // namespace

bool NeedsAdministrator(const Plugin& plugin) {
  return std::ranges::any_of(plugin.files, kNeedsIt) ||
         std::ranges::any_of(plugin.registry, kNeedsIt) ||
         std::ranges::any_of(plugin.ini, kNeedsIt);
}

Plugin WithoutAdministrator(Plugin plugin) {
  std::erase_if(plugin.files, kNeedsIt);
  std::erase_if(plugin.registry, kNeedsIt);
  std::erase_if(plugin.ini, kNeedsIt);
  return plugin;
}

bool NamesAnything(const Plugin& plugin) {
  return !plugin.files.empty() || !plugin.registry.empty() || !plugin.ini.empty();
}

}  // namespace quellix::modPlugin
