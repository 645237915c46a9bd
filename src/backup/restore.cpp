#include "backup/restore.h"

#include "backup/entry_path.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

constexpr uint64_t kStepsAFile = 16 << 10;

FileTimes TimesOf(const ZipEntry& entry) {
  FileTimes times = entry.times;
  times.last_write = LastWriteOf(entry);
  return times;
}

}  // namespace

int64_t LastWriteOf(const ZipEntry& entry) {
  return entry.times.last_write != 0 ? entry.times.last_write : FromDosTime(entry.dos_time, 0);
}

uint64_t StepsOf(const ZipEntry& entry) { return entry.size + kStepsAFile; }

// A new file beside the one to restore; removed again unless it takes its place.
class Restorer::NewFile {
 public:
  NewFile(FileSystem& files, const std::string& target)
      : files_(files), path_(std::string(FolderPart(target)) + "~quellix-restore.tmp") {
    if (files_.Look(path_)) files_.RemoveFile(path_);  // left by a crash
    file_ = files_.Open(path_, OpenMode::kReadAndCreate);
  }
  ~NewFile() {
    file_.reset();
    if (path_.empty()) return;
    try {
      files_.RemoveFile(path_);
    } catch (const Error&) {
      return;  // the failure that led here is told
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  RandomFile& file() { return *file_; }
  void Place(const std::string& target) {
    file_.reset();
    if (files_.Look(target)) {
      Exchange(target);
    } else {
      files_.Rename(path_, target);
    }
    path_.clear();
  }

 private:
  // What is there goes only when its successor has its name.
  void Exchange(const std::string& target) {
    const std::string aside = std::string(FolderPart(target)) + "~quellix-replaced.tmp";
    if (files_.Look(aside)) files_.RemoveFile(aside);
    files_.Rename(target, aside);
    try {
      files_.Rename(path_, target);
    } catch (const Error&) {
      files_.Rename(aside, target);
      throw;
    }
    files_.RemoveFile(aside);
  }

  FileSystem& files_;
  std::string path_;
  std::unique_ptr<RandomFile> file_;
};

// Links below the folder that was named are not followed.
Restorer::Restorer(FileSystem& files, ZipReader& archive, std::string root, OverwriteMode mode,
                   Prompts& prompts)
    : files_(files), archive_(archive), root_(std::move(root)), mode_(mode), prompts_(prompts) {
  if (root_.size() > 3) MakeFolders(files_, root_);
}

void Restorer::OnPause(const RestorePause& pause, uint64_t total) {
  pause_ = pause;
  progress_.total = total;
}

void Restorer::Pause(uint64_t done) {
  RestoreProgress progress = progress_;
  progress.done += done;
  if (pause_ && pause_(progress)) result_.cancelled = true;
}

bool Restorer::Restore(const ZipEntry& entry) {
  const std::string path = EntryPath(entry.name);
  progress_.path = path;
  Pause(0);
  if (result_.cancelled) return false;
  try {
    Put(entry);
  } catch (const Error& error) {
    if (!result_.cancelled) result_.problems.push_back(error.what());
  }
  progress_.done += StepsOf(entry);
  return !result_.cancelled;
}

void Restorer::Put(const ZipEntry& entry) {
  if (const auto refusal = RefusalOf(entry.name)) throw Error(Error::Kind::kDenied, *refusal);
  const std::string target = root_ + EntryPath(entry.name);
  if (target.ends_with('\\')) {
    MakeFolders(files_, target);
  } else if (MayWrite(entry, target)) {
    Write(entry, target);
    ++result_.restored;
  } else if (!result_.cancelled) {
    ++result_.skipped;
  }
}

bool Restorer::MayWrite(const ZipEntry& entry, const std::string& target) {
  const std::optional<FileInfo> there = files_.Look(target);
  if (!there) return true;
  if (there->is_folder) {
    throw Error(Error::Kind::kOther, target + " is not restored: there is a folder of this name.");
  }
  if (mode_ == OverwriteMode::kNewer) return LastWriteOf(entry) > there->last_write;
  if (mode_ != OverwriteMode::kAsk) return mode_ == OverwriteMode::kAlways;
  switch (prompts_.AskOverwrite(target)) {
    case OverwriteAnswer::kYes:
      return true;
    case OverwriteAnswer::kNo:
      return false;
    case OverwriteAnswer::kAll:
      mode_ = OverwriteMode::kAlways;
      return true;
    case OverwriteAnswer::kNone:
      mode_ = OverwriteMode::kNever;
      return false;
    case OverwriteAnswer::kCancel:
      result_.cancelled = true;
  }
  return false;
}

void Restorer::Write(const ZipEntry& entry, const std::string& target) {
  MakeFolders(files_, FolderPart(target));
  NewFile made(files_, target);
  uint64_t at = 0;
  archive_.Extract(entry, [&](std::string_view bytes) {
    made.file().Write(at, bytes);
    at += bytes.size();
    Pause(at);
    if (result_.cancelled) throw Error(Error::Kind::kOther, "The restore was stopped.");
  });
  made.file().SetTimes(TimesOf(entry));
  made.file().Flush();  // the user may delete the archive next
  made.Place(target);
  constexpr uint32_t kSettable = kReadOnly | kHidden | kSystem | kArchive;
  const uint32_t attributes = entry.attributes & kSettable;
  files_.SetAttributes(target, attributes == 0 ? kNormal : attributes);
}

}  // namespace quellix
