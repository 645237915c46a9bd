#pragma once

#include <optional>
#include <string>

#include "backup/zip_reader.h"

namespace quellix {

struct Repair {
  uint64_t kept = 0;     // entries that are whole
  uint64_t damaged = 0;  // entries in between that are not; they are left out
  uint64_t cut_off = 0;  // bytes behind the last whole entry
  // For the user, without a full stop's worth of detail: "3 files kept, …".
  std::string Note() const;
};

// Makes an archive whole that a crash or a lost end left without its directory: every entry whose
// data are complete is kept, the incomplete rest behind them is cut off, and the directory is
// written anew. Entries themselves are never rewritten, so that a crash in between costs nothing.
// Throws Error when this is no archive or it cannot be written.
Repair RepairArchive(RandomFile& file, ZipDirectory& directory);

// The directory of an archive, which is repaired first where that is needed; `repair` then says
// what was done. Throws Error.
ZipDirectory OpenDirectory(FileSystem& files, std::string_view path, std::optional<Repair>& repair);

}  // namespace quellix
