#pragma once

#include <string_view>

#include "app/context.h"
#include "search/ignore_lists.h"

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

// Judges the files of a filtered scan, one by one.
class FileTest {
 public:
  virtual ~FileTest() = default;

  virtual Detail Needs() const = 0;  // of each entry
  // `folder` ends in "\"; `upper_name` is the entry's name in upper case. All are valid during the
  // call only.
  virtual void Test(std::string_view folder, const Entry& entry, std::string_view upper_name) = 0;
};

// What a filtered scan leaves out, and who takes what is left: without a test PendingFiles does.
struct ScanRules {
  const IgnoreLists& ignore;
  FileTest* test = nullptr;
};

// The same walk for searches: ignored folders are not entered, ignored files passed over, and
// folders are not collected.
void ScanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                const ScanRules& rules);

// The collector of the cleaners.
inline void CollectFiles(CleaningContext& context, std::string_view folder, std::string_view mask) {
  ScanFolder(context, folder, mask, ScanMode::kEveryFile);
}

}  // namespace quellix
