#include "platform/volume/hive_format.h"

namespace quellix {

uint32_t NumberAt(std::string_view bytes, size_t at, size_t size) {
  if (at > bytes.size() || bytes.size() - at < size) throw UnsoundHive();
  uint32_t number = 0;
  for (size_t i = size; i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes[at + i]);
  return number;
}

void PutNumber(std::string& bytes, size_t at, uint64_t number, size_t size) {
  if (at > bytes.size() || bytes.size() - at < size) throw UnsoundHive();
  for (size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(number >> (8 * i) & 0xFF);
}

namespace hive_format {

uint32_t HeaderChecksum(std::string_view header) {
  uint32_t sum = 0;
  for (size_t at = 0; at < kChecksum; at += 4) sum ^= NumberAt(header, at);
  if (sum == 0) return 1;
  return sum == UINT32_MAX ? UINT32_MAX - 1 : sum;
}

bool HasSoundHeader(std::string_view bytes) {
  return bytes.size() >= kSector && bytes.starts_with("regf") &&
         NumberAt(bytes, kChecksum) == HeaderChecksum(bytes);
}

size_t ValueCountAt(std::string_view bytes, size_t key) {
  const bool has_none = (NumberAt(bytes, key + kKeyFlags, 2) & kKeyIsPredefined) != 0;
  return has_none ? 0 : NumberAt(bytes, key + kKeyValueCount);
}

}  // namespace hive_format
}  // namespace quellix
