#pragma once

#include <cstdint>
#include <string>

namespace quellix {

enum RemovalModes : int16_t { kDelete = 1, kRecycle = 2, kWipe = 3, kBackUp = 4 };

// How what is chosen goes: what the user set on the pages Deletion and Backups.
struct RemovalOptions {
  int16_t RemovalMode = kDelete;
  uint8_t ExtraSecurity = 0;       // any value but 0 selects the random pass
  uint8_t RenameBeforeDelete = 0;  // only 1 renames
  uint64_t WipeStep = 1;           // bytes overwritten at a time, up to kLargestWipeStep
  std::string BackupFolder;        // ends in "\"
  bool Strict = false;             // a file that could not be archived stays
  bool KeepOnAbort = false;        // a stopped run leaves its archive
  bool BackupRegistry = true;      // registry entries are kept too, before they go
  bool AllValues = false;          // registry lists are cleared to their end
  bool KeepPins = false;           // jump lists that may hold pinned entries stay
  int16_t KeepDays = 0;            // how long backups are kept; 0: for ever
  int16_t OlderThanDays = 0;       // what was written in so many days stays; 0: nothing does
};

inline constexpr uint64_t kLargestWipeStep = 16u << 20;

}  // namespace quellix
