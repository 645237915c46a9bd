#include "app/backup_step.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr size_t kMostFiles = 10000;
constexpr uint64_t kMostBytes = 64 << 20;

}  // namespace

bool IsInBackupFolder(const RunState& state, std::string_view path) {
  const std::string& folder = state.BackupFolder;
  return path.size() > folder.size() && EqualsNoCase(path.substr(0, folder.size()), folder);
}

bool BackupBatch::IsFull() const { return files_.size() >= kMostFiles || bytes_ >= kMostBytes; }

bool BackupBatch::FitsDriveOf(std::string_view path) const {
  return EqualsNoCase(path.substr(0, 1), context_.state.BackupDrive);
}

void BackupBatch::Add(std::string_view path, uint64_t bytes) {
  RunState& state = context_.state;
  if (!FitsDriveOf(path)) {
    const std::string letter(path.substr(0, 1));
    context_.backup.MakeBackupArchiveName(state.BackupFolder, letter + "_");
    state.BackupDrive = letter;
  }
  const FileInfo seen = LookIfStrict(path);
  const bool archived = context_.backup.BackupFile(path);
  files_.push_back(
      {path, bytes, archived, archived ? "" : std::string(context_.backup.Problem()), seen});
  bytes_ += bytes;
}

FileInfo BackupBatch::LookIfStrict(std::string_view path) const {
  if (!context_.state.Backup.strict) return {};
  return context_.machine.files.Look(path, Detail::kSize).value_or(FileInfo{});
}

// Why a file does not count as archived, "" when it does.
const std::string& BackupBatch::ProblemOf(File& file, bool on_disk) const {
  if (!file.archived) return file.problem;
  if (!on_disk) return file.problem = context_.backup.Problem();
  const FileInfo now = LookIfStrict(file.path);
  if (now.size != file.seen.size || now.last_write != file.seen.last_write) {
    file.problem = "it changed after it was archived";
  }
  return file.problem;
}

void BackupBatch::Remove(const Removal& remove) {
  RunState& state = context_.state;
  const bool on_disk = context_.backup.Flush();
  for (File& file : files_) {
    if (ProblemOf(file, on_disk).empty()) {
      ++state.FilesBackedUp;
    } else if (state.Backup.strict) {
      state.SomeFilesLocked = true;
      state.RunLog.append("Not backed up and therefore not deleted: ").append(file.path);
      state.RunLog.append(" (").append(file.problem).append(")\r\n");
      continue;
    }
    remove(file.path, file.bytes);
  }
  files_.clear();
  bytes_ = 0;
}

}  // namespace quellix
