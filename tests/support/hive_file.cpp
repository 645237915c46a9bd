#include "support/hive_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/volume/marvin32.h"

namespace quellix {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kFirstSequence = 4, kSecondSequence = 8, kChecksum = 508;
// Offsets of cells count from the first page behind the header.
constexpr uint32_t kRootCell = 0x20, kRootSize = 96, kSecurityCell = kRootCell + kRootSize;
constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr size_t kSector = 512, kEntryHeader = 40;
constexpr uint64_t kLogSeed = 0x82EF4D887A4E55C5;

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

std::string Number32(size_t value) {
  std::string bytes(4, '\0');
  Put32(bytes, 0, static_cast<uint32_t>(value));
  return bytes;
}

void PutHash(std::string& entry, size_t at, const std::string& hashed) {
  const uint64_t hash = Marvin32(hashed, kLogSeed);
  std::memcpy(&entry[at], &hash, 8);
}

// The first sector of a log beside a hive.
std::string LogHeader(const std::string& hive, uint32_t type) {
  std::string header = hive.substr(0, kSector);
  Put32(header, kFirstSequence, Get32(header, kSecondSequence));
  Put32(header, 28, type);
  PutChecksum(header);
  return header;
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

std::string WithHashes(std::string entries) {
  for (size_t at = 0; entries.size() - at >= kSector && entries.compare(at, 4, "HvLE") == 0;) {
    std::string entry = entries.substr(at, std::max(size_t{Get32(entries, at + 4)}, kSector));
    PutHash(entry, 24, entry.substr(kEntryHeader));
    PutHash(entry, 32, entry.substr(0, 32));
    entries.replace(at, entry.size(), entry);
    at += entry.size();
  }
  return entries;
}

std::string HiveLogEntry(unsigned sequence, const std::string& before, const std::string& after) {
  std::string references, pages;
  for (size_t at = kPage; at < after.size(); at += kPage) {
    if (after.substr(at, kPage) == before.substr(std::min(at, before.size()), kPage)) continue;
    references += Number32(at - kPage) + Number32(kPage);
    pages += after.substr(at, kPage);
  }
  std::string entry = "HvLE" + std::string(kEntryHeader - 4, '\0') + references + pages;
  entry.resize((entry.size() + kSector - 1) / kSector * kSector);
  Put32(entry, 4, static_cast<uint32_t>(entry.size()));
  Put32(entry, 12, sequence);
  Put32(entry, 16, static_cast<uint32_t>(after.size() - kPage));
  Put32(entry, 20, static_cast<uint32_t>(references.size() / 8));
  return WithHashes(entry);
}

std::string HiveLog(const std::string& hive, const std::string& entries, unsigned behind) {
  std::string header = LogHeader(hive, 6);
  if (entries.starts_with("HvLE")) {
    Put32(header, kFirstSequence, Get32(entries, 12));
    Put32(header, kSecondSequence, Get32(entries, 12) - behind);
    PutChecksum(header);
  }
  return header + entries;
}

std::string HiveVectorLog(const std::string& before, const std::string& after) {
  std::string vector = "DIRT", pages;
  for (size_t at = kPage; at < after.size(); at += kPage) {
    const bool changed =
        after.substr(at, kPage) != before.substr(std::min(at, before.size()), kPage);
    vector += changed ? '\xFF' : '\0';
    if (changed) pages += after.substr(at, kPage);
  }
  vector.resize((vector.size() + kSector - 1) / kSector * kSector);
  std::string header = LogHeader(after, 1);
  header.replace(12, 8, before, 12, 8);  // the time that both were last written, of this writing
  PutChecksum(header);
  return header + vector + pages;
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
