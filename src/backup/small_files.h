#pragma once

#include <span>
#include <string>
#include <vector>

#include "backup/zip_format.h"

namespace quellix {

// Small files on their way into an archive, packed together by one thread.
class SmallFiles {
 public:
  struct Packed {
    struct Entry {
      ZipEntry entry;   // without its offset
      uint64_t length;  // of its header and data
    };
    std::vector<Entry> entries;
    std::string bytes;  // headers and data, one entry behind the other
  };

  void Add(ZipEntry entry, std::span<const char> bytes);
  bool empty() const { return files_.empty(); }
  // Enough for one thread to work on.
  bool IsFull() const;
  // Deflates each file, or stores it where that is shorter.
  Packed Pack() const;

 private:
  struct File {
    ZipEntry entry;
    size_t size;
  };

  std::vector<File> files_;
  std::string bytes_;
};

}  // namespace quellix
