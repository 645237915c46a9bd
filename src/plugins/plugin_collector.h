#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "plugins/recipe_exclusions.h"
#include "run/context.h"
#include "run/file_list.h"

namespace quellix::modPlugin {

// Collects in an open folder, `path`, in the order of its listing: files that fit one of the masks
// into PendingFiles; with `recurse` what is below each sub-folder when its turn comes; with
// `delete_subfolders` each visited sub-folder into PendingFolders, behind all that is below it. The
// folder itself stays out. A link to a folder is never entered but counts as visited; precious
// folders are left out, and what `exclusions` leave. Ends early when the user stops.
FileList CollectPluginFiles(CleaningContext& context, std::shared_ptr<Folder> folder,
                            std::string_view path, bool delete_subfolders, bool recurse,
                            std::span<const std::string> masks,
                            const Exclusions* exclusions = nullptr);

}  // namespace quellix::modPlugin
