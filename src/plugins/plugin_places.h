#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "platform/words.h"
#include "plugins/plugin_file.h"
#include "plugins/recipe_folders.h"
#include "run/protected_places.h"

namespace quellix::modPlugin {

// Where the entries of a recipe lead on a machine, and what a recipe may not touch.

// "WHAT is not cleaned: WHY"
Sentence Refusal(std::string_view what, const Sentence& why);

struct FilesPlace {
  // Without "\" at their end; several where the location has wildcards or two sides.
  std::vector<std::string> folders;
  std::string mask;
  std::vector<Sentence> refusals;  // that say what is not cleaned, and why
};

// Whether the folders that are found are opened to be judged, or whoever opens them judges them.
enum class Judging { kHere, kWhenOpened };

// The folders a files entry stands for, see FindMatches. Each is judged as if it had been written
// so: what is precious is refused; a folder that is missing is not. A stop ends the search.
FilesPlace FindFolders(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                       const Pause& pause = {}, Judging judging = Judging::kHere);

// Why a recipe may not take files from a folder, a clause; empty when it may, and for a missing
// one.
Sentence WhyNotFolder(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                      const FileEntry& entry);

struct IniPlace {
  std::string path;  // "" when the entry is refused
  Sentence refusal;
};

IniPlace FindIni(const Machine& machine, ProtectedPlaces& places, const IniEntry& entry);

}  // namespace quellix::modPlugin
