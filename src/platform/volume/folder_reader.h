#pragma once

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

namespace quellix {

// Reads an open folder in large pieces, without the library's own copying and checks.
class FolderReader {
 public:
  FolderReader() = default;
  FolderReader(const FolderReader&) = delete;
  FolderReader& operator=(const FolderReader&) = delete;
  ~FolderReader() { Spare() = std::move(buffer_); }

  // Reads the next piece, as much as fits; false at the end or on an error.
  bool Fill(int folder) {
    used_ = 0;
    while (!at_end_ && kSize - used_ >= kLargestRecord) {
      const long got = syscall(SYS_getdents64, folder, buffer_.get() + used_, kSize - used_);
      at_end_ = got <= 0;
      if (got < 0) error_ = errno;
      if (got > 0) used_ += static_cast<size_t>(got);
    }
    return used_ > 0;
  }

  bool at_end() const { return at_end_; }
  int error() const { return error_; }  // an errno value, or 0

  // Calls visit(name, d_type) for each entry of the piece but "." and "..", until it returns false.
  template <class Visit>
  bool VisitPiece(const Visit& visit) const {
    for (size_t at = 0; at < used_;) {
      const char* record = buffer_.get() + at;
      uint16_t length;
      std::memcpy(&length, record + kLengthOffset, sizeof length);
      at += length;
      const char* name = record + kNameOffset;
      if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
      if (!visit(name, static_cast<unsigned char>(record[kTypeOffset]))) return false;
    }
    return true;
  }

 private:
  // The kernel's linux_dirent64: inode, offset, record length, type, name.
  static constexpr size_t kLengthOffset = 16, kTypeOffset = 18, kNameOffset = 19,
                          kLargestRecord = 1024;
  static constexpr size_t kSize = 64 << 10;
  // The one used last, if any is to spare: freeing so large a piece makes the heap look at all of
  // its small ones. Not initialised: only the pages that are used cost memory.
  static std::unique_ptr<char[]>& Spare() {
    static thread_local std::unique_ptr<char[]> spare;
    return spare;
  }
  static std::unique_ptr<char[]> Take() {
    std::unique_ptr<char[]> buffer = std::move(Spare());
    return buffer ? std::move(buffer) : std::unique_ptr<char[]>(new char[kSize]);
  }

  std::unique_ptr<char[]> buffer_ = Take();
  size_t used_ = 0;
  bool at_end_ = false;
  int error_ = 0;
};

// visit(name, d_type) for all entries of an open folder, until it returns false.
template <class Visit>
void ReadFolder(int folder, const Visit& visit) {
  FolderReader reader;
  while (reader.Fill(folder) && reader.VisitPiece(visit)) {
  }
}

}  // namespace quellix
