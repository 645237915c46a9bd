#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "backup/zip_format.h"

namespace quellix {

// The directory of an archive.
struct ZipDirectory {
  std::string records;
  uint64_t offset = 0;
  uint64_t count = 0;
};

// Bytes from a place in a file, fewer at its end. Throws Error.
std::string ReadText(RandomFile& file, uint64_t offset, uint64_t size);

// Nothing when the archive has none that is whole and fits it. Throws Error when it cannot be read.
std::optional<ZipDirectory> ReadDirectory(RandomFile& file);

// The entries in their order; false ends the visit.
void VisitEntries(const ZipDirectory& directory, const std::function<bool(const ZipEntry&)>& visit);

// Where an entry's data begin; nothing when no header stands at its place. Throws Error.
std::optional<uint64_t> DataOffset(RandomFile& file, const ZipEntry& entry);

// Unpacks an entry in pieces. Throws Error when it is encrypted, damaged or not as long as it says,
// and what `write` throws.
void ExtractEntry(RandomFile& file, const ZipEntry& entry,
                  const std::function<void(std::string_view)>& write);

}  // namespace quellix
