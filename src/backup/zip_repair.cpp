#include "backup/zip_repair.h"

#include <algorithm>

#include "backup/deflate.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

[[noreturn]] void NoArchive() {
  throw Error(Error::Kind::kOther, "This file is not a zip archive.");
}

// Walks from entry to entry by their own headers.
class Scan {
 public:
  explicit Scan(RandomFile& file) : file_(file) {}

  void Run() {
    while (TakeEntry()) {
    }
  }

  ZipDirectory directory;
  Repair repair;

 private:
  // False where the entries end.
  bool TakeEntry() {
    const std::string fixed = ReadText(file_, at_, kLocalHeaderSize);
    const auto rest = LocalHeaderRest(fixed);
    if (!rest) return false;
    const std::string more = ReadText(file_, at_ + kLocalHeaderSize, *rest);
    if (more.size() < *rest) return false;
    ZipEntry entry = ParseLocalHeader(fixed + more);
    entry.offset = at_;
    data_ = at_ + kLocalHeaderSize + *rest;
    const bool open_ended = (entry.flags & kSizesBehindData) != 0 && entry.packed == 0;
    if (open_ended ? !MeasureData(entry) : !FitsFile(entry)) return false;
    at_ = data_ + entry.packed + (open_ended ? descriptor_ : 0);
    if (open_ended || IsComplete(entry)) {
      directory.records += DirectoryRecord(entry);
      ++directory.count;
      directory.offset = at_;
    } else {
      ++repair.damaged;
    }
    return true;
  }

  // An entry whose sizes were never filled in was being written when everything ended.
  bool FitsFile(const ZipEntry& entry) const {
    const bool unfinished = entry.method == kDeflated && entry.packed == 0;
    return !unfinished && data_ <= file_.Size() && entry.packed <= file_.Size() - data_;
  }

  bool IsComplete(const ZipEntry& entry) {
    if ((entry.flags & kEncrypted) != 0) return true;  // only its password could tell more
    try {
      ExtractEntry(file_, entry, [](std::string_view) {});
      return true;
    } catch (const Error&) {
      return false;
    }
  }

  // Archives of other programs may tell the sizes behind the data only.
  bool MeasureData(ZipEntry& entry) {
    if (entry.method != kDeflated || (entry.flags & kEncrypted) != 0) return false;
    uint64_t from = data_;
    const auto totals = InflateStream(
        [&](std::span<char> buffer) {
          const size_t got = file_.Read(from, buffer);
          from += got;
          return got;
        },
        [](std::string_view) {});
    if (!totals) return false;
    entry.crc = totals->crc;
    entry.size = totals->size;
    entry.packed = totals->packed;
    const std::string behind = ReadText(file_, data_ + entry.packed, 24);
    descriptor_ = DescriptorSize(behind, entry.crc);
    return descriptor_ != 0;
  }

  // With or without a signature, with sizes of 4 or 8 bytes: what follows must be a header or end.
  static size_t DescriptorSize(std::string_view behind, uint32_t crc) {
    const size_t signature = behind.starts_with("PK\7\10") ? 4 : 0;
    uint32_t stored = 0;
    for (size_t i = 0; i < 4 && signature + i < behind.size(); ++i) {
      stored |= uint32_t{static_cast<unsigned char>(behind[signature + i])} << (8 * i);
    }
    if (behind.size() < signature + 12 || stored != crc) return 0;
    const bool wide = behind.size() >= signature + 20 && behind.substr(signature + 12, 2) != "PK";
    return signature + (wide ? 20 : 12);
  }

  RandomFile& file_;
  uint64_t at_ = 0, data_ = 0;
  size_t descriptor_ = 0;
};

// Empty and barely begun files are archives that were cut off at once.
bool MayBeArchive(RandomFile& file) {
  const std::string start = ReadText(file, 0, kLocalSignature.size());
  return kLocalSignature.starts_with(start) || kEndSignature.starts_with(start) ||
         start.starts_with("PK\6\6");
}

}  // namespace

std::string Repair::Note() const {
  std::string note =
      "The archive was incomplete and has been repaired: " + std::to_string(kept) + " file(s) kept";
  if (damaged != 0) note += ", " + std::to_string(damaged) + " damaged";
  if (cut_off != 0) note += ", " + std::to_string(cut_off) + " bytes cut off";
  return note + ".";
}

Repair RepairArchive(RandomFile& file, ZipDirectory& directory) {
  if (!MayBeArchive(file)) NoArchive();
  Scan scan(file);
  scan.Run();
  directory = std::move(scan.directory);
  scan.repair.kept = directory.count;
  scan.repair.cut_off = file.Size() - directory.offset;
  file.Resize(directory.offset);
  const uint64_t size = directory.records.size();
  file.Write(directory.offset,
             directory.records + DirectoryEnd(directory.count, directory.offset, size));
  file.Flush();
  return scan.repair;
}

ZipDirectory OpenDirectory(FileSystem& files, std::string_view path,
                           std::optional<Repair>& repair) {
  repair.reset();
  {
    const auto file = files.Open(path, OpenMode::kRead);
    if (auto directory = ReadDirectory(*file)) return std::move(*directory);
    if (!MayBeArchive(*file)) {
      throw Error(Error::Kind::kOther, std::string(NamePart(path)) + " is not a zip archive.");
    }
  }
  ZipDirectory directory;
  repair = RepairArchive(*files.Open(path, OpenMode::kReadAndCreate), directory);
  return directory;
}

}  // namespace quellix
