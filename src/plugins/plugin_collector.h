#pragma once

#include <string_view>

#include "app/context.h"

namespace quellix::modPlugin {

// Collects in `folder` (without "\" at its end), in the order of its listing: files that fit
// `mask` into PendingFiles; with `recurse` what is below each sub-folder when its turn comes; with
// `delete_subfolders` each visited sub-folder into PendingFolders, behind all that is below it. The
// folder itself stays out. A link to a folder is never entered but counts as visited. Ends early
// when the user stops. Anchors the machine's files to `folder`.
void CollectPluginFiles(CleaningContext& context, std::string_view folder, bool delete_subfolders,
                        bool recurse, std::string_view mask);

}  // namespace quellix::modPlugin
