#include "backup/preview_archive.h"

#include "platform/path.h"

namespace quellix {

bool PreviewArchive::BackupFile(Folder& folder, std::string_view path) {
  try {
    folder.Open(NamePart(path), OpenMode::kRead);
    return true;
  } catch (const std::exception& error) {
    problem_ = error.what();
    return false;
  }
}

}  // namespace quellix
