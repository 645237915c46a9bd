#pragma once

#include <string_view>

#include "app/context.h"

namespace quellix {

enum class ScanMode { kEveryFile = 0 };

// Empties PendingFiles and PendingFolders and gives their memory back.
void ClearPending(RunState& state);

// Collects below `folder` (ends in "\"): every file that fits `mask` into PendingFiles and every
// sub-folder into PendingFolders, a folder before what is in it. A link to a folder is collected
// but never entered. A folder that cannot be enumerated yields nothing. Ends early, keeping what it
// has, when the user stops. Anchors the machine's files to `folder`.
void ScanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                ScanMode mode);

// The collector of the cleaners.
inline void CollectFiles(CleaningContext& context, std::string_view folder, std::string_view mask) {
  ScanFolder(context, folder, mask, ScanMode::kEveryFile);
}

}  // namespace quellix
