#include "platform/file_system.h"

#include "platform/path.h"

namespace quellix {

void MakeFolders(FileSystem& files, std::string_view folder) {
  folder = WithoutBackslash(folder);
  const std::optional<FileInfo> info = files.Look(folder);
  if (info && info->is_folder) return;
  const std::string_view parent = FolderPart(folder);
  if (!parent.empty() && parent.size() < folder.size()) MakeFolders(files, parent);
  files.CreateFolder(folder);
}

}  // namespace quellix
