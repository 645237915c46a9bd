#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/words.h"

namespace quellix {

// Proves that archives can be made in a folder: makes it where it is missing, and a file in it that
// goes again. Why that failed; empty when it did not. Never throws.
Sentence WhyBackupFolderCannotBeUsed(FileSystem& files, std::string_view folder);

// The same as far as it can be told on a preview of a machine, where every file can be written:
// whether the folder can be, and whether its disk takes something.
Sentence WhyBackupFolderLooksUnusable(FileSystem& preview, std::string_view folder);

}  // namespace quellix
