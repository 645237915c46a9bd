#include "app/undo_run.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "backup/backups.h"
#include "backup/recycled.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

bool IsIn(const RunEntry& entry, size_t archive) {
  return entry.archive == archive && entry.fate == Fate::kRemoved;
}

bool IsRecycled(const RunEntry& entry) {
  return entry.way == Way::kRecycled && entry.kind == EntryKind::kFile &&
         entry.fate == Fate::kRemoved;
}

// As an archive names a file: below "C:\", or below the "\\" of a server.
std::string NameInArchive(const std::string& place) {
  return place.substr(std::min<size_t>(place.starts_with("\\\\") ? 2 : 3, place.size()));
}

// The files of the run. An archive of registry entries is the run's alone, and goes back whole.
std::vector<std::string> NamesIn(const RunEntries& run, size_t archive) {
  std::vector<std::string> names;
  for (const RunEntry& entry : run.all) {
    const bool is_file = entry.kind == EntryKind::kFile || entry.kind == EntryKind::kRows;
    if (!IsIn(entry, archive) || !is_file) continue;
    std::string name = NameInArchive(entry.place);
    if (names.empty() || names.back() != name) names.push_back(std::move(name));
  }
  return names;
}

void Add(RestoreResult& sum, RestoreResult part) {
  sum.restored += part.restored;
  sum.skipped += part.skipped;
  sum.cancelled = sum.cancelled || part.cancelled;
  std::ranges::move(part.problems, std::back_inserter(sum.problems));
}

}  // namespace

bool CanUndo(const RunEntries& run) {
  return std::ranges::any_of(run.all, [](const RunEntry& entry) {
    return (entry.archive != 0 || IsRecycled(entry)) && entry.fate == Fate::kRemoved;
  });
}

RestoreResult UndoRun(const Machine& machine, const RunEntries& run, Prompts& prompts,
                      const Pause& pause) {
  RestoreResult sum;
  for (size_t i = 1; i < run.archives.size() && !sum.cancelled; ++i) {
    const std::string& archive = run.archives[i];
    const bool is_used =
        std::ranges::any_of(run.all, [i](const RunEntry& entry) { return IsIn(entry, i); });
    std::vector<std::string> names = NamesIn(run, i);
    const bool goes_whole = archive.ends_with(".reg");
    if (!is_used || names.empty() != goes_whole) continue;  // without names all would come back
    try {
      Backups backups(machine);
      // A record may have been made by others.
      const auto name = backups.NameOf(archive);
      if (!name) throw Error(Error::Kind::kDenied, Say("%1 is not in the backup folder.", archive));
      Add(sum, backups.Restore(
                   *name, {.entry_paths = std::move(names), .to = "", .mode = OverwriteMode::kAsk},
                   prompts, pause));
    } catch (const Error& error) {
      sum.problems.push_back(Shown(error));
    }
  }
  std::vector<RecycledFile> recycled;
  for (const RunEntry& entry : run.all) {
    if (IsRecycled(entry)) recycled.push_back({entry.place, entry.bytes});
  }
  if (!recycled.empty() && !sum.cancelled) Add(sum, RestoreRecycled(machine, recycled, pause));
  return sum;
}

}  // namespace quellix
