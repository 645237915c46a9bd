#include "run/run_choice.h"

#include "platform/text.h"
#include "run/run_state.h"

namespace quellix {
namespace {

std::string KeyOf(const RunEntry& entry) {
  std::string kind(1, static_cast<char>('A' + static_cast<int>(entry.kind)));
  if (entry.kind == EntryKind::kRecycleBin) return kind;  // its part is how much is in it
  return kind + UpCase(entry.place) + "\n" + UpCase(entry.part);
}

std::string Line(uint64_t count, const char* what) {
  return count == 0 ? "" : std::string(what) + ": " + std::to_string(count) + "\r\n";
}

// What others write to while it is looked at.
bool HasOwnTime(EntryKind kind) {
  return kind == EntryKind::kFile || kind == EntryKind::kCacheEntry;
}

}  // namespace

RunChoice::RunChoice(const RunEntries& preview,
                     const std::function<bool(size_t index)>& is_ticked) {
  for (size_t i = 0; i < preview.all.size(); ++i) {
    const RunEntry& entry = preview.all[i];
    Seen& seen = seen_[KeyOf(entry)];
    if (!seen.ticked) {
      const bool ticked = entry.fate == Fate::kRemoved && is_ticked(i);
      seen = {ticked, false, entry.bytes, entry.last_write};
    }
  }
}

bool RunChoice::Takes(const RunEntry& entry) {
  const auto found = seen_.find(KeyOf(entry));
  if (found == seen_.end()) {
    ++new_;
    return false;
  }
  Seen& seen = found->second;
  seen.met = true;
  const bool differs = seen.bytes != entry.bytes || seen.last_write != entry.last_write;
  if (seen.ticked && differs && HasOwnTime(entry.kind)) ++changed_;
  return seen.ticked;
}

std::string RunChoice::Remarks() const {
  uint64_t vanished = 0;
  for (const auto& [key, seen] : seen_) {
    if (seen.ticked && !seen.met) ++vanished;
  }
  return Line(new_, "Left, as they were not in the preview") +
         Line(changed_, "Changed since the preview") +
         Line(vanished, "No longer there since the preview");
}

bool IsChosen(RunState& state, const RunEntry& entry) {
  return !state.Choice || state.Choice->Takes(entry);
}

}  // namespace quellix
