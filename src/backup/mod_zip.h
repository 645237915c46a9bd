#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "backup/zip_writer.h"
#include "platform/machine.h"
#include "run/backup_archive.h"

namespace quellix {

// Backups as zip archives: one for each drive and run.
class ModZip : public BackupArchive {
 public:
  // `options` are looked at when they matter. They and the ports must outlive this object.
  ModZip(const Machine& machine, const BackupOptions& options);
  // Finishes the archive.
  ~ModZip() override;

  // Called while a large file is archived; true gives that file up.
  void OnPause(std::function<bool()> pause) { pause_ = std::move(pause); }

  std::string WhyUnusable(std::string_view folder) override;
  void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) override;
  bool BackupFile(Folder& folder, std::string_view path) override;
  bool Flush() override;
  void DeleteBackupArchive() override;
  bool Close() override;
  std::string_view Problem() const override { return problem_; }
  std::string_view Loss() const override { return loss_; }

 private:
  void OpenArchive();
  bool GoesOn(Folder& folder, const std::string& name);
  void StoreStreams(RandomFile& source, ZipEntry& entry);
  void RemoveArchive();
  bool Try(const std::function<void()>& step);

  FileSystem& files_;
  System& system_;
  const BackupOptions& options_;
  std::function<bool()> pause_;
  std::string archive_;  // full path; empty before the first name was made
  std::unique_ptr<ZipWriter> writer_;
  bool was_there_ = false;  // the archive held files before it was opened
  std::string prefix_;      // of its name
  LocalTime begun_;         // which its name tells
  std::string problem_, loss_;
};

}  // namespace quellix
