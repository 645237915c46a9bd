#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quellix {

// What a recycle bin tells of one of its files, in a "$I" file of its own.
struct RecycleIndex {
  uint64_t size = 0;    // bytes of the file
  int64_t deleted = 0;  // FILETIME
  std::string path;     // where the file was
};

// Reads the record of Windows Vista (version 1) or of Windows 10 (version 2), also the one of
// Windows Vista that lacks a byte of its size. What is cut off or of no known version tells
// nothing: size 0, path "".
RecycleIndex ReadRecycleIndex(std::string_view bytes);

// The record in version 1 or 2. Throws NotAvailable when the path is too long for version 1.
std::string WriteRecycleIndex(int version, const RecycleIndex& index);

}  // namespace quellix
