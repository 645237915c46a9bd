#include "backup/zip_repair.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "backup/entry_data.h"
#include "backup/zip_writer.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

bool MayBeArchive(ArchiveStream& stream) {
  // Empty and barely begun files are archives that were cut off at once.
  const std::string start = stream.ReadText(0, kLocalSignature.size());
  return kLocalSignature.starts_with(start) || kEndSignature.starts_with(start) ||
         start.starts_with("PK\6\6");
}

// Walks from entry to entry by their own headers, and has minizip write the directory of those that
// are complete: it is told to write each entry at the place where it stands, with the writing left
// out.
class Scan {
 public:
  Scan(ArchiveStream& stream, const RepairPause& pause) : stream_(stream), pause_(pause) {
    zlib_filefunc64_def functions = stream_.Functions();
    stream_.Set(ArchiveStream::Writes::kDropped);
    zip_ = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
  }
  ~Scan() {
    if (zip_ == nullptr) return;
    stream_.Set(ArchiveStream::Writes::kDropped);
    zipClose(zip_, "");
  }
  Scan(const Scan&) = delete;
  Scan& operator=(const Scan&) = delete;

  // With `in_memory` the file is left as it is.
  Repair Run(bool in_memory) {
    while (TakeEntry()) {
    }
    repair_.cut_off = stream_.Size() - end_;
    if (in_memory) stream_.Set(ArchiveStream::Writes::kHeld);
    stream_.Cut(end_);
    FinishZip(std::exchange(zip_, nullptr), stream_, repair_.kept);
    return repair_;
  }

 private:
  // False where the entries end.
  bool TakeEntry() {
    const std::string fixed = stream_.ReadText(at_, kLocalHeaderSize);
    const auto rest = LocalHeaderRest(fixed);
    if (!rest) return false;
    const std::string more = stream_.ReadText(at_ + kLocalHeaderSize, *rest);
    if (more.size() < *rest) return false;
    ZipEntry entry = ParseLocalHeader(fixed + more);
    entry.offset = at_;
    data_ = at_ + kLocalHeaderSize + *rest;
    const bool open_ended = (entry.flags & kSizesBehindData) != 0 && entry.packed == 0;
    if (open_ended ? !MeasureData(entry) : !FitsFile(entry)) return false;
    at_ = data_ + entry.packed + (open_ended ? descriptor_ : 0);
    if ((open_ended || IsComplete(entry)) && Record(entry)) {
      ++repair_.kept;
      end_ = at_;
    } else {
      ++repair_.damaged;
    }
    return true;
  }

  // An entry whose sizes were never filled in was being written when everything ended.
  bool FitsFile(const ZipEntry& entry) const {
    const bool unfinished = entry.method == kDeflated && entry.packed == 0;
    return !unfinished && data_ <= stream_.Size() && entry.packed <= stream_.Size() - data_;
  }

  bool IsComplete(const ZipEntry& entry) {
    if ((entry.flags & kEncrypted) != 0) return true;  // only its password could tell more
    const auto totals = Unpack(entry, false);
    return totals && totals->size == entry.size && totals->crc == entry.crc;
  }

  std::optional<DataTotals> Unpack(const ZipEntry& entry, bool open_ended) {
    uint64_t unpacked = 0;
    return UnpackData(stream_, data_, entry, open_ended, [&](std::string_view bytes) {
      unpacked += bytes.size();
      const double part = static_cast<double>(unpacked) / static_cast<double>(entry.size + 1);
      const auto packed = static_cast<uint64_t>(static_cast<double>(entry.packed) * part);
      const uint64_t done = entry.offset + (open_ended ? 0 : std::min(packed, entry.packed));
      if (!pause_ || !pause_(std::min(done, stream_.Size()), stream_.Size())) return;
      throw Error(Error::Kind::kOther, "The repair was stopped; the archive is as it was.");
    });
  }

  // Archives of other programs may tell the sizes behind the data only.
  bool MeasureData(ZipEntry& entry) {
    if ((entry.flags & kEncrypted) != 0) return false;
    const auto totals = Unpack(entry, true);
    if (!totals) return false;
    entry.crc = totals->crc;
    entry.size = totals->size;
    entry.packed = totals->packed;
    const std::string behind = stream_.ReadText(data_ + entry.packed, 24);
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

  // minizip counts the packed bytes it is given, whatever they are.
  bool Record(const ZipEntry& entry) {
    stream_.Seek(entry.offset);
    if (!BeginEntry(zip_, entry)) return false;
    static const std::vector<char> bytes(1 << 20);
    for (uint64_t left = entry.packed; left != 0;) {
      const auto part = static_cast<unsigned>(std::min<uint64_t>(left, bytes.size()));
      if (zipWriteInFileInZip(zip_, bytes.data(), part) != ZIP_OK) return false;
      left -= part;
    }
    return zipCloseFileInZipRaw64(zip_, entry.size, entry.crc) == ZIP_OK;
  }

  ArchiveStream& stream_;
  const RepairPause& pause_;
  zipFile zip_;
  Repair repair_;
  uint64_t at_ = 0, end_ = 0, data_ = 0;
  size_t descriptor_ = 0;
};

}  // namespace

std::string Repair::Note() const {
  std::string note = stored ? "The archive was incomplete and has been repaired: "
                            : "The archive is incomplete and cannot be repaired where it is: ";
  note += std::to_string(kept) + " file(s) kept";
  if (damaged != 0) note += ", " + std::to_string(damaged) + " damaged";
  if (cut_off != 0) note += ", " + std::to_string(cut_off) + " bytes cut off";
  return note + ".";
}

Repair RepairArchive(std::unique_ptr<RandomFile> file, const RepairPause& pause) {
  ArchiveStream stream(std::move(file));
  if (!MayBeArchive(stream)) throw Error(Error::Kind::kOther, "This file is not a zip archive.");
  const Repair repair = Scan(stream, pause).Run(false);
  stream.Flush();
  return repair;
}

std::unique_ptr<ZipReader> OpenZip(FileSystem& files, std::string_view path,
                                   std::optional<Repair>& repair, const RepairPause& pause) {
  repair.reset();
  const auto open = [&] {
    return std::make_unique<ArchiveStream>(files.Open(path, OpenMode::kRead));
  };
  if (auto reader = ZipReader::Open(open())) return reader;
  auto stream = open();
  if (!MayBeArchive(*stream)) {
    throw Error(Error::Kind::kOther, std::string(NamePart(path)) + " is not a zip archive.");
  }
  try {
    repair = RepairArchive(files.Open(path, OpenMode::kReadAndCreate), pause);
    stream = open();
  } catch (const Error& error) {
    if (error.kind() != Error::Kind::kFull && error.kind() != Error::Kind::kDenied) throw;
    stream = open();
    repair = Scan(*stream, pause).Run(true);
    repair->stored = false;
  }
  auto reader = ZipReader::Open(std::move(stream));
  if (!reader) throw Error(Error::Kind::kOther, "The archive could not be repaired.");
  return reader;
}

}  // namespace quellix
