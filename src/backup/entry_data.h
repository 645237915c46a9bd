#pragma once

#include <functional>
#include <optional>

#include "backup/archive_stream.h"
#include "backup/zip_format.h"

namespace quellix {

struct DataTotals {
  uint32_t crc = 0;
  uint64_t size = 0, packed = 0;
};

// Unpacks what begins at `offset`, for the cases minizip has no call for: an archive without a
// directory, sizes beyond 4 GiB. Of `entry` only method and packed count; with `open_ended` the
// data themselves tell their end. Nothing when they are damaged. Throws Error, and what `write`
// throws.
std::optional<DataTotals> UnpackData(ArchiveStream& stream, uint64_t offset, const ZipEntry& entry,
                                     bool open_ended,
                                     const std::function<void(std::string_view)>& write);

}  // namespace quellix
