#include "run/stayed.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/text.h"
#include "platform/wiping_note.h"
#include "platform/words.h"
#include "run/in_use.h"

namespace quellix {
namespace {

std::string In(Tongue tongue, Sentence sentence) {
  return tongue == Tongue::kLog ? Logged(sentence) : std::move(sentence.shown);
}

// The system's sentence names most paths itself.
std::string Line(const RunEntries& entries, const RunEntry& entry, Tongue tongue) {
  const Sentence note = entries.NoteOf(entry);
  if (entry.fate == Fate::kKept) {
    // TRANSLATORS: What the keep list has kept, and the line of it.
    return "\r\n" + In(tongue, Say("%1 (by the line %2)", PlaceText(entry), note));
  }
  const bool names_itself = entry.note.find(entry.place) != std::string::npos;
  return "\r\n" + In(tongue, names_itself ? note : Say("%1: %2", entry.place, note));
}

bool IsOnDisk(const RunEntry& entry) {
  return entry.kind == EntryKind::kFile || entry.kind == EntryKind::kFolder;
}

// Each place once: two items may have met it. What stays in the registry is told by its item.
std::string Names(const char* heading, const RunEntries& entries, Fate fate, uint64_t count,
                  size_t most, Tongue tongue) {
  if (count == 0) return {};
  std::string text = "\r\n\r\n" + In(tongue, Say(heading));
  std::set<std::string> named;
  uint64_t left = count;
  for (const RunEntry& entry : entries.all) {
    if (entry.fate != fate || (fate == Fate::kStayed && !IsOnDisk(entry))) continue;
    if (left > 0) --left;
    if (!named.insert(UpCase(PlaceText(entry))).second) continue;
    if (named.size() > most) {
      ++left;
    } else {
      text += Line(entries, entry, tongue);
    }
  }
  if (left == 0) return text;
  const std::string more = std::to_string(left);
  return text + "\r\n" +
         In(tongue, most == kNamesShown
                        ? Say("and %1 more; the log names them when it is saved.", more)
                        : Say("and %1 more", more));
}

// Without entries nobody knows better.
bool SomeWereLocked(const RunState& state) {
  return state.StayedLocked > 0 || (state.SomeFilesLocked && state.StayedCount == 0);
}

}  // namespace

void NoteEntry(RunState& state, RunEntry entry) {
  entry.item = state.ItemInWork;
  state.Entries->Add(std::move(entry));
}

RunEntry FileEntry(std::string_view path, const FileInfo& file) {
  return {.bytes = file.size, .last_write = file.last_write, .place = std::string(path)};
}

void CountRemoved(RunState& state, std::string_view path, const FileInfo& file, Way way,
                  std::string_view archive) {
  ++state.RunFilesDeleted;
  ++state.FilesDeleted;
  state.RunSpaceGained += static_cast<double>(file.size);
  state.SpaceGained += static_cast<double>(file.size);
  RunEntry entry = FileEntry(path, file);
  entry.way = way;
  entry.archive = state.Entries->ArchiveNumber(archive);
  NoteEntry(state, std::move(entry));
}

void NoteStayed(RunState& state, std::string_view path, const Error& error, const FileInfo& seen) {
  NoteStayed(state, path, SentenceOf(error), error.kind(), seen);
}

void NoteStayed(RunState& state, std::string_view path, const Sentence& reason, Error::Kind kind,
                const FileInfo& seen) {
  if (kind == Error::Kind::kKept) return NoteKept(state, path, reason.english);
  state.SomeFilesLocked = true;
  ++state.StayedCount;
  if (kind == Error::Kind::kInUse) ++state.StayedLocked;
  // A program that runs is denied, not in use.
  const bool may_be_held = kind == Error::Kind::kInUse || kind == Error::Kind::kDenied;
  if (may_be_held && state.MaybeHeld.size() < kMostHeld)
    state.MaybeHeld.push_back(state.Entries->all.size());
  RunEntry entry = FileEntry(path, seen);
  entry.fate = Fate::kStayed;
  state.Entries->Note(entry, reason);
  const size_t index = state.Entries->all.size();
  NoteEntry(state, std::move(entry));
  const bool is_listed = state.Entries->all.size() > index;
  if (kind == Error::Kind::kInUse && is_listed) state.Parts.Get<InUse>().entries.push_back(index);
}

void NoteKept(RunState& state, RunEntry entry, std::string_view line) {
  ++state.KeptCount;
  entry.fate = Fate::kKept;
  entry.note = line;
  NoteEntry(state, std::move(entry));
}

void NoteKept(RunState& state, std::string_view path, std::string_view line) {
  NoteKept(state, {.place = std::string(path)}, line);
}

Sentence KeptSentence(std::string_view line) {
  return Say("It is kept by the line %1 of your keep list.", line);
}

std::vector<std::string_view> StayedSentences(const RunState& state) {
  std::vector<std::string_view> sentences;
  if (SomeWereLocked(state)) {
    sentences.push_back(Mark("Some files were not deleted because they were locked or in use."));
  }
  if (state.StayedCount > state.StayedLocked) {
    sentences.push_back(
        Mark("Some files were not deleted for the reasons that stand behind their names."));
  }
  return sentences;
}

std::string NotBackedUpLine(const RunState& state) {
  if (state.FilesNotBackedUp == 0) return {};
  return "\r\n" +
         Log("Deleted without a backup: %1 file(s)", std::to_string(state.FilesNotBackedUp));
}

std::string KeptLine(const RunState& state) {
  if (state.KeptCount == 0) return {};
  return "\r\n" + Log("Kept by the keep list: %1", std::to_string(state.KeptCount));
}

std::string WipedLine(const RunState& state) {
  const bool has_wiped = std::ranges::any_of(state.Entries->all, [](const RunEntry& entry) {
    return entry.fate == Fate::kRemoved && entry.way == Way::kWiped;
  });
  const std::string_view note = WipingNote();
  const bool has_any = has_wiped || state.Parts.Find<HasOverwritten>();
  return !has_any || note.empty() ? "" : "\r\n\r\n" + std::string(note);
}

std::string LeftToStartLine(const RunState& state) {
  if (state.LeftToStart == 0) return {};
  return "\r\n" +
         Log("Left to the next start of Windows: %1 file(s)", std::to_string(state.LeftToStart));
}

std::string StayedNames(const RunTotals& totals, size_t most, Tongue tongue) {
  const RunEntries& entries = *totals.Entries;
  return Names(Mark("Not deleted:"), entries, Fate::kStayed, totals.StayedCount, most, tongue) +
         Names(Mark("Kept:"), entries, Fate::kKept, totals.KeptCount, most, tongue);
}

}  // namespace quellix
