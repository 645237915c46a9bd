#pragma once

#include <cstdint>
#include <vector>

#include "backup/archive_stream.h"
#include "backup/zip_format.h"
#include "platform/pause.h"

namespace quellix {

// An entry with its place in an archive: from entry.offset on to `end`.
struct ScannedEntry {
  ZipEntry entry;
  uint64_t end = 0;
};

struct ZipScan {
  std::vector<ScannedEntry> entries;  // whole ones, and encrypted ones, in their order
  uint64_t damaged = 0;               // entries in between that are not whole
  uint64_t unverified = 0;            // encrypted, or packed in a way that only others know
  uint64_t behind = 0;                // bytes behind the last entry that was found
};

// Finds the entries of an archive by their own headers, without a directory, and unpacks each to
// see whether it is whole. Behind what is damaged it goes on with the next header. Throws Error,
// also where `pause`, which is told of bytes, ends it.
ZipScan ScanArchive(ArchiveStream& stream, const Pause& pause);

// Writes the directory of entries that stand in the stream already, at `end`. It stays in the
// stream's memory until that is flushed. Throws Error.
void WriteDirectory(ArchiveStream& stream, const std::vector<ScannedEntry>& entries, uint64_t end);

}  // namespace quellix
