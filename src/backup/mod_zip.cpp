#include "backup/mod_zip.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "backup/backup_names.h"
#include "backup/zip_repair.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

// From the two clocks, in quarters of an hour: no port tells the zone.
int ZoneMinutes(const LocalTime& now) {
  const int64_t local = ((DayNumber(now) * 24 + now.hour) * 60 + now.minute) * 60 + now.second;
  const auto utc = std::chrono::system_clock::now().time_since_epoch();
  const double seconds = std::chrono::duration<double>(utc).count();
  return static_cast<int>(std::lround((static_cast<double>(local) - seconds) / 60 / 15)) * 15;
}

// "C:\Users\a" as "Users/a"; "\\server\share\a" as "server/share/a".
std::string StoredName(std::string_view path) {
  path.remove_prefix(std::min<size_t>(path.size(), path.starts_with("\\\\") ? 2 : 3));
  std::string name(path);
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

}  // namespace

ModZip::ModZip(const Machine& machine, const BackupOptions& options)
    : files_(machine.files), system_(machine.system), options_(options) {}

ModZip::~ModZip() { Close(); }

bool ModZip::Try(const std::function<void()>& step) {
  try {
    step();
    return true;
  } catch (const std::exception& error) {
    problem_ = error.what();
    return false;
  }
}

void ModZip::MakeBackupArchiveName(std::string_view folder, std::string_view prefix) {
  Close();
  const LocalTime now = system_.Now();
  zone_minutes_ = ZoneMinutes(now);
  archive_ = folder;
  // A path on a server has no drive letter.
  archive_ += BackupArchiveName(prefix.starts_with('\\') ? "_" : prefix, now);
}

void ModZip::OpenArchive() {
  if (writer_) return;
  if (archive_.empty()) throw Error(Error::Kind::kOther, "No archive was begun.");
  uint64_t count = 0;
  MakeFolders(files_, FolderPart(archive_));
  if (files_.Look(archive_)) {
    std::optional<Repair> repair;
    count = OpenZip(files_, archive_, repair)->count();
    if (repair) OpenZip(files_, archive_, repair);
    if (repair) throw Error(Error::Kind::kFull, "The archive could not be repaired.");
  }
  was_there_ = count != 0;
  writer_ = std::make_unique<ZipWriter>(files_.Open(archive_, OpenMode::kReadAndCreate), count);
}

bool ModZip::BackupFile(Folder& folder, std::string_view path) {
  return Try([&] {
    const auto source = folder.Open(NamePart(path), OpenMode::kRead);
    OpenArchive();
    ZipEntry entry;
    entry.name = StoredName(path);
    entry.attributes = source->Attributes();
    entry.times = source->Times();
    entry.dos_time = ToDosTime(entry.times.last_write, zone_minutes_);
    writer_->Add(entry, *source, pause_);
  });
}

bool ModZip::Flush() {
  return Try([&] {
    if (writer_) writer_->Flush();
  });
}

bool ModZip::Close() {
  std::unique_ptr<ZipWriter> writer = std::move(writer_);
  if (!writer) return true;
  if (writer->count() != 0) return Try([&] { writer->Finish(); });
  writer.reset();
  RemoveArchive();  // nothing got into it
  return true;
}

void ModZip::DeleteBackupArchive() {
  if (!writer_) return;
  if (options_.keep_on_abort) {
    Close();
  } else if (was_there_) {
    Try([&] { writer_->TakeBack(); });
    Close();
  } else {
    writer_.reset();
    RemoveArchive();
  }
}

void ModZip::RemoveArchive() {
  Try([&] { files_.RemoveFile(archive_); });
}

}  // namespace quellix
