#include "run/backup_step.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

constexpr size_t kMostFiles = 10000;
constexpr uint64_t kMostBytes = 64 << 20;

}  // namespace

bool BackupBatch::IsFull() const { return files_.size() >= kMostFiles || bytes_ >= kMostBytes; }

bool BackupBatch::FitsDriveOf(std::string_view path) const {
  return EqualsNoCase(path.substr(0, 1), context_.state.BackupDrive);
}

void BackupBatch::Add(Folder& folder, std::string_view path, uint64_t bytes) {
  RunState& state = context_.state;
  if (!FitsDriveOf(path)) {
    const std::string letter(path.substr(0, 1));
    context_.backup.MakeBackupArchiveName(state.BackupFolder, letter + "_");
    state.BackupDrive = letter;
  }
  const FileInfo seen = LookIfStrict(folder, path);
  const bool archived = context_.backup.BackupFile(folder, path);
  if (archived && !context_.backup.Loss().empty()) {
    state.RunLog.append("Not backed up whole: ").append(path);
    state.RunLog.append(" (").append(context_.backup.Loss()).append(")\r\n");
  }
  files_.push_back(
      {path, bytes, archived, archived ? "" : std::string(context_.backup.Problem()), seen});
  bytes_ += bytes;
}

FileInfo BackupBatch::LookIfStrict(Folder& folder, std::string_view path) const {
  if (!context_.state.Backup.strict) return {};
  return folder.Look(NamePart(path), Detail::kSize).value_or(FileInfo{});
}

// Why a file does not count as archived, "" when it does.
const std::string& BackupBatch::ProblemOf(Folder& folder, File& file, bool on_disk) const {
  if (!file.archived) return file.problem;
  if (!on_disk) return file.problem = context_.backup.Problem();
  const FileInfo now = LookIfStrict(folder, file.path);
  if (now.size != file.seen.size || now.last_write != file.seen.last_write) {
    file.problem = "it changed after it was archived";
  }
  return file.problem;
}

void BackupBatch::RemoveOne(WorkingFolder& working, File& file, bool on_disk,
                            const Removal& remove) {
  RunState& state = context_.state;
  Folder& folder = working.Of(file.path);
  const bool is_safe = ProblemOf(folder, file, on_disk).empty();
  if (!is_safe && state.Backup.strict) {
    throw Error(Error::Kind::kOther,
                "It could not be backed up and was therefore not deleted: " + file.problem);
  }
  if (is_safe) ++state.FilesBackedUp;
  remove(folder, file.path, file.bytes);
  if (!is_safe) ++state.FilesNotBackedUp;
}

void BackupBatch::Remove(WorkingFolder& working, const Removal& remove) {
  const bool on_disk = context_.backup.Flush();
  for (File& file : files_) {
    try {
      RemoveOne(working, file, on_disk, remove);
    } catch (const Error& error) {
      NoteStayed(context_.state, file.path, error.what(), error.kind());
    }
  }
  files_.clear();
  bytes_ = 0;
}

}  // namespace quellix
