#pragma once

#include <unistd.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace quellix {

// A file descriptor that closes itself; -1 is none.
class UniqueFd {
 public:
  explicit UniqueFd(int fd = -1) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() {
    if (fd_ >= 0) close(fd_);
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_;
};

// A descriptor with several owners, closed by the last.
class SharedFd {
 public:
  SharedFd() = default;
  SharedFd(UniqueFd fd) {  // NOLINT(google-explicit-constructor): one owner may become several
    if (fd) fd_ = std::make_shared<const UniqueFd>(std::move(fd));
  }

  int get() const { return fd_ ? fd_->get() : -1; }
  explicit operator bool() const { return fd_ != nullptr; }

 private:
  std::shared_ptr<const UniqueFd> fd_;
};

// The number of up to 4 bytes that stands at a place of an open file, lowest byte first; 0 behind
// the file's end.
inline uint32_t ReadNumber(int fd, off_t at, size_t bytes = 4) {
  uint8_t stored[4] = {};
  if (pread(fd, stored, bytes, at) != static_cast<ssize_t>(bytes)) return 0;
  return stored[0] | stored[1] << 8 | stored[2] << 16 | static_cast<uint32_t>(stored[3]) << 24;
}

}  // namespace quellix
