#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/machine.h"
#include "platform/pause.h"
#include "platform/words.h"

namespace quellix {

// What a progress calls the last part of the work.
inline constexpr std::string_view kClearingAway = Mark("Clearing away");

struct FreeSpaceOptions {
  bool zeros = false;            // for virtual disks, whose files zeros make small; else random
  uint64_t reserve = 64u << 20;  // bytes left free, so that nothing else fails meanwhile
  uint64_t most_records = 1'000'000;  // small files that are made at most
};

// What wiping came to.
struct FreeSpaceWiped {
  uint64_t bytes = 0;    // overwritten
  uint64_t records = 0;  // small files that were made and removed
  bool is_stopped = false;
  std::string problem;  // a sentence: what ended it early, or stays to be removed; "" for neither
};

// Overwrites what is free on the drive of `root` ("C:\"), by files in a folder of their own which
// are removed again whatever ends it; a kill's are cleared away at the next start. First large ones
// until but the reserve is left, then small ones, which take the free records of NTFS' file table,
// until that grows for them. Progress is in bytes, an estimate while others write too. What
// solid-state disks and snapshots keep, and the ends of files' last clusters, no program reaches
// so. Never throws Error.
FreeSpaceWiped WipeFreeSpace(const Machine& machine, const std::string& root,
                             const FreeSpaceOptions& options, const Pause& pause);

}  // namespace quellix
