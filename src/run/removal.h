#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "run/context.h"
#include "run/working_folder.h"

namespace quellix {

// Removes one file by the removal mode. True when it is gone. Never throws: any error inside means
// false, SomeFilesLocked is set, and the file is noted as stayed; `reason` is then given a sentence
// that says why. What is precious is refused.
bool RemoveFile(CleaningContext& context, std::string_view path, Claim claim,
                Sentence* reason = nullptr);

// While the returned object lives, the machine may look at the lists' files before their turn
// comes: for where each of them goes in a moment. The lists must outlast it.
std::shared_ptr<void> ExpectLooks(CleaningContext& context, std::span<const FileList> lists);

// Removes every path of PendingFiles in order, showing and counting each; what stays is noted. Ends
// the run's item early when the user stops. `claim`: who asks for it.
void RemovePendingFiles(CleaningContext& context, const FileList& list, Claim claim = Claim::kItem);

// Removes the folders of PendingFolders that are empty by now, children first whichever way the
// list was filled. A folder that is not empty stays; a link to a folder goes itself.
void RemovePendingFolders(CleaningContext& context, const FileList& list);

// "12 Bytes", "1.50 KB", "2.00 MB", "1.00 GB": below 1024 without decimals. The unit is left out
// without `with_unit`.
std::string FormatSize(double bytes, int decimals, bool with_unit, const Locale& locale);

}  // namespace quellix
