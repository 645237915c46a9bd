#pragma once

#include <string>

#include "backup/backup_reader.h"
#include "backup/zip_reader.h"
#include "platform/file_system.h"

namespace quellix {

// When an entry was last written: its exact time, else that of DOS read as UTC.
int64_t LastWriteOf(const ZipEntry& entry);

// What an entry counts for in a restore's progress: its bytes, and what making a file costs.
uint64_t StepsOf(const ZipEntry& entry);

// Puts entries of one open archive back below a folder.
class Restorer {
 public:
  // `root` ends in "\"; all must outlive the object.
  Restorer(FileSystem& files, ZipReader& archive, std::string root, OverwriteMode mode,
           Prompts& prompts);
  Restorer(const Restorer&) = delete;
  Restorer& operator=(const Restorer&) = delete;

  // `total` is the sum of StepsOf over the entries to come.
  void OnPause(const RestorePause& pause, uint64_t total);

  // Of the entry being visited. False when the user wants no more.
  bool Restore(const ZipEntry& entry);
  RestoreResult Take() { return std::move(result_); }

 private:
  class NewFile;

  void Put(const ZipEntry& entry);
  bool MayWrite(const ZipEntry& entry, const std::string& target);
  void Write(const ZipEntry& entry, const std::string& target);
  void Pause(uint64_t done);

  FileSystem& files_;
  ZipReader& archive_;
  std::string root_;
  OverwriteMode mode_;
  Prompts& prompts_;
  RestorePause pause_;
  RestoreProgress progress_;
  RestoreResult result_;
};

}  // namespace quellix
