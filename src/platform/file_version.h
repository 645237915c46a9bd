#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// What a program's maker wrote into its version resource; texts that he left out are "".
struct FileVersion {
  std::string company, description, product, version;
};

// That of a program or library; nothing for what has none, is damaged or cannot be read. Defined
// by the platform that is linked. Never throws Error.
std::optional<FileVersion> ReadFileVersion(FileSystem& files, std::string_view path);

}  // namespace quellix
