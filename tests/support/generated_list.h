#pragma once

#include <string>
#include <vector>

#include "support/holds.h"

namespace quellix {

// A list of recipes of the shapes and in the proportions of the one that people use: so many keys
// of each kind, variables, wildcards, masks, flags, exclusions. With each entry what stands in its
// places: the generator knows by the meaning of the keys what goes. Paths begin with variables.
struct GeneratedEntry {
  std::string name, text;
  bool is_refused = false;
  Names gone, kept;  // files
  Names gone_folders, left_folders;
  Names gone_values, kept_values;  // "HKCU\key|value"
};

// The same each time.
std::vector<GeneratedEntry> GenerateList();

// All of it as a file.
std::string TextOf(const std::vector<GeneratedEntry>& list);

}  // namespace quellix
