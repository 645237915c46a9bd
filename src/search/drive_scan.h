#pragma once

#include <functional>
#include <string_view>

#include "run/context.h"
#include "run/file_list.h"
#include "search/ignore_lists.h"

namespace quellix {

enum class ScanMode { kEveryFile = 0 };

// Collects below an open folder, `path` (ends in "\\"): every file that fits `mask`, or one of
// several with ";" between, into PendingFiles and every sub-folder into PendingFolders, a folder
// before what is in it. A link to a folder is collected but never entered; precious folders are
// left out. A folder that cannot be opened counts as stayed. Ends early, keeping what it has, when
// the user stops. The folder may be null: nothing is found then. `first`, unless null, is given
// what was found so far while the scan goes on, some hundred files the first time and several times
// more each further time; they are not in the result.
using FirstFound = std::function<void(FileList first)>;
FileList ScanFolder(CleaningContext& context, std::shared_ptr<Folder> folder, std::string_view path,
                    std::string_view mask, ScanMode mode, const FirstFound& first = nullptr);

// Judges the files of a filtered scan, one by one.
class FileTest {
 public:
  virtual ~FileTest() = default;

  virtual Detail Needs() const = 0;  // of each entry
  // `path` is that of the folder and ends in "\\"; `upper_name` is the entry's name in upper case.
  // All are valid during the call only.
  virtual void Test(Folder& folder, std::string_view path, const Entry& entry,
                    std::string_view upper_name) = 0;
};

// The same walk for searches: ignored folders are not entered, ignored files passed over, the
// others handed to `test`.
void SearchFolder(CleaningContext& context, std::string_view path, std::string_view mask,
                  const IgnoreLists& ignore, FileTest& test);

// Of the folders below one those that hold nothing, links and files included, but such as were
// taken: each is handed to `take`, what is below it before, and counts as content where it is not.
// Those that `enters` refuses, ignored and precious ones, and what cannot be listed count as
// content; links are never entered. Paths end in "\\".
struct EmptyFolderSteps {
  std::function<bool(const std::string&path)> enters, take;
};
void SearchEmptyFolders(CleaningContext& context, std::string_view path, const IgnoreLists& ignore,
                        const EmptyFolderSteps& steps);

// The collector of the cleaners.
inline FileList CollectFiles(CleaningContext& context, std::shared_ptr<Folder> folder,
                             std::string_view path, std::string_view mask,
                             const FirstFound& first = nullptr) {
  return ScanFolder(context, std::move(folder), path, mask, ScanMode::kEveryFile, first);
}

}  // namespace quellix
