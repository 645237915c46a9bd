#include "backup/zip_writer.h"

#include <utility>

#include "platform/error.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr size_t kPiece = 1 << 20;           // bytes read at a time; smaller files at once
constexpr uint64_t kWideFrom = 0xF0000000;   // a file from this size on may need more than 4 GiB
constexpr uint64_t kNarrowest = 0xFFFFFFFF;  // what smaller ones may not grow to
constexpr uint64_t kMostCounted = 0xFFFE;
constexpr uint16_t kMadeOnNtfs = 0x0A14;  // external attributes are those of Windows

[[noreturn]] void Fail(const Sentence& why) {
  throw Error(Error::Kind::kOther, why.empty() ? Say("The archive could not be written.") : why);
}

}  // namespace

bool BeginEntry(zipFile zip, const ZipEntry& entry) {
  zip_fileinfo info{};
  info.dosDate = entry.dos_time;
  info.external_fa = entry.attributes;
  const std::string own = HeaderFields(entry), shared = DirectoryFields(entry);
  return zipOpenNewFileInZip4_64(
             zip, entry.name.c_str(), &info, own.data(), static_cast<uInt>(own.size()),
             shared.data(), static_cast<uInt>(shared.size()), nullptr, entry.method,
             Z_DEFAULT_COMPRESSION, 1, -MAX_WBITS, MAX_MEM_LEVEL - 1, Z_DEFAULT_STRATEGY, nullptr,
             0, kMadeOnNtfs, entry.flags, entry.wide ? 1 : 0) == ZIP_OK;
}

void FinishZip(zipFile zip, ArchiveStream& stream, uint64_t count) {
  constexpr uint64_t kEnd = 22;
  const uint64_t directory = stream.place();
  stream.Set(ArchiveStream::Writes::kHeld);
  if (zipClose(zip, "") != ZIP_OK) Fail(stream.Problem());
  if (count > kMostCounted && directory < kNarrowest) {
    const uint64_t end = stream.place() - kEnd;
    stream.Cut(end);
    stream.Write(DirectoryEnd(count, directory, end - directory));
  }
}

ZipWriter::ZipWriter(std::unique_ptr<RandomFile> file, uint64_t count) : stream_(std::move(file)) {
  Open(count);
  durable_ = first_ = now_;
}

ZipWriter::~ZipWriter() { Drop(); }

void ZipWriter::Open(uint64_t count) {
  zlib_filefunc64_def functions = stream_.Functions();
  stream_.Seek(0);
  zip_ = zipOpen2_64("", count == 0 ? APPEND_STATUS_CREATE : APPEND_STATUS_ADDINZIP, nullptr,
                     &functions);
  if (zip_ == nullptr) FailOfStream();
  stream_.Cut(stream_.place());
  now_ = {stream_.place(), count};
}

void ZipWriter::Drop() {
  if (zip_ == nullptr) return;
  stream_.Set(ArchiveStream::Writes::kDropped);
  zipClose(zip_, "");
  stream_.Set(ArchiveStream::Writes::kDone);
  zip_ = nullptr;
}

void ZipWriter::FailOfStream() const { Fail(stream_.Problem()); }

void ZipWriter::Add(const ZipEntry& entry, RandomFile& source, const Pause& pause) {
  if (zip_ == nullptr) FailOfStream();
  buffer_.resize(kPiece);
  const size_t got = source.Read(0, buffer_);  // a file that cannot be read leaves no trace
  ZipEntry begun = entry;
  begun.wide = source.Size() >= kWideFrom;
  const Mark before = now_;
  try {
    stream_.Set(ArchiveStream::Writes::kHeld);  // minizip forgets memory when a header fails
    if (!BeginEntry(zip_, begun)) FailOfStream();
    stream_.Set(ArchiveStream::Writes::kDone);
    Fill(source, got, begun.wide, pause);
  } catch (...) {
    ReturnTo(before);
    throw;
  }
  now_ = {stream_.place(), before.count + 1};
}

void ZipWriter::Fill(RandomFile& source, size_t got, bool wide, const Pause& pause) {
  const auto write = [this](std::string_view packed) {
    const auto size = static_cast<unsigned>(packed.size());
    if (zipWriteInFileInZip(zip_, packed.data(), size) != ZIP_OK) FailOfStream();
  };
  deflater_.Begin();
  uint64_t at = 0;
  uLong crc = 0;
  while (true) {
    const bool last = got < buffer_.size();
    crc = crc32_z(crc, reinterpret_cast<const Bytef*>(buffer_.data()), got);
    deflater_.Pack({buffer_.data(), got}, last, write);
    at += got;
    if (last) break;
    if (!wide && at >= kWideFrom) Fail(Say("The file grew too fast."));
    if (pause()) Fail(Say("The file was not archived: the run was stopped."));
    got = source.Read(at, buffer_);
  }
  if (zipCloseFileInZipRaw64(zip_, at, crc) != ZIP_OK) FailOfStream();
}

// minizip only adds. So it writes its directory into memory, which is cut to the records that stay,
// and begins again from them; neither the disk nor its space matters.
void ZipWriter::ReturnTo(const Mark& mark) {
  if (zip_ == nullptr) return;
  stream_.Set(ArchiveStream::Writes::kDropped);
  zipCloseFileInZip(zip_);  // fails when none is open
  stream_.Cut(mark.end);
  stream_.Set(ArchiveStream::Writes::kHeld);
  zipClose(zip_, "");
  const std::string records = stream_.ReadText(mark.end, stream_.Size() - mark.end);
  const size_t kept = SizeOfRecords(records, mark.count);
  stream_.Cut(mark.end + kept);
  stream_.Write(DirectoryEnd(mark.count, mark.end, kept));
  Open(mark.count);
  stream_.Cut(mark.end);
  stream_.Set(ArchiveStream::Writes::kDone);
  now_ = mark;
}

void ZipWriter::Flush() {
  if (zip_ == nullptr) FailOfStream();
  if (now_.end == durable_.end) return;
  try {
    stream_.Flush();
    durable_ = now_;
  } catch (const Error&) {
    ReturnTo(durable_);
    throw;
  }
}

void ZipWriter::TakeBack() {
  ReturnTo(first_);
  durable_ = now_;
}

void ZipWriter::Finish() {
  Flush();
  FinishZip(std::exchange(zip_, nullptr), stream_, now_.count);
  stream_.Flush();
}

}  // namespace quellix
