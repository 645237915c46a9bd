#pragma once

#include <string>

#include "backup/backup_archive.h"

namespace quellix {

// Stands in for the archives of a run that is only previewed: a file that can be read counts as
// archived, and nothing is stored.
class PreviewArchive : public BackupArchive {
 public:
  void MakeBackupArchiveName(std::string_view, std::string_view) override {}
  bool BackupFile(Folder& folder, std::string_view path) override;
  bool Flush() override { return true; }
  void DeleteBackupArchive() override {}
  bool Close() override { return true; }
  std::string_view Problem() const override { return problem_; }

 private:
  std::string problem_;
};

}  // namespace quellix
