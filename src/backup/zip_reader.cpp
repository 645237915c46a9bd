#include "backup/zip_reader.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "backup/entry_data.h"
#include "backup/entry_path.h"
#include "platform/error.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr uint64_t kUnknown = 0xFFFFFFFF;
constexpr size_t kPiece = 256 << 10;

[[noreturn]] void Fail(const ZipEntry& entry, const char* sentence) {
  throw Error(Error::Kind::kOther, Say(sentence, entry.name));
}

// The entry that is open, closed again whatever comes.
class OpenEntry {
 public:
  explicit OpenEntry(unzFile zip) : zip_(zip), open_(unzOpenCurrentFile(zip) == UNZ_OK) {}
  ~OpenEntry() { Close(); }
  OpenEntry(const OpenEntry&) = delete;
  OpenEntry& operator=(const OpenEntry&) = delete;

  bool is_open() const { return open_; }
  // False when what was read does not have its checksum.
  bool Close() { return std::exchange(open_, false) && unzCloseCurrentFile(zip_) == UNZ_OK; }

 private:
  unzFile zip_;
  bool open_;
};

// minizip looks for the end in the last 64 KiB only, which a comment may fill.
void HideLongComment(ArchiveStream& stream) {
  constexpr uint64_t kEnd = 22, kLongest = 0xFFFF;
  const uint64_t start = stream.Size() - std::min(stream.Size(), kEnd + kLongest);
  const std::string last = stream.ReadText(start, stream.Size() - start);
  for (size_t at = last.rfind(kEndSignature); at != std::string::npos;
       at = at == 0 ? std::string::npos : last.rfind(kEndSignature, at - 1)) {
    if (at + kEnd > last.size()) continue;
    const size_t comment = static_cast<unsigned char>(last[at + 20]) |
                           static_cast<size_t>(static_cast<unsigned char>(last[at + 21])) << 8;
    if (at + kEnd + comment != last.size()) continue;
    stream.Set(ArchiveStream::Writes::kHeld);
    stream.Cut(start + at + kEnd);
    return;
  }
}

}  // namespace

ZipReader::ZipReader(std::unique_ptr<ArchiveStream> stream) : stream_(std::move(stream)) {
  zlib_filefunc64_def functions = stream_->Functions();
  zip_.reset(unzOpen2_64("", &functions));
  unz_global_info64 info{};
  if (zip_ && unzGetGlobalInfo64(zip_.get(), &info) == UNZ_OK) count_ = info.number_entry;
}

std::unique_ptr<ZipReader> ZipReader::Open(std::unique_ptr<ArchiveStream>& stream,
                                           const Pause& pause) {
  HideLongComment(*stream);
  std::unique_ptr<ZipReader> reader(new ZipReader(std::move(stream)));
  if (!reader->stream_->Problem().empty()) {
    throw Error(Error::Kind::kOther, reader->stream_->Problem());
  }
  if (reader->IsWhole(pause)) return reader;
  reader->zip_.reset();
  stream = std::move(reader->stream_);
  return nullptr;
}

bool ZipReader::IsWhole(const Pause& pause) {
  // minizip does not open an archive that is nothing but an end.
  constexpr uint64_t kEnd = 22;
  if (!zip_) return stream_->Size() == kEnd && stream_->ReadText(0, 4) == kEndSignature;
  uint64_t seen = 0;
  VisitAll(*this, pause, [&](const ZipEntry&) { ++seen; });
  return seen == count_;
}

bool ZipReader::Visit(const std::function<bool(const ZipEntry&)>& visit) {
  if (count_ == 0) return true;
  for (int result = unzGoToFirstFile(zip_.get()); result == UNZ_OK;
       result = unzGoToNextFile(zip_.get())) {
    const std::optional<ZipEntry> entry = Current();
    if (!entry || !visit(*entry)) return false;
  }
  return true;
}

void VisitAll(ZipReader& reader, const Pause& pause,
              const std::function<void(const ZipEntry&)>& visit) {
  uint64_t seen = 0;
  reader.Visit([&](const ZipEntry& entry) {
    if (pause({seen++, reader.count()})) {
      throw Error(Error::Kind::kOther, Say("Reading it was stopped; the archive is as it was."));
    }
    visit(entry);
    return true;
  });
}

std::optional<ZipEntry> ZipReader::Current() {
  unz_file_info64 info{};
  if (unzGetCurrentFileInfo64(zip_.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) {
    return std::nullopt;
  }
  ZipEntry entry;
  std::string extra(info.size_file_extra, '\0');
  entry.name.resize(info.size_filename);
  if (unzGetCurrentFileInfo64(zip_.get(), &info, entry.name.data(), info.size_filename,
                              extra.data(), info.size_file_extra, nullptr, 0) != UNZ_OK) {
    return std::nullopt;
  }
  entry.flags = static_cast<uint16_t>(info.flag);
  if ((entry.flags & kUtf8Name) == 0) entry.name = EntryName(entry.name);
  entry.method = static_cast<uint16_t>(info.compression_method);
  entry.dos_time = static_cast<uint32_t>(info.dosDate);
  entry.crc = static_cast<uint32_t>(info.crc);
  entry.packed = info.compressed_size;
  entry.size = info.uncompressed_size;
  entry.attributes = static_cast<uint32_t>(info.external_fa);
  entry.offset = kUnknown;
  ReadExtraFields(extra, entry);
  return entry;
}

void ZipReader::ReadHeader(ZipEntry& entry) {
  if (entry.offset != kUnknown) {
    const auto rest = LocalHeaderRest(stream_->ReadText(entry.offset, kLocalHeaderSize));
    if (!rest) return;
    const std::string header = stream_->ReadText(entry.offset, kLocalHeaderSize + *rest);
    entry.streams = ParseLocalHeader(header).streams;
    return;
  }
  const OpenEntry open(zip_.get());
  const int size = open.is_open() ? unzGetLocalExtrafield(zip_.get(), nullptr, 0) : 0;
  if (size <= 0) return;
  std::string fields(static_cast<size_t>(size), '\0');
  unzGetLocalExtrafield(zip_.get(), fields.data(), static_cast<unsigned>(size));
  ZipEntry header;
  ReadExtraFields(fields, header);
  entry.streams = std::move(header.streams);
}

void ZipReader::Extract(const ZipEntry& entry, const std::function<void(std::string_view)>& write) {
  if ((entry.flags & kEncrypted) != 0)
    Fail(entry, Mark("\"%1\" is encrypted, which is not supported."));
  if (entry.method != kStored && entry.method != kDeflated) {
    Fail(entry, Mark("\"%1\" is packed in a way that is not supported."));
  }
  if (!(entry.wide ? ExtractWide(entry, write) : ExtractPlain(entry, write))) {
    Fail(entry, Mark("\"%1\" is damaged."));
  }
}

bool ZipReader::ExtractPlain(const ZipEntry& entry,
                             const std::function<void(std::string_view)>& write) {
  OpenEntry open(zip_.get());
  if (!open.is_open()) return false;
  std::vector<char> buffer(kPiece);
  uint64_t written = 0;
  int got = 0;
  while ((got = unzReadCurrentFile(zip_.get(), buffer.data(), kPiece)) > 0) {
    written += static_cast<uint64_t>(got);
    write({buffer.data(), static_cast<size_t>(got)});
  }
  return got == 0 && open.Close() && written == entry.size;
}

// Where `long` has 64 bits, minizip 1.1 does not take sizes and places beyond 4 GiB from the
// directory. It knows them well enough to tell where data begin unless their place is one of them.
uint64_t ZipReader::WideDataOffset(const ZipEntry& entry) {
  if (entry.offset != kUnknown) {
    const auto rest = LocalHeaderRest(stream_->ReadText(entry.offset, kLocalHeaderSize));
    return rest ? entry.offset + kLocalHeaderSize + *rest : 0;
  }
  const OpenEntry open(zip_.get());
  return open.is_open() ? unzGetCurrentFileZStreamPos64(zip_.get()) : 0;
}

bool ZipReader::ExtractWide(const ZipEntry& entry,
                            const std::function<void(std::string_view)>& write) {
  const uint64_t offset = WideDataOffset(entry);
  if (offset == 0) return false;
  uint64_t written = 0;
  const auto write_some = [&](std::string_view bytes) {
    written += bytes.size();
    if (written > entry.size) Fail(entry, Mark("\"%1\" is longer than it says; it is damaged."));
    write(bytes);
  };
  const auto totals = UnpackData(*stream_, offset, entry, false, write_some);
  return totals && totals->size == entry.size && totals->crc == entry.crc;
}

}  // namespace quellix
