#include "backup/small_files.h"

#include "backup/deflate.h"

namespace quellix {
namespace {

constexpr size_t kMostFiles = 64;
constexpr size_t kMostBytes = 512 << 10;

}  // namespace

void SmallFiles::Add(ZipEntry entry, std::span<const char> bytes) {
  files_.push_back({std::move(entry), bytes.size()});
  bytes_.append(bytes.data(), bytes.size());
}

bool SmallFiles::IsFull() const {
  return files_.size() >= kMostFiles || bytes_.size() >= kMostBytes;
}

SmallFiles::Packed SmallFiles::Pack() const {
  Packed result;
  Deflater deflater;
  std::string deflated;
  std::span<const char> rest(bytes_);
  for (const File& file : files_) {
    const std::span<const char> bytes = rest.first(file.size);
    rest = rest.subspan(file.size);
    deflated.clear();
    if (!bytes.empty()) deflater.Pack(bytes, deflated);
    ZipEntry entry = file.entry;
    entry.method = deflated.size() < bytes.size() ? kDeflated : kStored;
    std::string_view data = deflated;
    if (entry.method == kStored) data = {bytes.data(), bytes.size()};
    entry.crc = Checksum(0, bytes);
    entry.size = bytes.size();
    entry.packed = data.size();
    const std::string header = LocalHeader(entry, false);
    result.bytes.append(header).append(data);
    result.entries.push_back({std::move(entry), header.size() + data.size()});
  }
  return result;
}

}  // namespace quellix
