#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backup/zip_reader.h"

namespace quellix {

struct Repair {
  uint64_t kept = 0;     // entries that are whole
  uint64_t damaged = 0;  // entries in between that are not; they are left out
  uint64_t cut_off = 0;  // bytes behind the last whole entry
  bool stored = true;    // false where the archive could not be written: for this reader only
  // For the user, without a full stop's worth of detail: "3 files kept, …".
  std::string Note() const;
};

// Called now and then with the bytes that are done; true ends the repair.
using RepairPause = std::function<bool(uint64_t done, uint64_t total)>;

// Makes an archive whole that a crash or a lost end left without its directory: every entry whose
// data are complete is kept, the incomplete rest behind them is cut off, and the directory is
// written anew. Entries themselves are never rewritten, so that a crash in between costs nothing
// and a full disk little.
// Where `pause` (may be empty) ends it, it throws Error and the archive is as it was. Throws Error
// as well when this is no archive or it cannot be written.
Repair RepairArchive(std::unique_ptr<RandomFile> file, const RepairPause& pause = nullptr);

// An archive, which is repaired first where that is needed; `repair` then says what was done. Where
// the disk is full or read-only the repair is for this reader only. Throws Error.
std::unique_ptr<ZipReader> OpenZip(FileSystem& files, std::string_view path,
                                   std::optional<Repair>& repair,
                                   const RepairPause& pause = nullptr);

}  // namespace quellix
