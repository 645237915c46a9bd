#include "backup/backup_archive.h"

#include "platform/error.h"

namespace quellix {

void NoBackupArchive::MakeBackupArchiveName(std::string_view, std::string_view) {}

bool NoBackupArchive::BackupFile(std::string_view) {
  throw NotAvailable("This version cannot write backup archives yet.");
}

}  // namespace quellix
