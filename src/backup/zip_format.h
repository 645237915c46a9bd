#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

enum ZipMethod : uint16_t { kStored = 0, kDeflated = 8 };
enum ZipFlag : uint16_t { kEncrypted = 1, kSizesBehindData = 8, kUtf8Name = 0x800 };

// One file in an archive.
struct ZipEntry {
  std::string name;  // with folders, "/" between them, without a drive
  uint16_t flags = kUtf8Name;
  uint16_t method = kStored;
  uint32_t dos_time = 0;  // local date and time, in steps of two seconds
  uint32_t crc = 0;
  uint64_t packed = 0;      // bytes in the archive
  uint64_t size = 0;        // bytes of the file
  uint64_t offset = 0;      // of its header in the archive
  uint32_t attributes = 0;  // FileAttribute bits
  FileTimes times;          // all 0 when the archive does not tell
};

// The header that stands before an entry's data. With `wide` its sizes may go beyond 4 GiB; a
// header's length depends on nothing but the name and `wide`. Attributes and exact times are kept
// here as well, so that an archive without its directory loses nothing.
std::string LocalHeader(const ZipEntry& entry, bool wide);
// The entry's record in the directory at the archive's end.
std::string DirectoryRecord(const ZipEntry& entry);
// What stands behind a directory of `count` records.
std::string DirectoryEnd(uint64_t count, uint64_t offset, uint64_t size);

inline constexpr std::string_view kLocalSignature = "PK\3\4";
inline constexpr std::string_view kEndSignature = "PK\5\6";
inline constexpr size_t kLocalHeaderSize = 30;  // before the name and the extra fields

// Bytes of the name and the extra fields that follow a header's fixed part; nothing when this is no
// header.
std::optional<size_t> LocalHeaderRest(std::string_view fixed);
// Reads a header with its name and extra fields. Offset is left 0.
ZipEntry ParseLocalHeader(std::string_view header);

// Reads the record at the beginning of `records` and takes it off; nothing when there is none. The
// name has been read with it. Offsets count from the archive's first byte.
std::optional<ZipEntry> TakeDirectoryRecord(std::string_view& records);

// Where the directory is, from the end of an archive.
struct DirectoryPlace {
  uint64_t offset = 0, size = 0, count = 0;
};
// `tail` is an archive's last bytes, kLargestEnd of them or all; nothing when they hold no end of a
// directory.
inline constexpr uint64_t kLargestEnd = 0xFFFF + 22 + 20 + 56;
std::optional<DirectoryPlace> FindDirectory(std::string_view tail);

// Takes times, attributes and large sizes out of extra fields.
void ReadExtraFields(std::string_view fields, ZipEntry& entry);

// A FILETIME, moved by the zone's minutes, as date and time of DOS; its first or last moment when
// it lies outside 1980 to 2107.
uint32_t ToDosTime(int64_t filetime, int zone_minutes);
int64_t FromDosTime(uint32_t dos_time, int zone_minutes);

}  // namespace quellix
