#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quellix::modPlugin {

// A section of an INI file with the names of its keys, in the order of the file.
struct IniSection {
  std::string name;
  std::vector<std::string> keys;
};

// What an INI file offers to be erased. A section or key that comes again, in any case, counts
// once, as Windows takes it; comments (";"), lines without "=" and lines above the first section
// are passed over.
std::vector<IniSection> OutlineIni(std::string_view text);

}  // namespace quellix::modPlugin
