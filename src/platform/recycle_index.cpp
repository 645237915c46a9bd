#include "platform/recycle_index.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

// Both versions: the version, the size and the time, 8 bytes each. Version 1 has room for a path of
// 260 characters behind them; version 2 the number of characters, with the NUL, and as many.
constexpr size_t kSizeAt = 8, kTimeAt = 16, kHeadSize = 24, kRoom = 520;
// Windows Vista wrote some records whose size has 7 bytes, so that all behind it lies one earlier.
constexpr size_t kShortRecord = kHeadSize + kRoom - 1;

uint64_t Number(std::string_view bytes, size_t at, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size && at + i < bytes.size(); ++i) {
    value |= uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  }
  return value;
}

std::string Bytes(uint64_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

}  // namespace

RecycleIndex ReadRecycleIndex(std::string_view bytes) {
  const uint64_t version = Number(bytes, 0, 8);
  if ((version != 1 && version != 2) || bytes.size() < kHeadSize) return {};
  const size_t missing = version == 1 && bytes.size() == kShortRecord ? 1 : 0;
  RecycleIndex index{Number(bytes, kSizeAt, 8 - missing),
                     static_cast<int64_t>(Number(bytes, kTimeAt - missing, 8)),
                     {}};
  std::string_view path = bytes.substr(kHeadSize - missing);
  if (version == 2) path = path.size() < 4 ? std::string_view() : path.substr(4);
  const uint64_t most = version == 2 ? 2 * Number(bytes, kHeadSize, 4) : kRoom;
  index.path = TrimNull(FromUtf16Bytes(path.substr(0, std::min<uint64_t>(most, path.size()) & ~1)));
  return index;
}

std::string WriteRecycleIndex(int version, const RecycleIndex& index) {
  const std::string head = Bytes(static_cast<uint64_t>(version), 8) + Bytes(index.size, 8) +
                           Bytes(static_cast<uint64_t>(index.deleted), 8);
  std::string path = ToUtf16Bytes(index.path) + std::string(2, '\0');
  if (version == 2) return head + Bytes(path.size() / 2, 4) + path;
  if (path.size() > kRoom) {
    throw NotAvailable(Say("The path is too long for the recycle bin: %1", index.path));
  }
  path.resize(kRoom);
  return head + path;
}

}  // namespace quellix
