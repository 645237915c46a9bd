#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "run/context.h"
#include "run/keep_list.h"

namespace quellix {

// What a run leaves of the files it was made for: those that the user keeps and, with
// OlderThanDays, those that were written in that time.
class RunLimits {
 public:
  // Throws Error while keep.txt cannot be read.
  explicit RunLimits(CleaningContext& context);

  // What has to be known of each file.
  Detail Needs(Detail least) const {
    return written_before_ != 0 ? std::max(least, Detail::kSize) : least;
  }
  // Whether a file is left. What is kept is noted. `folder` is the one it lies in, as far as that
  // is open; `path` is that of the folder.
  bool Leaves(Folder* folder, const std::string& path, const Entry& entry) {
    return IsYoung(entry.info) || IsKept(folder, path, entry.name);
  }
  bool IsKept(Folder* folder, const std::string& path, std::string_view name);

 private:
  bool IsYoung(const FileInfo& info) const {
    return written_before_ != 0 && info.last_write >= written_before_;
  }

  CleaningContext& context_;
  const KeepList& keep_;
  int64_t written_before_ = 0;  // FILETIME; 0 for whenever
};

}  // namespace quellix
