#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quellix {

// Compression at the usual level of archivers, in the form archives hold it.

// Compresses whole small files one after the other.
class Deflater {
 public:
  Deflater();
  ~Deflater();
  // Appends the compressed bytes to `packed`.
  void Pack(std::span<const char> bytes, std::string& packed);

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

uint32_t Checksum(uint32_t so_far, std::span<const char> bytes);

struct PackedTotals {
  uint32_t crc = 0;
  uint64_t size = 0, packed = 0;
};

// Compresses a stream of any length on all processors. `read` fills a buffer and returns less than
// asked at the end only; `write` takes the compressed bytes in order. What they throw ends the
// work.
PackedTotals DeflateStream(const std::function<size_t(std::span<char>)>& read,
                           const std::function<void(std::string_view)>& write);

// Unpacks to the end of the stream, in pieces. `read` as above; it may give more than the stream
// holds. Nothing when the data are damaged or end too early.
std::optional<PackedTotals> InflateStream(const std::function<size_t(std::span<char>)>& read,
                                          const std::function<void(std::string_view)>& write);

}  // namespace quellix
