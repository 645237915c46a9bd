#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "plugins/plugin_file.h"
#include "run/protected_places.h"

namespace quellix::modPlugin {

// Where the entries of a recipe lead on a machine, and what a recipe may not touch.

// `text` with %PROGDIR%, %SYSDIR% and %WINDIR%, in this order, and then the variables of the
// machine's environment replaced. "" when one of them has no value. A single "%" stays.
std::string ExpandPluginPath(System& system, std::string_view text);

struct FilesPlace {
  // Without "\" at their end; several where the location has "*" for a whole folder name.
  std::vector<std::string> folders;
  std::string mask;
  std::vector<std::string> refusals;  // sentences that say what is not cleaned, and why
};

// The folders a files entry stands for. Folders behind a "*" exist and are reached through no link.
// What is precious is refused; a folder that is missing is not. A stop ends the search for what a
// "*" stands for.
FilesPlace FindFolders(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                       const Pause& pause = {});

// Why a recipe may not take files from a folder, a clause; "" when it may, and for a missing one.
std::string WhyNotFolder(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                         const FileEntry& entry);

struct KeyPlace {
  std::optional<RegistryRoot> root;  // nothing when the entry is refused
  std::string subkey;
  std::string refusal;  // a sentence
};

// Refused is what ProtectedKeys names, by whatever spelling or link.
KeyPlace FindKey(Registry& registry, const RegistryEntry& entry);

struct IniPlace {
  std::string path;     // "" when the entry is refused
  std::string refusal;  // a sentence
};

IniPlace FindIni(const Machine& machine, ProtectedPlaces& places, const IniEntry& entry);

}  // namespace quellix::modPlugin
