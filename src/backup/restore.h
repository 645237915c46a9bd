#pragma once

#include <string>

#include "backup/c_un_zip.h"

namespace quellix {

// The attributes that come back.
inline constexpr uint32_t kRestoredAttributes = kReadOnly | kHidden | kSystem | kArchive;

// When an entry was last written: its exact time, else that of DOS read as UTC.
int64_t LastWriteOf(const ZipEntry& entry);

// Puts entries of one open archive back below a folder.
class Restorer {
 public:
  // `root` ends in "\"; all must outlive the object.
  Restorer(FileSystem& files, RandomFile& archive, std::string root, OverwriteMode mode,
           Prompts& prompts);
  ~Restorer();
  Restorer(const Restorer&) = delete;
  Restorer& operator=(const Restorer&) = delete;

  // False when the user wants no more.
  bool Restore(const ZipEntry& entry);
  RestoreResult Take() { return std::move(result_); }

 private:
  bool MayWrite(const ZipEntry& entry, const std::string& target);
  void Write(const ZipEntry& entry, const std::string& target);

  FileSystem& files_;
  RandomFile& archive_;
  std::string root_;
  OverwriteMode mode_;
  Prompts& prompts_;
  RestoreResult result_;
};

}  // namespace quellix
