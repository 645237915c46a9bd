#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {

// The format's numbers reach no farther.
inline constexpr uint64_t kLargestHive = UINT32_MAX;

// A hive file as Windows would find it at its next start.
struct HiveState {
  UniqueFd fd;                   // of the file, or of memory that holds what its logs make of it
  std::string read_only_reason;  // as a sentence; "" when it may be written
  bool is_replayed = false;
};

// None (no fd) when the file is missing. Nothing is written. Throws Error.
HiveState OpenHiveState(VolumeFileSystem& files, const std::string& path);

// A file in memory with these bytes. Throws Error that names `path`.
UniqueFd MemoryFile(std::string_view bytes, std::string_view path);

}  // namespace quellix
