#pragma once

#include <string>

#include "run/backup_archive.h"

namespace quellix {

// Stands in for the archives of a run that is only previewed: a file that can be read counts as
// archived where archives could be made, and nothing is stored.
class PreviewArchive : public BackupArchive {
 public:
  // `preview` is that of the run and must outlive this.
  explicit PreviewArchive(FileSystem& preview) : preview_(preview) {}

  Sentence WhyUnusable(std::string_view folder) override;
  void MakeBackupArchiveName(std::string_view folder, std::string_view) override {
    problem_of_folder_ = WhyUnusable(folder);
  }
  Sentence BackupFile(Folder& folder, std::string_view path) override;
  void Flush() override {}
  void DeleteBackupArchive() override {}
  void Close() override {}

 private:
  FileSystem& preview_;
  Sentence problem_of_folder_;
};

}  // namespace quellix
