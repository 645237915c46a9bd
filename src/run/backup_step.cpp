#include "run/backup_step.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/run_log.h"
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

void BackupBatch::Add(Folder& folder, std::string_view path, const FileInfo& seen) {
  RunState& state = context_.state;
  if (!FitsDriveOf(path)) {
    const std::string letter(path.substr(0, 1));
    context_.backup.MakeBackupArchiveName(state.BackupFolder, letter + "_");
    state.BackupDrive = letter;
  }
  File file{path, seen, {}};
  try {
    const Sentence loss = context_.backup.BackupFile(folder, path);
    if (!loss.empty()) LogLine(state, Log("Not backed up whole: %1 (%2)", path, loss));
  } catch (const std::exception& error) {
    file.problem = SentenceOf(error);
  }
  files_.push_back(std::move(file));
  bytes_ += seen.size;
}

// Brings the archive onto the disk, or notes for every file that it did not get there.
void BackupBatch::Flush() {
  try {
    context_.backup.Flush();
  } catch (const std::exception& error) {
    for (File& file : files_) {
      if (file.problem.empty()) file.problem = SentenceOf(error);
    }
  }
}

// Why a file does not count as archived, empty when it does.
const Sentence& BackupBatch::ProblemOf(Folder& folder, File& file) const {
  if (!file.problem.empty() || !context_.state.Strict) return file.problem;
  const FileInfo now = folder.Look(NamePart(file.path), Detail::kSize).value_or(FileInfo{});
  if (now.size != file.seen.size || now.last_write != file.seen.last_write) {
    file.problem = Say("it changed after it was archived");
  }
  return file.problem;
}

void BackupBatch::RemoveOne(WorkingFolder& working, File& file) {
  RunState& state = context_.state;
  Folder& folder = working.Of(file.path);
  const bool is_safe = ProblemOf(folder, file).empty();
  if (!is_safe && state.Strict) {
    throw Error(Error::Kind::kOther,
                Say("It could not be backed up and was therefore not deleted: %1", file.problem));
  }
  if (is_safe) ++state.FilesBackedUp;
  folder.RemoveFile(NamePart(file.path));
  if (!is_safe) ++state.FilesNotBackedUp;
  CountRemoved(state, file.path, file.seen, is_safe ? Way::kBackedUp : Way::kDeleted,
               is_safe ? context_.backup.Path() : "");
}

void BackupBatch::Remove(WorkingFolder& working) {
  Flush();
  for (File& file : files_) {
    StopsRun(context_);
    try {
      RemoveOne(working, file);
    } catch (const Error& error) {
      NoteStayed(context_.state, file.path, error, file.seen);
    }
  }
  files_.clear();
  bytes_ = 0;
}

void BackupBatch::RemoveOnly(WorkingFolder& working) {
  Flush();
  RemoveOne(working, files_.front());
}

Sentence BackupBatch::Store() {
  Flush();
  Sentence problem;
  for (const File& file : files_) {
    if (problem.empty()) problem = file.problem;
  }
  files_.clear();
  bytes_ = 0;
  return problem;
}

}  // namespace quellix
