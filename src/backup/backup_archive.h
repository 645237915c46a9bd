#pragma once

#include <string_view>

namespace quellix {

// Where the removal mode "back up, then delete" puts files before they go.
class BackupArchive {
 public:
  virtual ~BackupArchive() = default;

  // Starts a new archive in `folder` (ends in "\") whose name begins with `prefix`.
  virtual void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) = 0;
  // Adds one file; false when that failed. Throws NotAvailable when the program cannot archive at
  // all: the file must then stay.
  virtual bool BackupFile(std::string_view path) = 0;
  // Deletes the archive being filled, if any; failures are ignored.
  virtual void DeleteBackupArchive() = 0;
};

// Stands in until archives can be written: refuses, so that nothing goes without its backup.
class NoBackupArchive : public BackupArchive {
 public:
  void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) override;
  bool BackupFile(std::string_view path) override;
  void DeleteBackupArchive() override {}
};

}  // namespace quellix
