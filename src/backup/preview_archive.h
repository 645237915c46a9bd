#pragma once

#include "backup/backup_archive.h"
#include "platform/file_system.h"

namespace quellix {

// Stands in for the archives of a run that is only previewed: a file that can be read counts as
// archived, and nothing is stored.
class PreviewArchive : public BackupArchive {
 public:
  explicit PreviewArchive(FileSystem& files) : files_(files) {}

  void MakeBackupArchiveName(std::string_view, std::string_view) override {}
  bool BackupFile(std::string_view path) override;
  bool Flush() override { return true; }
  void DeleteBackupArchive() override {}
  bool Close() override { return true; }
  std::string_view Problem() const override { return problem_; }

 private:
  FileSystem& files_;
  std::string problem_;
};

}  // namespace quellix
