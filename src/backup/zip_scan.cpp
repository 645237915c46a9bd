#include "backup/zip_scan.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "backup/entry_data.h"
#include "backup/zip_writer.h"
#include "platform/error.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr uint64_t kPiece = 64 << 10;

class Scanner {
 public:
  Scanner(ArchiveStream& stream, const Pause& pause) : stream_(stream), pause_(pause) {}

  ZipScan Run() {
    uint64_t at = 0, end = 0;
    bool skipped = false;  // bytes that are no entry; a damage when one follows
    while (at < stream_.Size() && !(IsBoundary(at) && !IsHeader(at))) {
      const Outcome outcome = TakeEntry(at);
      if (outcome == Outcome::kNone) {
        skipped = true;
        at = NextHeader(at + 1);
        continue;
      }
      scan_.damaged += skipped + (outcome == Outcome::kDamaged);
      skipped = false;
      at = next_;
      if (outcome == Outcome::kTaken) end = next_;
    }
    scan_.behind = stream_.Size() - end;
    return std::move(scan_);
  }

 private:
  enum class Outcome { kTaken, kDamaged, kNone };
  struct TooLong {};

  Outcome TakeEntry(uint64_t at) {
    const std::string fixed = stream_.ReadText(at, kLocalHeaderSize);
    const auto rest = LocalHeaderRest(fixed);
    if (!rest) return Outcome::kNone;
    const std::string more = stream_.ReadText(at + kLocalHeaderSize, *rest);
    if (more.size() < *rest) return Outcome::kNone;
    ZipEntry entry = ParseLocalHeader(fixed + more);
    entry.offset = at;
    data_ = at + kLocalHeaderSize + *rest;
    const bool open_ended = (entry.flags & kSizesBehindData) != 0 && entry.packed == 0;
    if (open_ended ? !MeasureData(entry) : !FitsFile(entry)) return Outcome::kNone;
    next_ = data_ + entry.packed + (open_ended ? descriptor_ : 0);
    return Judge(std::move(entry), open_ended);
  }

  // Sizes are taken at their word where something of an archive follows, and only there.
  Outcome Judge(ZipEntry entry, bool is_measured) {
    const bool known = entry.method == kStored || entry.method == kDeflated;
    const bool readable = known && (entry.flags & kEncrypted) == 0;
    if (!is_measured && readable && !IsComplete(entry)) {
      return IsBoundary(next_) ? Outcome::kDamaged : Outcome::kNone;
    }
    if (!readable) {
      if (!IsBoundary(next_)) return Outcome::kNone;
      ++scan_.unverified;
    }
    if (known) scan_.entries.push_back({std::move(entry), next_});
    return Outcome::kTaken;
  }

  bool IsHeader(uint64_t at) { return stream_.ReadText(at, 4) == kLocalSignature; }
  // The end, or the beginning of another entry or of the directory.
  bool IsBoundary(uint64_t at) {
    const std::string start = stream_.ReadText(at, 4);
    return start.empty() || start == kLocalSignature || start == "PK\1\2" ||
           start == kEndSignature || start == "PK\6\6";
  }

  // The end of the stream when there is none.
  uint64_t NextHeader(uint64_t from) {
    for (; from < stream_.Size(); from += kPiece - kLocalSignature.size() + 1) {
      const std::string piece = stream_.ReadText(from, std::min(kPiece, stream_.Size() - from));
      const size_t found = piece.find(kLocalSignature);
      if (found != std::string::npos) return from + found;
      if (piece.size() < kPiece) break;
      Breathe(from);
    }
    return stream_.Size();
  }

  // An entry whose sizes were never filled in was being written when everything ended.
  bool FitsFile(const ZipEntry& entry) const {
    const bool unfinished = entry.method == kDeflated && entry.packed == 0;
    return !unfinished && data_ <= stream_.Size() && entry.packed <= stream_.Size() - data_;
  }

  bool IsComplete(const ZipEntry& entry) {
    const auto totals = Unpack(entry, false);
    return totals && totals->size == entry.size && totals->crc == entry.crc;
  }

  std::optional<DataTotals> Unpack(const ZipEntry& entry, bool open_ended) try {
    uint64_t unpacked = 0;
    return UnpackData(stream_, data_, entry, open_ended, [&](std::string_view bytes) {
      unpacked += bytes.size();
      if (!open_ended && unpacked > entry.size) throw TooLong();
      const double part = static_cast<double>(unpacked) / static_cast<double>(entry.size + 1);
      const auto packed = static_cast<uint64_t>(static_cast<double>(entry.packed) * part);
      Breathe(entry.offset + (open_ended ? 0 : std::min(packed, entry.packed)));
    });
  } catch (const TooLong&) {
    return std::nullopt;
  }

  void Breathe(uint64_t done) {
    if (!pause_({std::min(done, stream_.Size()), stream_.Size()})) return;
    throw Error(Error::Kind::kOther, Say("Reading it was stopped; the archive is as it was."));
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

  ArchiveStream& stream_;
  const Pause& pause_;
  ZipScan scan_;
  uint64_t data_ = 0;  // where the data of the entry in hand begin
  uint64_t next_ = 0;  // where it ends
  size_t descriptor_ = 0;
};

// minizip counts the packed bytes it is given, whatever they are.
bool Record(zipFile zip, ArchiveStream& stream, const ZipEntry& entry) {
  stream.Seek(entry.offset);
  if (!BeginEntry(zip, entry)) return false;
  static const std::vector<char> bytes(1 << 20);
  for (uint64_t left = entry.packed; left != 0;) {
    const auto part = static_cast<unsigned>(std::min<uint64_t>(left, bytes.size()));
    if (zipWriteInFileInZip(zip, bytes.data(), part) != ZIP_OK) return false;
    left -= part;
  }
  return zipCloseFileInZipRaw64(zip, entry.size, entry.crc) == ZIP_OK;
}

}  // namespace

ZipScan ScanArchive(ArchiveStream& stream, const Pause& pause) {
  return Scanner(stream, pause).Run();
}

// minizip writes each entry at the place where it stands, with the writing left out.
void WriteDirectory(ArchiveStream& stream, const std::vector<ScannedEntry>& entries, uint64_t end) {
  zlib_filefunc64_def functions = stream.Functions();
  stream.Set(ArchiveStream::Writes::kDropped);
  zipFile zip = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
  bool recorded = zip != nullptr;
  for (const ScannedEntry& scanned : entries) {
    recorded = recorded && Record(zip, stream, scanned.entry);
  }
  if (!recorded) {
    if (zip != nullptr) zipClose(zip, "");
    throw Error(Error::Kind::kOther, Say("The directory of the archive could not be made."));
  }
  stream.Set(ArchiveStream::Writes::kHeld);
  stream.Cut(end);
  FinishZip(zip, stream, entries.size());
}

}  // namespace quellix
