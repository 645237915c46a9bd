#include "backup/preview_archive.h"

#include "backup/backup_folder.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {

Sentence PreviewArchive::WhyUnusable(std::string_view folder) {
  return WhyBackupFolderLooksUnusable(preview_, folder);
}

Sentence PreviewArchive::BackupFile(Folder& folder, std::string_view path) {
  if (!problem_of_folder_.empty()) throw Error(Error::Kind::kOther, problem_of_folder_);
  folder.Open(NamePart(path), OpenMode::kRead);
  return {};
}

}  // namespace quellix
