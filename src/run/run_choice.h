#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "run/run_entries.h"

namespace quellix {

struct RunState;

// What of a preview a run is to remove: what was ticked there, and nothing that was not in it.
class RunChoice {
 public:
  // `is_ticked` tells of each index of `preview.all` that would be removed. Those of `waiting`
  // would stay, as they are in use, and are to be left to the system's next start: of what has
  // nothing else to tick, or something that is ticked.
  RunChoice(const RunEntries& preview, const std::function<bool(size_t index)>& is_ticked,
            std::span<const size_t> waiting = {});

  // Whether the run may remove it. What was not in the preview, or has another size or time since,
  // is counted.
  bool Takes(const RunEntry& entry);
  // Whether that is ticked, without any note of it.
  bool WouldTake(const RunEntry& entry) const;
  // Whether what it takes is to be left to the system's next start, and never removed at once.
  bool OnlyWaits(const RunEntry& entry) const;
  // Whether anything was ticked of what an item came by, or of it by a rule.
  bool HasAnyOf(uint8_t item, std::string_view rule) const;
  // What differs from the preview, a line each with CR LF; "" when nothing does. For the end of the
  // run.
  std::string Remarks() const;

 private:
  struct Seen {
    bool ticked = false;
    bool met = false;
    bool waits = false;
    uint32_t count = 1;
    uint64_t bytes = 0;
    int64_t last_write = 0;
  };

  void TakeWaiting(const RunEntries& preview, std::span<const size_t> waiting);

  std::unordered_map<std::string, Seen> seen_;         // by kind, place and part in upper case
  std::set<std::pair<uint8_t, std::string>> sources_;  // item and rule of what was ticked
  uint64_t new_ = 0, changed_ = 0;
};

// Whether the run in work may remove it: always, unless what goes was chosen in a preview.
bool IsChosen(RunState& state, const RunEntry& entry);

}  // namespace quellix
