#include "run/stayed.h"

#include <set>

#include "platform/text.h"

namespace quellix {
namespace {

// The system's sentence names most paths itself.
std::string Line(const StayedEntry& entry) {
  return "\r\n" + (entry.reason.find(entry.path) == std::string::npos ? entry.path + ": " : "") +
         entry.reason;
}

std::string KeptEntry(const StayedEntry& entry) {
  return "\r\n" + entry.path + " (by the line " + entry.reason + ")";
}

// Each path once: two items may have met it.
std::string Names(const char* heading, const std::vector<StayedEntry>& entries, uint64_t count,
                  size_t most, std::string (*line)(const StayedEntry& entry)) {
  if (entries.empty()) return {};
  std::string text = std::string("\r\n\r\n") + heading;
  std::set<std::string> named;
  uint64_t left = count - entries.size();
  for (const StayedEntry& entry : entries) {
    if (!named.insert(UpCase(entry.path)).second) continue;
    if (named.size() > most) {
      ++left;
    } else {
      text += line(entry);
    }
  }
  if (left == 0) return text;
  return text + "\r\nand " + std::to_string(left) + " more" +
         (most == kNamesShown ? "; the log names them when it is saved." : "");
}

// Without entries nobody knows better.
bool SomeWereLocked(const RunState& state) {
  return state.StayedLocked > 0 || (state.SomeFilesLocked && state.StayedCount == 0);
}

}  // namespace

void NoteStayed(RunState& state, std::string_view path, std::string_view reason, Error::Kind kind) {
  if (kind == Error::Kind::kKept) return NoteKept(state, path, reason);
  state.SomeFilesLocked = true;
  ++state.StayedCount;
  if (kind == Error::Kind::kInUse) ++state.StayedLocked;
  if (state.Stayed.size() == RunState::kMostStayed) return;
  state.Stayed.push_back({std::string(path), std::string(reason)});
}

void NoteKept(RunState& state, std::string_view path, std::string_view line) {
  ++state.KeptCount;
  if (state.Kept.size() == RunState::kMostStayed) return;
  state.Kept.push_back({std::string(path), std::string(line)});
}

std::vector<std::string_view> StayedSentences(const RunState& state) {
  std::vector<std::string_view> sentences;
  if (SomeWereLocked(state)) {
    sentences.push_back("Some files were not deleted because they were locked or in use.");
  }
  if (state.StayedCount > state.StayedLocked) {
    sentences.push_back(
        "Some files were not deleted for the reasons that stand behind their names.");
  }
  return sentences;
}

std::string NotBackedUpLine(const RunState& state) {
  if (state.FilesNotBackedUp == 0) return {};
  return "\r\nDeleted without a backup: " + std::to_string(state.FilesNotBackedUp) + " file(s)";
}

std::string KeptLine(const RunState& state) {
  if (state.KeptCount == 0) return {};
  return "\r\nKept by the keep list: " + std::to_string(state.KeptCount);
}

std::string StayedNames(const RunState& state, size_t most) {
  return Names("Not deleted:", state.Stayed, state.StayedCount, most, Line) +
         Names("Kept:", state.Kept, state.KeptCount, most, KeptEntry);
}

}  // namespace quellix
