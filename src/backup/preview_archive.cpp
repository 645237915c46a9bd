#include "backup/preview_archive.h"

namespace quellix {

bool PreviewArchive::BackupFile(std::string_view path) {
  try {
    files_.Open(path, OpenMode::kRead);
    return true;
  } catch (const std::exception& error) {
    problem_ = error.what();
    return false;
  }
}

}  // namespace quellix
