#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// Proves that archives can be made in a folder: makes it where it is missing, and a file in it that
// goes again. Why that failed, in a sentence; "" when it did not. Never throws.
std::string WhyBackupFolderCannotBeUsed(FileSystem& files, std::string_view folder);

// The same as far as it can be told on a preview of a machine, where every file can be written:
// whether the folder can be, and whether its disk takes something.
std::string WhyBackupFolderLooksUnusable(FileSystem& preview, std::string_view folder);

}  // namespace quellix
