#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace quellix {

// The folders below one that is held open, by names joined with "\": each is opened once, and what
// lies above them all is asked for once.
class FolderBranch {
 public:
  struct Place {
    std::unique_ptr<Folder> folder;  // null when it is missing, a link, a file or denied
    std::vector<FileId> above;       // nearest first; only that of the branch where no more is told
  };

  // `top` must outlive the branch.
  explicit FolderBranch(Folder& top);

  // Valid as long as the branch.
  const Place& Find(std::string_view names);

 private:
  Place Open(std::string_view names);

  Folder& top_;
  std::vector<FileId> above_;  // of what lies in the top
  std::map<std::string, Place, std::less<>> places_;
};

}  // namespace quellix
