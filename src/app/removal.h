#pragma once

#include <string>
#include <string_view>

#include "app/context.h"

namespace quellix {

// Removes one file by the removal mode. True when it is gone. Never throws: any error inside means
// false, and SomeFilesLocked is set; `reason` is then given a sentence that says why.
bool RemoveFile(CleaningContext& context, std::string_view path, std::string* reason = nullptr);

// Adds a file that was removed to the totals of the run and of the item.
void CountRemoved(RunState& state, double bytes);

// Overwrites one file in a single pass and removes it; false when stopped or failed, with the file
// still there, perhaps partly overwritten. A link is removed itself, its target left alone. Throws
// Error.
bool WipeFile(CleaningContext& context, std::string_view path);

// Removes every path of PendingFiles in order, showing and counting each; ends the run's item early
// when the user stops.
void RemovePendingFiles(CleaningContext& context);

// Removes the folders of PendingFolders that are empty by now, children first whichever way the
// list was filled. A folder that is not empty stays; a link to a folder goes itself.
void RemovePendingFolders(CleaningContext& context);

// "12 Bytes", "1.50 KB", "2.00 MB", "1.00 GB": below 1024 without decimals. The unit is left out
// without `with_unit`.
std::string FormatSize(double bytes, int decimals, bool with_unit, const Locale& locale);

}  // namespace quellix
