#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {

// Windows loads no larger one.
inline constexpr uint64_t kLargestHive = INT32_MAX;

// What a file is known by again: it is another one when it was replaced or written meanwhile.
struct FileStamp {
  FileId id;
  uint64_t size = 0;
  int64_t written = 0;  // nanoseconds
  bool operator==(const FileStamp&) const = default;
};

// Of a hive and the logs beside it; nothing where one is missing.
using HiveStamps = std::vector<std::optional<FileStamp>>;
HiveStamps StampsOf(VolumeFileSystem& files, const std::string& path);

// A hive file as Windows would find it at its next start.
struct HiveState {
  UniqueFd fd;                   // of the file, or of memory that holds what its logs make of it
  std::string read_only_reason;  // as a sentence; "" when it may be written
  bool is_replayed = false;
  HiveStamps stamps;  // from before anything was read
};

// None (no fd) when the file is missing. Nothing is written. Throws Error.
HiveState OpenHiveState(VolumeFileSystem& files, const std::string& path);

// A file in memory with these bytes. Throws Error that names `path`.
UniqueFd MemoryFile(std::string_view bytes, std::string_view path);

}  // namespace quellix
