#include "backup/preview_archive.h"

#include "backup/backup_folder.h"
#include "platform/path.h"

namespace quellix {

std::string PreviewArchive::WhyUnusable(std::string_view folder) {
  return WhyBackupFolderLooksUnusable(preview_, folder);
}

bool PreviewArchive::BackupFile(Folder& folder, std::string_view path) {
  problem_ = problem_of_folder_;
  if (!problem_.empty()) return false;
  try {
    folder.Open(NamePart(path), OpenMode::kRead);
    return true;
  } catch (const std::exception& error) {
    problem_ = error.what();
    return false;
  }
}

}  // namespace quellix
