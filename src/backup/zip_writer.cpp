#include "backup/zip_writer.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "backup/deflate.h"
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
  if (source.Size() <= kSmall) {
    buffer_.resize(source.Size() + 1);  // one more shows that it has grown
    const size_t got = source.Read(0, buffer_);
    if (got < buffer_.size()) {
      collecting_.Add(std::move(entry), std::span(buffer_).first(got));
      if (collecting_.IsFull()) OrFail([this] { StartPacking(); });
      return;
    }
  }
  AddLarge(entry, source, pause);
}

void ZipWriter::StartPacking() {
  packing_.push_back(std::async(std::launch::async,
                                [files = std::exchange(collecting_, {})] { return files.Pack(); }));
  if (packing_.size() > std::thread::hardware_concurrency()) TakePacked();
}

void ZipWriter::TakePacked() {
  const SmallFiles::Packed packed = packing_.front().get();
  packing_.pop_front();
  waiting_ += packed.bytes;
  for (const auto& [entry, length] : packed.entries) {
    ZipEntry placed = entry;
    placed.offset = now_.end;
    Append(placed, now_.end + length);
  }
  if (waiting_.size() >= kWaiting) WriteOut();
}

void ZipWriter::FinishPacking() {
  if (!collecting_.empty()) StartPacking();
  while (!packing_.empty()) TakePacked();
}

// A failure that concerns files added earlier as well.
template <class Step>
void ZipWriter::OrFail(const Step& step) {
  try {
    step();
  } catch (...) {
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
  OrFail([this] {
    FinishPacking();
    WriteOut();
  });
  const Mark before = now_;
  entry.offset = now_.end;
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
  collecting_ = {};
  packing_.clear();
  try {
    file_->Resize(mark.end);
  } catch (const Error&) {
    return;  // what is left behind the end is overwritten, or cut off by a repair
  }
}

void ZipWriter::Flush() {
  try {
    if (failed_) Fail("The archive could not be written.");
    FinishPacking();
    if (now_.end == durable_.end) return;
    WriteOut();
    file_->Flush();
    durable_ = now_;
  } catch (...) {
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
