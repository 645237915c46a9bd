#pragma once

#include <cstdint>
#include <functional>
#include <set>
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
  // `is_ticked` tells of each index of `preview.all` that would be removed.
  RunChoice(const RunEntries& preview, const std::function<bool(size_t index)>& is_ticked);

  // Whether the run may remove it. What was not in the preview, or has another size or time since,
  // is counted.
  bool Takes(const RunEntry& entry);
  // Whether anything was ticked of what an item came by, or of it by a rule.
  bool HasAnyOf(uint8_t item, std::string_view rule) const;
  // What differs from the preview, a line each with CR LF; "" when nothing does. For the end of the
  // run.
  std::string Remarks() const;

 private:
  struct Seen {
    bool ticked = false;
    bool met = false;
    uint32_t count = 1;
    uint64_t bytes = 0;
    int64_t last_write = 0;
  };

  std::unordered_map<std::string, Seen> seen_;         // by kind, place and part in upper case
  std::set<std::pair<uint8_t, std::string>> sources_;  // item and rule of what was ticked
  uint64_t new_ = 0, changed_ = 0;
};

// Whether the run in work may remove it: always, unless what goes was chosen in a preview.
bool IsChosen(RunState& state, const RunEntry& entry);

}  // namespace quellix
