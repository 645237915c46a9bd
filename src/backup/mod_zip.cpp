#include "backup/mod_zip.h"

#include <algorithm>

#include "backup/backup_folder.h"
#include "backup/backup_names.h"
#include "backup/zip_reader.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/words.h"

namespace quellix {
namespace {

// "C:\Users\a" as "Users/a"; "\\server\share\a" as "server/share/a".
std::string StoredName(std::string_view path) {
  path.remove_prefix(std::min<size_t>(path.size(), path.starts_with("\\\\") ? 2 : 3));
  std::string name(path);
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

// Small streams fit into a header, such as the mark of what was downloaded. Returns those that do
// not, in a sentence.
Sentence StoreStreams(RandomFile& source, ZipEntry& entry) {
  Sentence loss;
  size_t left = kMostStreamBytes;
  for (const StreamInfo& stream : source.Streams()) {
    const uint64_t needed = stream.name.size() + stream.size + 4;
    if (needed <= left) {
      std::string bytes = source.ReadStream(stream.name);
      if (bytes.size() > stream.size) throw Error(Error::Kind::kOther, Say("a stream of it grew"));
      left -= stream.name.size() + bytes.size() + 4;
      entry.streams.emplace_back(stream.name, std::move(bytes));
      continue;
    }
    const Sentence more =
        Say("its stream \"%1\" of %2 bytes", stream.name, std::to_string(stream.size));
    loss = loss.empty() ? more : Say("%1, %2", loss, more);
  }
  // TRANSLATORS: %1 is "its stream \"a\" of 70000 bytes", or several of them.
  return loss.empty() ? loss : Say("an archive cannot hold %1", loss);
}

void IgnoreFailure(const std::function<void()>& step) {
  try {
    step();
  } catch (const std::exception&) {  // nothing is claimed of it
  }
}

}  // namespace

ModZip::ModZip(const Machine& machine, const RemovalOptions& options)
    : files_(machine.files), system_(machine.system), options_(options) {}

ModZip::~ModZip() {
  IgnoreFailure([this] { Close(); });
}

Sentence ModZip::WhyUnusable(std::string_view folder) {
  return WhyBackupFolderCannotBeUsed(files_, folder);
}

void ModZip::MakeBackupArchiveName(std::string_view folder, std::string_view prefix) {
  IgnoreFailure([this] { Close(); });
  begun_ = system_.Now();
  archive_ = folder;
  // A path on a server has no drive letter.
  prefix_ = prefix.starts_with('\\') ? "_" : prefix;
}

// An archive of the same second is gone on with when it is whole and this program's; of anything
// else nothing is touched, and the next second's name is taken.
void ModZip::OpenArchive() {
  if (writer_) return;
  if (archive_.empty()) throw Error(Error::Kind::kOther, Say("No archive was begun."));
  const std::string path(FolderPart(archive_));
  MakeFolders(files_, path);
  const auto folder = files_.OpenFolder(path);
  if (!folder) throw Error(Error::Kind::kMissing, Say("There is no folder %1.", path));
  for (;; begun_ = NextSecond(begun_)) {
    const std::string name = BackupArchiveName(prefix_, begun_);
    archive_ = path + name;
    if (GoesOn(*folder, name)) return;
    try {
      writer_ = std::make_unique<ZipWriter>(folder->Open(name, OpenMode::kCreateNew), 0);
      was_there_ = false;
      folder->Flush();
      return;
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kExists) throw;
    }
  }
}

bool ModZip::GoesOn(Folder& folder, const std::string& name) {
  try {
    if (!folder.Look(name, Detail::kKind)) return false;
    auto stream = std::make_unique<ArchiveStream>(folder.Open(name, OpenMode::kRead));
    const auto reader = ZipReader::Open(stream, pause_);
    if (!reader || !reader->Visit([](const ZipEntry& entry) { return entry.own; })) return false;
    writer_ =
        std::make_unique<ZipWriter>(folder.Open(name, OpenMode::kReadAndCreate), reader->count());
    was_there_ = reader->count() != 0;
    return true;
  } catch (const Error&) {
    return false;  // in use, or no archive
  }
}

Sentence ModZip::BackupFile(Folder& folder, std::string_view path) {
  const auto source = folder.Open(NamePart(path), OpenMode::kRead);
  ZipEntry entry;
  Sentence loss = StoreStreams(*source, entry);
  if (!loss.empty() && options_.Strict) throw Error(Error::Kind::kOther, loss);
  OpenArchive();
  entry.own = true;
  entry.name = StoredName(path);
  entry.attributes = source->Attributes();
  entry.times = source->Times();
  entry.dos_time = ToDosTime(system_.ToLocalTime(entry.times.last_write));
  writer_->Add(entry, *source, pause_);
  return loss;
}

void ModZip::Flush() {
  if (writer_) writer_->Flush();
}

void ModZip::Close() {
  std::unique_ptr<ZipWriter> writer = std::move(writer_);
  if (!writer) return;
  if (writer->count() != 0) return writer->Finish();
  writer.reset();   // an open file cannot be removed
  RemoveArchive();  // nothing got into it
}

void ModZip::DeleteBackupArchive() {
  if (!writer_) return;
  if (!options_.KeepOnAbort && !was_there_) {
    writer_.reset();
    return RemoveArchive();
  }
  if (!options_.KeepOnAbort) IgnoreFailure([this] { writer_->TakeBack(); });
  IgnoreFailure([this] { Close(); });
}

void ModZip::RemoveArchive() {
  IgnoreFailure([this] { files_.RemoveFile(archive_); });
}

}  // namespace quellix
