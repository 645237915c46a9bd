#include "backup/archive_stream.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"

namespace quellix {
namespace {

constexpr size_t kWaiting = 1 << 20;  // bytes written at a time
constexpr size_t kCache = 64 << 10;   // minizip reads byte by byte

ArchiveStream& Self(voidpf self) { return *static_cast<ArchiveStream*>(self); }

}  // namespace

ArchiveStream::ArchiveStream(std::unique_ptr<RandomFile> file)
    : file_(std::move(file)), on_disk_(file_->Size()) {}

zlib_filefunc64_def ArchiveStream::Functions() {
  return {OnOpen, OnRead, OnWrite, OnTell, OnSeek, OnClose, OnError, this};
}

size_t ArchiveStream::Read(uint64_t offset, std::span<char> buffer) {
  size_t done = 0;
  if (offset < on_disk_) {
    const auto part = static_cast<size_t>(std::min<uint64_t>(buffer.size(), on_disk_ - offset));
    done = ReadCached(offset, buffer.first(part));
    if (done < part) return done;
  }
  const uint64_t in_tail = offset + done - on_disk_;
  if (done < buffer.size() && in_tail < tail_.size()) {
    done += tail_.copy(buffer.data() + done, buffer.size() - done, static_cast<size_t>(in_tail));
  }
  return done;
}

size_t ArchiveStream::ReadCached(uint64_t offset, std::span<char> buffer) {
  if (buffer.size() >= kCache) return file_->Read(offset, buffer);
  if (offset < cached_ || offset + buffer.size() > cached_ + cache_.size()) {
    cache_.resize(static_cast<size_t>(std::min<uint64_t>(kCache, on_disk_ - offset)));
    cached_ = offset;
    cache_.resize(file_->Read(offset, cache_));
  }
  return cache_.copy(buffer.data(), buffer.size(), static_cast<size_t>(offset - cached_));
}

std::string ArchiveStream::ReadText(uint64_t offset, uint64_t size) {
  std::string text(static_cast<size_t>(size), '\0');
  text.resize(Read(offset, text));
  return text;
}

void ArchiveStream::Write(std::string_view bytes) {
  if (writes_ == Writes::kDropped) {
    place_ += bytes.size();
    return;
  }
  if (place_ < on_disk_) {
    WriteOut();
    cache_.clear();
    file_->Write(place_, bytes);
    on_disk_ = std::max(on_disk_, place_ + bytes.size());
  } else {
    const auto at = static_cast<size_t>(place_ - on_disk_);
    tail_.resize(std::max(tail_.size(), at + bytes.size()));
    bytes.copy(tail_.data() + at, bytes.size());
  }
  place_ += bytes.size();
  if (writes_ == Writes::kDone && tail_.size() >= kWaiting) WriteOut();
}

void ArchiveStream::Cut(uint64_t end) {
  place_ = end;
  if (end >= on_disk_) {
    tail_.resize(static_cast<size_t>(end - on_disk_));
    return;
  }
  tail_.clear();
  cache_.clear();
  on_disk_ = end;
  more_behind_ = true;
  if (writes_ == Writes::kHeld) return;
  try {
    file_->Resize(end);
    more_behind_ = false;
  } catch (const Error&) {
    return;
  }
}

void ArchiveStream::WriteOut() {
  if (tail_.empty()) return;
  const bool more_behind = std::exchange(more_behind_, true);  // until the write has not failed
  file_->Write(on_disk_, tail_);
  more_behind_ = more_behind;
  on_disk_ += tail_.size();
  tail_.clear();
}

void ArchiveStream::Flush() {
  WriteOut();
  if (more_behind_) file_->Resize(on_disk_);
  more_behind_ = false;
  file_->Flush();
}

// No exception may pass through minizip.
template <class Step>
bool ArchiveStream::Try(const Step& step) {
  try {
    step();
    return true;
  } catch (const std::exception& error) {
    problem_ = SentenceOf(error);
    return false;
  }
}

voidpf ArchiveStream::OnOpen(voidpf self, const void*, int) { return self; }

uLong ArchiveStream::OnRead(voidpf self, voidpf, void* buffer, uLong size) {
  ArchiveStream& stream = Self(self);
  size_t got = 0;
  stream.Try([&] { got = stream.Read(stream.place_, {static_cast<char*>(buffer), size}); });
  stream.place_ += got;
  stream.read_short_ = got < size;
  return static_cast<uLong>(got);
}

uLong ArchiveStream::OnWrite(voidpf self, voidpf, const void* buffer, uLong size) {
  ArchiveStream& stream = Self(self);
  const bool done = stream.Try([&] { stream.Write({static_cast<const char*>(buffer), size}); });
  return done ? size : 0;
}

ZPOS64_T ArchiveStream::OnTell(voidpf self, voidpf) { return Self(self).place_; }

long ArchiveStream::OnSeek(voidpf self, voidpf, ZPOS64_T offset, int origin) {
  ArchiveStream& stream = Self(self);
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) offset += stream.place_;
  if (origin == ZLIB_FILEFUNC_SEEK_END) offset += stream.Size();
  stream.place_ = offset;
  return 0;
}

int ArchiveStream::OnClose(voidpf, voidpf) { return 0; }

// minizip takes the end of a file for success.
int ArchiveStream::OnError(voidpf self, voidpf) { return Self(self).read_short_ ? 1 : 0; }

}  // namespace quellix
