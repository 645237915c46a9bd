#include "run/removal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/backup_step.h"
#include "run/deletion_batch.h"
#include "run/random_source.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"

namespace quellix {
namespace {

RandomSource& Random() {
  static RandomSource source;
  return source;
}

// Overwrites a part of a file once; false when stopped. The file takes its time: how much of it is
// overwritten shows meanwhile.
bool Overwrite(CleaningContext& context, RandomFile& file, const Extent& part) {
  FileProgress& shown = context.state.Files;
  const double before = shown.bytes;
  const uint64_t step = context.state.WipeStep, end = part.offset + part.size;
  const bool flush_each = step == 1;
  std::string bytes(std::min(step, part.size), '\0');
  for (uint64_t at = part.offset; at < end; at += step) {
    if (StopsRun(context)) return false;
    bytes.resize(std::min(step, end - at));
    if (context.state.ExtraSecurity != 0) Random().FillWithPercents(bytes);
    file.Write(at, bytes);
    if (flush_each) file.Flush();
    shown.bytes = before + static_cast<double>(at - part.offset + bytes.size());
    context.view.ShowFiles(shown);
  }
  return true;
}

// All of a file that takes room on the disk; false when stopped.
bool Overwrite(CleaningContext& context, RandomFile& file) {
  bool stopped = false;
  for (const Extent& part : file.Allocated()) {
    stopped = stopped || !Overwrite(context, file, part);
  }
  if (context.state.WipeStep != 1 && file.Size() > 0) file.Flush();
  return !stopped;
}

// A number below 1000 with up to three decimals, such as 527.317.
std::string RandomName() {
  char text[32];
  std::snprintf(text, sizeof text, "%.7g", std::round(Random().Next() * 1e6) / 1e3);
  return text;
}

std::string RenamedForWipe(CleaningContext& context, Folder& folder, std::string_view name) {
  if (context.state.RenameBeforeDelete != 1) return std::string(name);
  std::string renamed = RandomName();
  folder.Rename(name, renamed, IfThere::kFail);
  return renamed;
}

// Overwrites a file, once; nothing when stopped. One that other names lead to as well is left as it
// is, which is told.
std::optional<Way> OverwriteUnlessShared(CleaningContext& context, Folder& folder,
                                         std::string_view path) {
  const std::unique_ptr<RandomFile> file = folder.Open(NamePart(path), OpenMode::kWrite);
  if (file->LinkCount() > 1) {
    LogLine(
        context.state,
        Log("%1 has further names: it was not overwritten, and only this name was removed.", path));
    return Way::kDeleted;
  }
  context.state.Parts.Get<HasOverwritten>();
  return Overwrite(context, *file) ? std::optional(Way::kWiped) : std::nullopt;
}

// Overwrites a file in a single pass and removes it; nothing when stopped, with the file still
// there, perhaps partly overwritten. Only what takes room on the disk is written. Of a link, and of
// a file that has further names, only this name goes. Throws Error; the attributes are then as they
// were.
std::optional<Way> WipeFile(CleaningContext& context, Folder& folder, std::string_view path) {
  const std::string_view name = NamePart(path);
  const std::optional<FileInfo> info = folder.Look(name);
  if (!info) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  const bool is_locked = (info->attributes & kReadOnly) != 0 && !info->is_link;
  if (is_locked) folder.SetAttributes(name, kNormal);
  std::optional<Way> way;
  try {
    way = info->is_link ? Way::kDeleted : OverwriteUnlessShared(context, folder, path);
    if (way) folder.RemoveFile(RenamedForWipe(context, folder, name));
  } catch (const Error&) {
    if (is_locked && folder.Look(name)) folder.SetAttributes(name, info->attributes);
    throw;
  }
  if (!way && is_locked) folder.SetAttributes(name, info->attributes);
  return way;
}

// Whether or not it was archived, unless the user wants it otherwise.
bool RemoveWithBackup(CleaningContext& context, Folder& folder, WorkingFolder& working,
                      std::string_view path, const FileInfo& info) {
  BackupBatch batch(context);
  batch.Add(folder, path, info);
  if (context.state.AbortRequested) return false;
  batch.RemoveOnly(working);
  return true;
}

bool IsChosenFile(RunState& state, std::string_view path, const FileInfo& info) {
  return !state.Choice || IsChosen(state, FileEntry(path, info));
}

// False when stopped.
bool RemoveByMode(CleaningContext& context, WorkingFolder& working, Folder& folder,
                  std::string_view path, const FileInfo& info) {
  std::optional<Way> way;
  switch (context.state.RemovalMode) {
    case kDelete:
      folder.RemoveFile(NamePart(path));
      way = Way::kDeleted;
      break;
    case kRecycle:
      folder.Recycle(NamePart(path));
      way = Way::kRecycled;
      break;
    case kWipe:
      way = WipeFile(context, folder, path);
      break;
    case kBackUp:
      return RemoveWithBackup(context, folder, working, path, info);
    default:
      break;
  }
  if (way) CountRemoved(context.state, path, info, *way);
  return way.has_value();
}

// Of what is in use also what becomes of it, where the user leaves that to the system's next start:
// only what would have been deleted now, as nothing archives or wipes it then.
Sentence WhyItStays(CleaningContext& context, WorkingFolder& working, std::string_view path,
                    const Error& error) {
  RunState& state = context.state;
  Sentence why = SentenceOf(error);
  const bool may_wait = state.LeavesToStart && !state.IsPreview && state.RemovalMode == kDelete &&
                        error.kind() == Error::Kind::kInUse;
  if (!may_wait) return why;
  try {
    working.Of(path).RemoveAtStart(NamePart(path));
    ++state.LeftToStart;
    return Say("%1 Windows removes it at its next start.", why);
  } catch (const Error& refused) {
    // TRANSLATORS: Two sentences.
    return Say("%1 %2", why, SentenceOf(refused));
  }
}

// What is taken for the system's next start alone has been asked about as in use, and is not
// removed where it no longer is: throws Error either way.
void LeaveWhatWaits(RunState& state, Folder& folder, std::string_view path, const FileInfo& info) {
  if (!state.Choice || !state.Choice->OnlyWaits(FileEntry(path, info))) return;
  folder.RequireRemovable(NamePart(path));
  throw Error(Error::Kind::kOther, Say("It is no longer in use: clean again to remove it."));
}

// Removes a file of a list and counts it; what stays is noted. False when it stays.
bool RemoveAndCount(CleaningContext& context, WorkingFolder& working, std::string_view path,
                    Sentence* reason = nullptr) {
  std::optional<FileInfo> info;
  try {
    Folder& folder = working.Of(path);
    info = folder.Look(NamePart(path), Detail::kSize);
    if (!info) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
    if (!IsChosenFile(context.state, path, *info)) return false;
    LeaveWhatWaits(context.state, folder, path, *info);
    if (RemoveByMode(context, working, folder, path, *info)) return true;
    context.state.SomeFilesLocked = true;
  } catch (const Error& error) {
    if (reason != nullptr) {
      *reason = error.kind() == Error::Kind::kKept ? KeptSentence(error.what()) : SentenceOf(error);
    }
    NoteStayed(context.state, path, WhyItStays(context, working, path, error), error.kind(),
               info.value_or(FileInfo{}));
  } catch (const std::exception& error) {
    if (reason != nullptr) *reason = SentenceOf(error);
    NoteStayed(context.state, path, SentenceOf(error), Error::Kind::kOther,
               info.value_or(FileInfo{}));
  }
  return false;
}

// Files from which on a thread of their own is worth while, and to be told to one that is there.
constexpr size_t kEnough = 256, kEnoughToExpect = 16;

// Archives and overwritten files take their time by their bytes. Those that cannot be looked at
// stay.
double BytesOf(CleaningContext& context, WorkingFolder& working, const FileList& list) {
  RunState& state = context.state;
  const bool counts = state.RemovalMode == kWipe || state.RemovalMode == kBackUp;
  double bytes = 0;
  for (size_t i = 0; counts && !state.IsPreview && i < list.PendingFiles.size(); ++i) {
    if (StopsRun(context)) return 0;
    const std::string_view path = list.PendingFiles[i];
    try {
      const std::optional<FileInfo> info = working.Of(path).Look(NamePart(path), Detail::kSize);
      const bool goes = info && (!state.Choice || state.Choice->WouldTake(FileEntry(path, *info)));
      if (goes) bytes += static_cast<double>(info->size);
    } catch (const Error&) {
      continue;  // its own turn tells
    }
  }
  return bytes;
}

// How far a list is, on the bar and in figures.
class ListProgress {
 public:
  ListProgress(CleaningContext& context, WorkingFolder& working, const FileList& list)
      : context_(context), before_(context.state.RunSpaceGained) {
    RunState& state = context.state;
    ++state.ProgressCounter;
    // One more than the counter, but never less than the files, so that the bar ends with them.
    state.Progress.max =
        std::max(state.ProgressCounter + 1, static_cast<int32_t>(list.PendingFiles.size()));
    state.Progress.value = 0;
    context.view.SetProgress(state.Progress);
    state.Files = {.total = list.PendingFiles.size(), .all_bytes = BytesOf(context, working, list)};
    context.view.ShowFiles(state.Files);
  }
  ~ListProgress() {
    context_.state.Files = {};
    context_.view.ShowFiles({});
  }
  ListProgress(const ListProgress&) = delete;
  ListProgress& operator=(const ListProgress&) = delete;

  void Show(size_t done) const {
    RunState& state = context_.state;
    state.Progress.value = static_cast<int32_t>(done);
    context_.view.SetProgress(state.Progress);
    state.Files.done = done;
    state.Files.bytes = state.RunSpaceGained - before_;
    context_.view.ShowFiles(state.Files);
  }

 private:
  CleaningContext& context_;
  double before_;
};

// The user has stopped: what was archived and is still there stays.
void Abandon(CleaningContext& context) {
  DropArchive(context);
  EndRun(context, Mark("Aborted by user"));
}

// Archives a file and removes those before it when their time has come.
void AddToBatch(CleaningContext& context, WorkingFolder& working, BackupBatch& batch,
                std::string_view path) {
  if (!batch.FitsDriveOf(path)) batch.Remove(working);
  try {
    Folder& folder = working.Of(path);
    const std::optional<FileInfo> info = folder.Look(NamePart(path), Detail::kSize);
    if (!info) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
    if (!IsChosenFile(context.state, path, *info)) return;
    batch.Add(folder, path, *info);
  } catch (const Error& error) {
    NoteStayed(context.state, path, error);
  }
  if (!context.state.AbortRequested && batch.IsFull()) batch.Remove(working);
}

// Indexes of PendingFolders, deepest first, otherwise in list order.
std::vector<size_t> DeepestFirst(const PathList& folders) {
  std::vector<std::pair<int64_t, size_t>> keyed(folders.size());
  for (size_t i = 0; i < folders.size(); ++i) {
    const std::string_view path = WithoutBackslash(folders[i]);
    keyed[i] = {-std::count(path.begin(), path.end(), '\\'), i};
  }
  std::sort(keyed.begin(), keyed.end());
  std::vector<size_t> order(keyed.size());
  std::transform(keyed.begin(), keyed.end(), order.begin(), [](auto& key) { return key.second; });
  return order;
}

}  // namespace

bool RemoveFile(CleaningContext& context, std::string_view path, Claim claim, Sentence* reason) {
  const FileList alone;
  WorkingFolder working(context, alone, claim);
  return RemoveAndCount(context, working, path, reason);
}

std::shared_ptr<void> ExpectLooks(CleaningContext& context, std::span<const FileList> lists) {
  std::vector<FilesBelow> coming;
  size_t files = 0;
  for (const FileList& list : lists) {
    if (list.PendingFiles.empty() || !list.folder) continue;
    coming.push_back({list.folder.get(), list.PendingFiles.All(), list.folder_path.size()});
    files += list.PendingFiles.size();
  }
  return files < kEnoughToExpect ? nullptr : context.machine.files.ExpectLooks(coming);
}

void RemovePendingFiles(CleaningContext& context, const FileList& list, Claim claim) {
  RunState& state = context.state;
  WorkingFolder working(context, list, claim);
  const ListProgress progress(context, working, list);
  BackupBatch batch(context);
  DeletionBatch deletion(context, working,
                         [&](std::string_view path) { RemoveAndCount(context, working, path); });
  // What was chosen singly is looked at before.
  bool together =
      state.RemovalMode == kDelete && !state.Choice && list.PendingFiles.size() >= kEnough;
  std::shared_ptr<void> expected;
  // What is removed is judged by what it is now.
  if (state.IsPreview && state.RemovalMode == kDelete) expected = ExpectLooks(context, {&list, 1});
  const std::string deleting = Tr("Deleting file: %1");
  std::string status;
  for (size_t i = 0; i < list.PendingFiles.size(); ++i) {
    if (StopsRun(context)) {
      deletion.Stop();
      return Abandon(context);
    }
    const std::string_view path = list.PendingFiles[i];
    FillInto(status, deleting, {path});
    context.view.SetStatus(status);
    if (together) {
      together = deletion.Add(path);
    } else if (state.RemovalMode != kBackUp) {
      RemoveAndCount(context, working, path);
    } else {
      AddToBatch(context, working, batch, path);
      if (state.AbortRequested) return Abandon(context);
    }
    progress.Show(i + 1);
  }
  deletion.Finish();
  batch.Remove(working);
}

void RemovePendingFolders(CleaningContext& context, const FileList& list) {
  const PathList& folders = list.PendingFolders;
  WorkingFolder working(context, list, Claim::kItem);
  for (const size_t index : DeepestFirst(folders)) {
    if (StopsRun(context)) return;
    const std::string_view path = WithoutBackslash(folders[index]);
    RunEntry entry{.kind = EntryKind::kFolder, .place = std::string(path)};
    if (!IsChosen(context.state, entry)) continue;
    try {
      working.OfFolder(path).RemoveFolder(NamePart(path));
      NoteEntry(context.state, std::move(entry));
    } catch (const Error&) {
      continue;  // not empty, in use or gone: it stays
    }
  }
}

std::string FormatSize(double bytes, int decimals, bool with_unit, const Locale& locale) {
  struct Unit {
    double size;
    const char* text;
  };
  static constexpr Unit kUnits[] = {{1073741824, " GB"}, {1048576, " MB"}, {1024, " KB"}};
  for (const Unit& unit : kUnits) {
    if (bytes >= unit.size) {
      return FormatNumber(bytes / unit.size, decimals, locale) + (with_unit ? unit.text : "");
    }
  }
  return FormatNumber(bytes, 0, locale) + (with_unit ? " Bytes" : "");
}

}  // namespace quellix
