#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_system.h"
#include "platform/locale.h"

namespace quellix {

enum ZipMethod : uint16_t { kStored = 0, kDeflated = 8 };
enum ZipFlag : uint16_t { kEncrypted = 1, kSizesBehindData = 8, kUtf8Name = 0x800 };

// One file in an archive.
struct ZipEntry {
  std::string name;  // with folders, "/" between them, without a drive
  uint16_t flags = kUtf8Name;
  uint16_t method = kDeflated;
  uint32_t dos_time = 0;  // local date and time, in steps of two seconds
  uint32_t crc = 0;
  uint64_t packed = 0;      // bytes in the archive
  uint64_t size = 0;        // bytes of the file
  uint64_t offset = 0;      // of its header in the archive, where that is known
  uint32_t attributes = 0;  // FileAttribute bits
  FileTimes times = {};     // each 0 when the archive does not tell
  bool wide = false;        // a size or the offset is beyond 4 GiB
  bool own = false;         // made by this program
  // Further data streams of the file: in its own header alone.
  std::vector<std::pair<std::string, std::string>> streams = {};  // name, bytes
};

// What fits beside the rest into one header.
inline constexpr size_t kMostStreamBytes = 32 << 10;  // of names and bytes in all

// The extra fields of an entry's own header: times and attributes are kept here as well, so that an
// archive without its directory loses nothing. Streams must not be more than kMostStreamBytes.
std::string HeaderFields(const ZipEntry& entry);
// The extra fields of its record in the directory.
std::string DirectoryFields(const ZipEntry& entry);

// What stands behind a directory of `count` records, however many they are: minizip tells the count
// of more than 65,534 only in archives beyond 4 GiB.
std::string DirectoryEnd(uint64_t count, uint64_t offset, uint64_t size);
// Bytes of the first `count` records.
size_t SizeOfRecords(std::string_view records, uint64_t count);

inline constexpr std::string_view kLocalSignature = "PK\3\4";
inline constexpr std::string_view kEndSignature = "PK\5\6";
inline constexpr size_t kLocalHeaderSize = 30;  // before the name and the extra fields

// Bytes of the name and the extra fields that follow a header's fixed part; nothing when this is no
// header.
std::optional<size_t> LocalHeaderRest(std::string_view fixed);
// Reads a header with its name and extra fields. Offset is left 0.
ZipEntry ParseLocalHeader(std::string_view header);

// Takes times, attributes, streams and large sizes out of extra fields; offset only when it is
// large.
void ReadExtraFields(std::string_view fields, ZipEntry& entry);

// Date and time of DOS; its first or last moment when the time lies outside 1980 to 2107.
uint32_t ToDosTime(const LocalTime& time);
// Its year is 0 when this is no date.
LocalTime FromDosTime(uint32_t dos_time);

}  // namespace quellix
