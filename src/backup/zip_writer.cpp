#include "backup/zip_writer.h"

#include <algorithm>

#include "platform/error.h"

namespace quellix {
namespace {

constexpr uint64_t kSmall = 1 << 20;        // files to this size are packed in memory
constexpr size_t kWaiting = 1 << 20;        // bytes written at a time
constexpr uint64_t kWideFrom = 1ull << 30;  // a file from this size on may grow beyond 4 GiB
constexpr uint64_t kNarrowest = 0xFFFFFFFF;

[[noreturn]] void Fail(const char* sentence) { throw Error(Error::Kind::kOther, sentence); }

}  // namespace

ZipWriter::ZipWriter(std::unique_ptr<RandomFile> file, Content content)
    : file_(std::move(file)),
      directory_(std::move(content.directory)),
      now_{content.end, content.count, directory_.size()},
      durable_(now_),
      first_(now_) {
  if (file_->Size() > content.end) file_->Resize(content.end);
}

void ZipWriter::Add(ZipEntry entry, RandomFile& source, const Pause& pause) {
  if (failed_) Fail("The archive could not be written.");
  if (entry.name.size() > 0xFFFF) Fail("The path is too long for an archive.");
  entry.offset = now_.end;
  if (source.Size() <= kSmall) {
    buffer_.resize(source.Size() + 1);  // one more shows that it has grown
    const size_t got = source.Read(0, buffer_);
    if (got < buffer_.size()) return AddSmall(entry, std::span(buffer_).first(got));
  }
  AddLarge(entry, source, pause);
}

void ZipWriter::AddSmall(ZipEntry& entry, std::span<const char> bytes) {
  packed_.clear();
  if (!bytes.empty()) deflater_.Pack(bytes, packed_);
  entry.method = bytes.empty() || packed_.size() >= bytes.size() ? kStored : kDeflated;
  std::string_view data = packed_;
  if (entry.method == kStored) data = {bytes.data(), bytes.size()};
  entry.crc = Checksum(0, bytes);
  entry.size = bytes.size();
  entry.packed = data.size();
  const std::string header = LocalHeader(entry, false);
  waiting_.append(header).append(data);
  Append(entry, now_.end + header.size() + data.size());
  if (waiting_.size() < kWaiting) return;
  try {
    WriteOut();
  } catch (const Error&) {
    failed_ = true;
    throw;
  }
}

// The header is written twice: at first without sizes, which marks the entry as not whole.
void ZipWriter::AddLarge(ZipEntry& entry, RandomFile& source, const Pause& pause) {
  const bool wide = source.Size() >= kWideFrom;
  uint64_t at = 0, end = 0;
  const auto read = [&](std::span<char> buffer) {
    if (pause && pause()) Fail("The file was not archived: the run was stopped.");
    const size_t got = source.Read(at, buffer);
    at += got;
    return got;
  };
  const auto write = [&](std::string_view bytes) {
    file_->Write(end, bytes);
    end += bytes.size();
  };
  try {
    WriteOut();
  } catch (const Error&) {
    failed_ = true;
    throw;
  }
  const Mark before = now_;
  try {
    entry.method = kDeflated;
    end = now_.end;
    write(LocalHeader(entry, wide));
    const PackedTotals totals = DeflateStream(read, write);
    entry.crc = totals.crc;
    entry.size = totals.size;
    entry.packed = totals.packed;
    if (!wide && std::max(entry.size, entry.packed) >= kNarrowest) Fail("The file grew too fast.");
    file_->Write(entry.offset, LocalHeader(entry, wide));
  } catch (...) {
    ReturnTo(before);
    throw;
  }
  Append(entry, end);
}

void ZipWriter::Append(const ZipEntry& entry, uint64_t end) {
  directory_ += DirectoryRecord(entry);
  now_ = {end, now_.count + 1, directory_.size()};
}

void ZipWriter::WriteOut() {
  if (waiting_.empty()) return;
  file_->Write(now_.end - waiting_.size(), waiting_);
  waiting_.clear();
}

void ZipWriter::ReturnTo(const Mark& mark) {
  now_ = mark;
  directory_.resize(mark.directory);
  waiting_.clear();
  try {
    file_->Resize(mark.end);
  } catch (const Error&) {
    return;  // what is left behind the end is overwritten, or cut off by a repair
  }
}

void ZipWriter::Flush() {
  try {
    if (failed_) Fail("The archive could not be written.");
    if (now_.end == durable_.end) return;
    WriteOut();
    file_->Flush();
    durable_ = now_;
  } catch (const Error&) {
    failed_ = false;
    ReturnTo(durable_);
    throw;
  }
}

void ZipWriter::TakeBack() {
  failed_ = false;
  ReturnTo(first_);
  durable_ = now_;
}

void ZipWriter::Finish() {
  Flush();
  file_->Write(now_.end, directory_ + DirectoryEnd(now_.count, now_.end, directory_.size()));
  file_->Flush();
}

}  // namespace quellix
