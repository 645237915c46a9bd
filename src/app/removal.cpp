#include "app/removal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

#include "app/backup_step.h"
#include "app/random_source.h"
#include "app/run_steps.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

RandomSource& Random() {
  static RandomSource source;
  return source;
}

// A pause for the interface; true when the user has stopped the run.
bool StoppedAtPause(CleaningContext& context) {
  context.view.Yield();
  context.view.Yield();
  return context.state.AbortRequested;
}

// Overwrites the whole file once; false when stopped.
bool Overwrite(CleaningContext& context, RandomFile& file) {
  const uint64_t step = context.state.WipeStep;
  const bool flush_each = step == 1;
  std::string bytes(std::min(step, file.Size()), '\0');
  bool stopped = false;
  for (uint64_t at = 0; at < file.Size() && !stopped; at += step) {
    stopped = StoppedAtPause(context);
    if (stopped) break;
    bytes.resize(std::min(step, file.Size() - at));
    if (context.state.ExtraSecurity != 0) Random().FillWithPercents(bytes);
    file.Write(at, bytes);
    if (flush_each) file.Flush();
  }
  if (!flush_each && file.Size() > 0) file.Flush();
  return !stopped;
}

// A number below 1000 with up to three decimals, such as 527.317.
std::string RandomName() {
  char text[32];
  std::snprintf(text, sizeof text, "%.7g", std::round(Random().Next() * 1e6) / 1e3);
  return text;
}

std::string RenamedForWipe(CleaningContext& context, std::string_view path) {
  if (context.state.RenameBeforeDelete != 1) return std::string(path);
  std::string renamed = std::string(FolderPart(path)) + RandomName();
  context.machine.files.Rename(path, renamed);
  return renamed;
}

// Whether or not it was archived, unless the user wants it otherwise.
bool RemoveWithBackup(CleaningContext& context, std::string_view path) {
  if (IsInBackupFolder(context.state, path)) {
    throw Error(Error::Kind::kDenied, "It lies in the folder of the backups.");
  }
  BackupBatch batch(context);
  batch.Add(path, 0);
  if (context.state.AbortRequested) return false;
  bool removed = false;
  batch.Remove([&](std::string_view, uint64_t) {
    context.machine.files.RemoveFile(path);
    removed = true;
  });
  if (!removed) {
    throw Error(Error::Kind::kOther, "It could not be backed up and was therefore not deleted. " +
                                         std::string(context.backup.Problem()));
  }
  return true;
}

bool RemoveByMode(CleaningContext& context, std::string_view path) {
  FileSystem& files = context.machine.files;
  switch (context.state.RemovalMode) {
    case kDelete:
      files.RemoveFile(path);
      return true;
    case kRecycle:
      files.SetAttributes(path, kNormal);
      files.Recycle(path);
      return true;
    case kWipe:
      files.SetAttributes(path, kNormal);
      return WipeFile(context, path);
    case kBackUp:
      return RemoveWithBackup(context, path);
    default:
      return false;
  }
}

void StartProgress(CleaningContext& context) {
  RunState& state = context.state;
  ++state.ProgressCounter;
  // One more than the counter, but never less than the files, so that the bar ends with them.
  const auto files = static_cast<int32_t>(state.PendingFiles.size());
  state.Progress.max = std::max(state.ProgressCounter + 1, files);
  state.Progress.value = 0;
  context.view.SetProgress(state.Progress);
}

void ShowProgress(CleaningContext& context, size_t done) {
  context.state.Progress.value = static_cast<int32_t>(done);
  context.view.SetProgress(context.state.Progress);
}

// The user has stopped: what was archived and is still there stays.
void Abandon(CleaningContext& context) {
  context.backup.DeleteBackupArchive();
  EndRun(context, "Aborted by user");
}

void RemoveBatch(CleaningContext& context, BackupBatch& batch) {
  batch.Remove([&](std::string_view path, uint64_t bytes) {
    try {
      context.machine.files.RemoveFile(path);
      CountRemoved(context.state, static_cast<double>(bytes));
    } catch (const std::exception&) {
      context.state.SomeFilesLocked = true;
    }
  });
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

bool WipeFile(CleaningContext& context, std::string_view path) {
  FileSystem& files = context.machine.files;
  const std::optional<FileInfo> info = files.Look(path);
  if (!info) return false;
  if (!info->is_link) {
    const std::unique_ptr<RandomFile> file = files.Open(path, OpenMode::kWrite);
    if (!Overwrite(context, *file)) return false;
  }
  files.RemoveFile(RenamedForWipe(context, path));
  return true;
}

bool RemoveFile(CleaningContext& context, std::string_view path, std::string* reason) {
  bool removed = false;
  try {
    removed = RemoveByMode(context, path);
  } catch (const std::exception& error) {
    // Noted below, told once at the end of the run.
    if (reason != nullptr) *reason = error.what();
  }
  if (!removed) context.state.SomeFilesLocked = true;
  return removed;
}

void CountRemoved(RunState& state, double bytes) {
  ++state.RunFilesDeleted;
  ++state.FilesDeleted;
  state.RunSpaceGained += bytes;
  state.SpaceGained += bytes;
}

void RemovePendingFiles(CleaningContext& context) {
  RunState& state = context.state;
  StartProgress(context);
  BackupBatch batch(context);
  std::string status;
  for (size_t i = 0; i < state.PendingFiles.size(); ++i) {
    if (StoppedAtPause(context)) return Abandon(context);
    const std::string_view path = state.PendingFiles[i];
    const std::optional<FileInfo> info = context.machine.files.Look(path, Detail::kKind);
    const uint64_t bytes = info ? info->size : 0;
    context.view.SetStatus(status.assign("Deleting file: ").append(path));
    if (state.RemovalMode != kBackUp) {
      if (RemoveFile(context, path)) CountRemoved(state, static_cast<double>(bytes));
    } else if (!IsInBackupFolder(state, path)) {
      if (!batch.FitsDriveOf(path)) RemoveBatch(context, batch);
      batch.Add(path, bytes);
      if (state.AbortRequested) return Abandon(context);
      if (batch.IsFull()) RemoveBatch(context, batch);
    }
    ShowProgress(context, i + 1);
  }
  RemoveBatch(context, batch);
}

void RemovePendingFolders(CleaningContext& context) {
  const PathList& folders = context.state.PendingFolders;
  for (const size_t index : DeepestFirst(folders)) {
    if (StoppedAtPause(context)) return;
    try {
      context.machine.files.RemoveFolder(folders[index]);
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
