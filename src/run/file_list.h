#pragma once

#include <memory>
#include <string>

#include "platform/file_system.h"
#include "run/path_list.h"

namespace quellix {

// What a walk has found and a run is to remove: full paths.
struct FileList {
  // Where the walk began, held open; every path lies below it. Null where each path was named by
  // itself.
  std::shared_ptr<Folder> folder;
  std::string folder_path;  // its path, with "\" at its end
  PathList PendingFiles;
  PathList PendingFolders;
};

}  // namespace quellix
