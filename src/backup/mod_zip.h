#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "backup/zip_writer.h"
#include "platform/machine.h"
#include "run/backup_archive.h"
#include "settings/removal_options.h"

namespace quellix {

// Backups as zip archives: one for each drive and run.
class ModZip : public BackupArchive {
 public:
  // `options` are looked at when they matter. They and the ports must outlive this object.
  ModZip(const Machine& machine, const RemovalOptions& options);
  // Finishes the archive.
  ~ModZip() override;

  // For large files, and archives that are gone on with; a stop gives the file in hand up.
  void OnPause(Pause pause) { pause_ = std::move(pause); }

  Sentence WhyUnusable(std::string_view folder) override;
  void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) override;
  Sentence BackupFile(Folder& folder, std::string_view path) override;
  void Flush() override;
  void DeleteBackupArchive() override;
  std::string_view Path() const override { return writer_ ? archive_ : std::string_view(); }
  void Close() override;

 private:
  void OpenArchive();
  bool GoesOn(Folder& folder, const std::string& name);
  void RemoveArchive();

  FileSystem& files_;
  System& system_;
  const RemovalOptions& options_;
  Pause pause_;
  std::string archive_;  // full path; empty before the first name was made
  std::unique_ptr<ZipWriter> writer_;
  bool was_there_ = false;  // the archive held files before it was opened
  std::string prefix_;      // of its name
  LocalTime begun_;         // which its name tells
};

}  // namespace quellix
