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

// Without entries nobody knows better.
bool SomeWereLocked(const RunState& state) {
  return state.StayedLocked > 0 || (state.SomeFilesLocked && state.StayedCount == 0);
}

}  // namespace

void NoteStayed(RunState& state, std::string_view path, std::string_view reason, Error::Kind kind) {
  state.SomeFilesLocked = true;
  ++state.StayedCount;
  if (kind == Error::Kind::kInUse) ++state.StayedLocked;
  if (state.Stayed.size() == RunState::kMostStayed) return;
  state.Stayed.push_back({std::string(path), std::string(reason)});
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

// Each path once: two items may have met it.
std::string StayedNames(const RunState& state, size_t most) {
  if (state.Stayed.empty()) return {};
  std::string text = "\r\n\r\nNot deleted:";
  std::set<std::string> named;
  uint64_t left = state.StayedCount - state.Stayed.size();
  for (const StayedEntry& entry : state.Stayed) {
    if (!named.insert(UpCase(entry.path)).second) continue;
    if (named.size() > most) {
      ++left;
    } else {
      text += Line(entry);
    }
  }
  if (left == 0) return text;
  return text + "\r\nand " + std::to_string(left) + " more" +
         (most == kNamesShown ? "; the log names them when it is saved." : "");
}

}  // namespace quellix
