#include "backup/entry_data.h"

#include <zlib.h>

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

namespace quellix {
namespace {

constexpr size_t kIn = 64 << 10, kOut = 256 << 10;

// The packed bytes of an entry in pieces.
class Packed {
 public:
  Packed(ArchiveStream& stream, uint64_t offset, uint64_t size)
      : stream_(stream), at_(offset), left_(size), buffer_(kIn) {}

  // Empty at the end.
  std::span<char> Next() {
    const auto part = static_cast<size_t>(std::min<uint64_t>(buffer_.size(), left_));
    const size_t got = stream_.Read(at_, std::span(buffer_).first(part));
    at_ += got;
    left_ -= got;
    return std::span(buffer_).first(got);
  }

 private:
  ArchiveStream& stream_;
  uint64_t at_, left_;
  std::vector<char> buffer_;
};

Bytef* AsBytes(char* bytes) { return reinterpret_cast<Bytef*>(bytes); }

void Add(DataTotals& totals, std::span<char> bytes,
         const std::function<void(std::string_view)>& write) {
  totals.crc = static_cast<uint32_t>(crc32_z(totals.crc, AsBytes(bytes.data()), bytes.size()));
  totals.size += bytes.size();
  write({bytes.data(), bytes.size()});
}

std::optional<DataTotals> Inflate(Packed packed,
                                  const std::function<void(std::string_view)>& write) {
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, &inflateEnd);
  std::vector<char> out(kOut);
  DataTotals totals;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    if (stream.avail_in == 0) {
      const std::span<char> in = packed.Next();
      if (in.empty()) return std::nullopt;
      stream.next_in = AsBytes(in.data());
      stream.avail_in = static_cast<uInt>(in.size());
    }
    const size_t offered = stream.avail_in;
    stream.next_out = AsBytes(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    result = inflate(&stream, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END) return std::nullopt;
    totals.packed += offered - stream.avail_in;
    Add(totals, std::span(out).first(out.size() - stream.avail_out), write);
  }
  return totals;
}

}  // namespace

std::optional<DataTotals> UnpackData(ArchiveStream& stream, uint64_t offset, const ZipEntry& entry,
                                     bool open_ended,
                                     const std::function<void(std::string_view)>& write) {
  Packed packed(stream, offset, open_ended ? UINT64_MAX : entry.packed);
  if (entry.method == kDeflated) return Inflate(std::move(packed), write);
  if (entry.method != kStored || open_ended) return std::nullopt;
  DataTotals totals;
  for (std::span<char> part = packed.Next(); !part.empty(); part = packed.Next()) {
    Add(totals, part, write);
  }
  totals.packed = totals.size;
  return totals;
}

}  // namespace quellix
