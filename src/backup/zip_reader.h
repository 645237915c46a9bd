#pragma once

#include <minizip/unzip.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "backup/archive_stream.h"
#include "backup/zip_format.h"
#include "platform/pause.h"

namespace quellix {

// Reads a whole archive through minizip.
class ZipReader {
 public:
  // Nothing when the archive has no directory that is whole and fits it; `stream` is taken only
  // with a reader. Throws Error when it cannot be read, and where `pause` ended that.
  static std::unique_ptr<ZipReader> Open(std::unique_ptr<ArchiveStream>& stream,
                                         const Pause& pause = {});

  uint64_t count() const { return count_; }

  // The entries in their order; false ends the visit, and is then returned.
  bool Visit(const std::function<bool(const ZipEntry&)>& visit);

  // Adds what only the header of the entry being visited tells: streams.
  void ReadHeader(ZipEntry& entry);

  // Unpacks the entry being visited, in pieces. Throws Error when it is encrypted, damaged or not
  // as long as it says, and what `write` throws.
  void Extract(const ZipEntry& entry, const std::function<void(std::string_view)>& write);

 private:
  using Handle = std::unique_ptr<void, decltype(&unzClose)>;

  explicit ZipReader(std::unique_ptr<ArchiveStream> stream);
  bool IsWhole(const Pause& pause);
  std::optional<ZipEntry> Current();
  uint64_t WideDataOffset(const ZipEntry& entry);
  bool ExtractWide(const ZipEntry& entry, const std::function<void(std::string_view)>& write);
  bool ExtractPlain(const ZipEntry& entry, const std::function<void(std::string_view)>& write);

  std::unique_ptr<ArchiveStream> stream_;
  Handle zip_{nullptr, &unzClose};
  uint64_t count_ = 0;
};

// Visits them all, with a pause before each. Throws Error where `pause` ended that.
void VisitAll(ZipReader& reader, const Pause& pause,
              const std::function<void(const ZipEntry&)>& visit);

}  // namespace quellix
