#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pause.h"

namespace quellix {

// A cleaner of Windows' own, or one that a program has registered with Windows' disk cleanup.
struct SystemCleaner {
  std::string key;               // the same in every language: "Update Cleanup"
  std::string name = {};         // as people know it
  std::string description = {};  // a sentence or more; "" for none
  bool is_usual = false;         // it says that it is taken along unless its user says otherwise
};

struct CleanerFind {
  SystemCleaner cleaner;               // as it describes itself
  uint64_t bytes = 0;                  // what it found that can go
  std::optional<uint64_t> freed = {};  // what it says it freed; nothing when it only looked
  bool is_stopped = false;             // it was stopped before its end
  bool is_off_the_list = false;        // it was for this one time, and is not registered any more
};

enum class CleanerUse { kLook, kClean };

// Windows' own disk cleanup, by its registered handlers. They are code of others: what one removes,
// and how, is its own, and goes for good.
class SystemCleaners {
 public:
  virtual ~SystemCleaners() = default;

  // Those registered, by name, without loading any. Throws Error (NotAvailable for a volume).
  virtual std::vector<SystemCleaner> List() = 0;

  // Looks what a cleaner finds on the fixed drives, and with kClean has it remove that. `pause` is
  // told the bytes and what the cleaner says it does; a stop is handed on to it, and one that does
  // not follow is left behind. Where nobody `is_attended`, a window of its own ends it too. Throws
  // Error: it is not registered, cannot be loaded, fails, or does not come to an end; what it
  // removed by then is gone.
  virtual CleanerFind Use(std::string_view key, CleanerUse use, bool is_attended,
                          const Pause& pause) = 0;
};

}  // namespace quellix
