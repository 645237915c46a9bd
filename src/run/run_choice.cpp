#include "run/run_choice.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/words.h"
#include "run/run_state.h"

namespace quellix {
namespace {

std::string KeyOf(const RunEntry& entry) {
  std::string kind(1, static_cast<char>('A' + static_cast<int>(entry.kind)));
  if (entry.kind == EntryKind::kRecycleBin) return kind;  // its part is how much is in it
  return kind + UpCase(entry.place) + "\n" + UpCase(entry.part);
}

std::string Line(uint64_t count, const char* pattern) {
  return count == 0 ? "" : Log(pattern, std::to_string(count)) + "\r\n";
}

// What others write to while it is looked at.
bool HasOwnTime(EntryKind kind) {
  return kind == EntryKind::kFile || kind == EntryKind::kCacheEntry || kind == EntryKind::kRows;
}

// The others are asked for before anybody knows whether they are there, or empty.
bool IsSeenBeforeItGoes(EntryKind kind) {
  return kind != EntryKind::kFolder && kind != EntryKind::kIniKey && kind != EntryKind::kIniSection;
}

bool HoldsOthers(EntryKind kind) {
  return kind == EntryKind::kRegistryKey || kind == EntryKind::kIniSection;
}

// Whether what has the key `other` goes along with a registry key or a section.
bool Holds(const RunEntry& entry, std::string_view other) {
  const std::string place = UpCase(entry.place);
  if (other.empty() || !other.substr(1).starts_with(place)) return false;
  const std::string_view rest = other.substr(1 + place.size());
  if (entry.kind == EntryKind::kIniSection) return rest.starts_with("\n" + UpCase(entry.part));
  const auto kind = static_cast<EntryKind>(other[0] - 'A');
  return (kind == EntryKind::kRegistryValue && rest.starts_with('\n')) ||
         ((kind == EntryKind::kRegistryValue || kind == EntryKind::kRegistryKey) &&
          rest.starts_with('\\'));
}

}  // namespace

// On a volume names may differ in their case alone: all of them must be ticked for one to go.
RunChoice::RunChoice(const RunEntries& preview, const std::function<bool(size_t index)>& is_ticked,
                     std::span<const size_t> waiting) {
  for (size_t i = 0; i < preview.all.size(); ++i) {
    const RunEntry& entry = preview.all[i];
    const bool ticked = entry.fate == Fate::kRemoved && is_ticked(i);
    if (ticked) sources_.emplace(entry.item, preview.rules[entry.rule]);
    const auto [seen, is_new] = seen_.try_emplace(KeyOf(entry));
    const bool stays_unticked = !is_new && entry.fate == Fate::kRemoved && !seen->second.ticked;
    if (is_new || (entry.fate == Fate::kRemoved && !stays_unticked)) {
      seen->second = {ticked, false, false, entry.count, entry.bytes, entry.last_write};
    }
  }
  TakeWaiting(preview, waiting);
}

void RunChoice::TakeWaiting(const RunEntries& preview, std::span<const size_t> waiting) {
  if (waiting.empty()) return;
  std::set<std::pair<uint8_t, std::string>> offered;
  for (const RunEntry& entry : preview.all) {
    if (entry.fate == Fate::kRemoved) offered.emplace(entry.item, preview.rules[entry.rule]);
  }
  for (const size_t index : waiting) {
    const RunEntry& entry = preview.all[index];
    const std::pair source(entry.item, preview.rules[entry.rule]);
    if (offered.contains(source) && !sources_.contains(source)) continue;
    Seen& seen = seen_[KeyOf(entry)];
    if (!seen.ticked) seen = {true, false, true, entry.count, entry.bytes, entry.last_write};
    sources_.insert(source);
  }
}

bool RunChoice::OnlyWaits(const RunEntry& entry) const {
  const auto found = seen_.find(KeyOf(entry));
  return found != seen_.end() && found->second.waits;
}

bool RunChoice::Takes(const RunEntry& entry) {
  const auto found = seen_.find(KeyOf(entry));
  if (found == seen_.end()) {
    if (IsSeenBeforeItGoes(entry.kind)) ++new_;
    return false;
  }
  Seen& seen = found->second;
  seen.met = true;
  const bool differs =
      seen.count != entry.count || seen.bytes != entry.bytes || seen.last_write != entry.last_write;
  // It goes as a whole, with what came since.
  if (entry.kind == EntryKind::kRecycleBin && differs) {
    ++new_;
    return false;
  }
  const auto is_left = [&](const auto& row) {
    return !row.second.ticked && Holds(entry, row.first);
  };
  if (!seen.ticked || (HoldsOthers(entry.kind) && std::ranges::any_of(seen_, is_left)))
    return false;
  if (entry.kind == EntryKind::kCacheEntry) {
    const auto file = seen_.find(KeyOf({.place = entry.part}));
    if (file != seen_.end() && !file->second.ticked) return false;
  }
  if (differs && HasOwnTime(entry.kind)) ++changed_;
  return true;
}

bool RunChoice::WouldTake(const RunEntry& entry) const {
  const auto found = seen_.find(KeyOf(entry));
  return found != seen_.end() && found->second.ticked;
}

bool RunChoice::HasAnyOf(uint8_t item, std::string_view rule) const {
  return sources_.contains({item, std::string(rule)});
}

std::string RunChoice::Remarks() const {
  uint64_t vanished = 0;
  for (const auto& [key, seen] : seen_) {
    if (seen.ticked && !seen.met) ++vanished;
  }
  return Line(new_, Mark("Left, as they were not in the preview: %1")) +
         Line(changed_, Mark("Changed since the preview: %1")) +
         Line(vanished, Mark("Ticked in the preview, but not come by again: %1"));
}

bool IsChosen(RunState& state, const RunEntry& entry) {
  return !state.Choice || state.Choice->Takes(entry);
}

}  // namespace quellix
