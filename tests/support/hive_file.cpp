#include "support/hive_file.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quellix {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kFirstSequence = 4, kSecondSequence = 8, kChecksum = 508;
// Offsets of cells count from the first page behind the header.
constexpr uint32_t kRootCell = 0x20, kRootSize = 96, kSecurityCell = kRootCell + kRootSize;
constexpr uint32_t kNone = 0xFFFFFFFF;

void Put16(std::string& bytes, size_t at, uint16_t value) { std::memcpy(&bytes[at], &value, 2); }
void Put32(std::string& bytes, size_t at, uint32_t value) { std::memcpy(&bytes[at], &value, 4); }
uint32_t Get32(const std::string& bytes, size_t at) {
  uint32_t value;
  std::memcpy(&value, bytes.data() + at, 4);
  return value;
}
void PutText(std::string& bytes, size_t at, const char* text) {
  bytes.replace(at, std::strlen(text), text);
}

void PutChecksum(std::string& hive) {
  uint32_t sum = 0;
  for (size_t at = 0; at < kChecksum; at += 4) sum ^= Get32(hive, at);
  Put32(hive, kChecksum, sum);
}

void PutHeader(std::string& hive) {
  PutText(hive, 0, "regf");
  Put32(hive, kFirstSequence, 1);
  Put32(hive, kSecondSequence, 1);
  Put32(hive, 20, 1);  // version 1.3, which stores large data in one piece
  Put32(hive, 24, 3);
  Put32(hive, 32, 1);  // loaded straight into memory
  Put32(hive, 36, kRootCell);
  Put32(hive, 40, kPage);
  Put32(hive, 44, 1);
  PutChecksum(hive);
}

void PutCell(std::string& hive, uint32_t cell, uint32_t size, const char* kind) {
  Put32(hive, kPage + cell, static_cast<uint32_t>(-static_cast<int32_t>(size)));
  PutText(hive, kPage + cell + 4, kind);
}

void PutRootKey(std::string& hive) {
  PutCell(hive, kRootCell, kRootSize, "nk");
  const size_t at = kPage + kRootCell + 4;
  Put16(hive, at + 2, 0x2C);  // top key, not to be deleted, plain name
  Put32(hive, at + 16, kNone);
  for (const size_t list : {28, 32, 40, 48}) Put32(hive, at + list, kNone);
  Put32(hive, at + 44, kSecurityCell);
  Put16(hive, at + 72, 4);
  PutText(hive, at + 76, "ROOT");
}

// A self-relative descriptor without owner and lists; all keys share it.
void PutSecurity(std::string& hive) {
  constexpr uint32_t kSize = 48, kDescriptorSize = 20;
  PutCell(hive, kSecurityCell, kSize, "sk");
  const size_t at = kPage + kSecurityCell + 4;
  Put32(hive, at + 4, kSecurityCell);
  Put32(hive, at + 8, kSecurityCell);
  Put32(hive, at + 12, 1);
  Put32(hive, at + 16, kDescriptorSize);
  Put32(hive, at + 20, 0x80000001);
  const uint32_t free_cell = kSecurityCell + kSize;
  Put32(hive, kPage + free_cell, kPage - free_cell);
}

}  // namespace

std::string EmptyHive() {
  std::string hive(2 * kPage, '\0');
  PutHeader(hive);
  PutText(hive, kPage, "hbin");
  Put32(hive, kPage + 8, kPage);
  PutRootKey(hive);
  PutSecurity(hive);
  return hive;
}

void SetHiveDirty(const std::string& file, bool dirty) {
  std::string hive = ReadNative(file);
  Put32(hive, kFirstSequence, Get32(hive, kSecondSequence) + (dirty ? 1 : 0));
  PutChecksum(hive);
  WriteNative(file, hive);
}

std::string HiveLog(unsigned sequence) {
  std::string log(1024, '\0');
  PutText(log, 0, "regf");
  PutText(log, 512, "HvLE");
  Put32(log, 516, 512);
  Put32(log, 524, sequence);
  return log;
}

unsigned HiveSequence(const std::string& file) { return Get32(ReadNative(file), kSecondSequence); }

std::string ReadNative(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + file);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteNative(const std::string& file, const std::string& bytes) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
    throw std::runtime_error("cannot write " + file);
  }
}

}  // namespace quellix
