#include "backup/zip_format.h"

#include <algorithm>
#include <chrono>

#include "backup/backup_names.h"

namespace quellix {
namespace {

constexpr std::string_view kRecordSignature = "PK\1\2", kWideEndSignature = "PK\6\6";
constexpr uint32_t kFull32 = 0xFFFFFFFF;
constexpr uint16_t kPlainVersion = 20, kWideVersion = 45;
constexpr uint16_t kMadeOnNtfs = 0x0A00;  // external attributes are those of Windows

constexpr int64_t kStepsAMinute = 600'000'000;  // of a FILETIME

// Extra fields: the standard ones, and our own with the attributes of the entry that follows.
enum ExtraField : uint16_t { kWideSizes = 0x0001, kNtfsTimes = 0x000A, kAttributes = 0x7851 };

// Little-endian numbers, appended.
class Bytes {
 public:
  Bytes& Raw(std::string_view text) {
    bytes_.append(text);
    return *this;
  }
  Bytes& U16(uint64_t value) { return Number(value, 2); }
  Bytes& U32(uint64_t value) { return Number(value, 4); }
  Bytes& U64(uint64_t value) { return Number(value, 8); }
  std::string Take() { return std::move(bytes_); }

 private:
  Bytes& Number(uint64_t value, int size) {
    for (int i = 0; i < size; ++i) bytes_ += static_cast<char>(value >> (8 * i));
    return *this;
  }
  std::string bytes_;
};

uint64_t ReadNumber(std::string_view bytes, size_t at, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size && at + i < bytes.size(); ++i) {
    value |= uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  }
  return value;
}
uint16_t Read16(std::string_view bytes, size_t at) {
  return static_cast<uint16_t>(ReadNumber(bytes, at, 2));
}
uint32_t Read32(std::string_view bytes, size_t at) {
  return static_cast<uint32_t>(ReadNumber(bytes, at, 4));
}
uint64_t Read64(std::string_view bytes, size_t at) { return ReadNumber(bytes, at, 8); }

std::string TimesField(const FileTimes& times) {
  return Bytes()
      .U16(kNtfsTimes)
      .U16(32)
      .U32(0)
      .U16(1)
      .U16(24)
      .U64(static_cast<uint64_t>(times.last_write))
      .U64(static_cast<uint64_t>(times.last_access))
      .U64(static_cast<uint64_t>(times.created))
      .Take();
}

void ReadTimes(std::string_view field, FileTimes& times) {
  constexpr size_t kTag = 4, kWrite = 8, kAccess = 16, kCreated = 24;
  if (field.size() < 32 || Read16(field, kTag) != 1) return;
  times.last_write = static_cast<int64_t>(Read64(field, kWrite));
  times.last_access = static_cast<int64_t>(Read64(field, kAccess));
  times.created = static_cast<int64_t>(Read64(field, kCreated));
}

// Only the sizes that did not fit into their own fields are there, in this order.
void ReadWideSizes(std::string_view field, ZipEntry& entry) {
  for (uint64_t* value : {&entry.size, &entry.packed, &entry.offset}) {
    if (*value != kFull32 || field.size() < 8) continue;
    *value = Read64(field, 0);
    field.remove_prefix(8);
  }
}

uint32_t Narrow32(uint64_t value) {
  return static_cast<uint32_t>(std::min<uint64_t>(value, kFull32));
}

}  // namespace

std::string LocalHeader(const ZipEntry& entry, bool wide) {
  std::string extra = TimesField(entry.times);
  extra += Bytes().U16(kAttributes).U16(4).U32(entry.attributes).Take();
  if (wide) extra += Bytes().U16(kWideSizes).U16(16).U64(entry.size).U64(entry.packed).Take();
  return Bytes()
      .Raw(kLocalSignature)
      .U16(wide ? kWideVersion : kPlainVersion)
      .U16(entry.flags)
      .U16(entry.method)
      .U32(entry.dos_time)
      .U32(entry.crc)
      .U32(wide ? kFull32 : entry.packed)
      .U32(wide ? kFull32 : entry.size)
      .U16(entry.name.size())
      .U16(extra.size())
      .Raw(entry.name)
      .Raw(extra)
      .Take();
}

std::string DirectoryRecord(const ZipEntry& entry) {
  Bytes sizes;
  for (const uint64_t value : {entry.size, entry.packed, entry.offset}) {
    if (value >= kFull32) sizes.U64(value);
  }
  const std::string wide = sizes.Take();
  const FileTimes& times = entry.times;
  const bool knows_times = (times.created | times.last_access | times.last_write) != 0;
  std::string extra = knows_times ? TimesField(times) : "";
  if (!wide.empty()) extra += Bytes().U16(kWideSizes).U16(wide.size()).Raw(wide).Take();
  const uint16_t version = wide.empty() ? kPlainVersion : kWideVersion;
  return Bytes()
      .Raw(kRecordSignature)
      .U16(kMadeOnNtfs | version)
      .U16(version)
      .U16(entry.flags)
      .U16(entry.method)
      .U32(entry.dos_time)
      .U32(entry.crc)
      .U32(Narrow32(entry.packed))
      .U32(Narrow32(entry.size))
      .U16(entry.name.size())
      .U16(extra.size())
      .U16(0)  // comment
      .U16(0)  // disk
      .U16(0)  // internal attributes
      .U32(entry.attributes)
      .U32(Narrow32(entry.offset))
      .Raw(entry.name)
      .Raw(extra)
      .Take();
}

std::string DirectoryEnd(uint64_t count, uint64_t offset, uint64_t size) {
  Bytes end;
  if (count >= 0xFFFF || offset >= kFull32 || size >= kFull32) {
    constexpr uint64_t kBytesBehindThis = 44;
    end.Raw(kWideEndSignature)
        .U64(kBytesBehindThis)
        .U16(kWideVersion)
        .U16(kWideVersion)
        .U32(0)
        .U32(0);
    end.U64(count).U64(count).U64(size).U64(offset);
    end.Raw("PK\6\7").U32(0).U64(offset + size).U32(1);
  }
  const uint64_t narrow = std::min<uint64_t>(count, 0xFFFF);
  end.Raw(kEndSignature).U16(0).U16(0).U16(narrow).U16(narrow);
  return end.U32(Narrow32(size)).U32(Narrow32(offset)).U16(0).Take();
}

std::optional<size_t> LocalHeaderRest(std::string_view fixed) {
  if (fixed.size() < kLocalHeaderSize || !fixed.starts_with(kLocalSignature)) return std::nullopt;
  return size_t{Read16(fixed, 26)} + Read16(fixed, 28);
}

ZipEntry ParseLocalHeader(std::string_view header) {
  ZipEntry entry;
  entry.flags = Read16(header, 6);
  entry.method = Read16(header, 8);
  entry.dos_time = Read32(header, 10);
  entry.crc = Read32(header, 14);
  entry.packed = Read32(header, 18);
  entry.size = Read32(header, 22);
  const size_t name = Read16(header, 26);
  entry.name = header.substr(kLocalHeaderSize, name);
  ReadExtraFields(header.substr(std::min(kLocalHeaderSize + name, header.size())), entry);
  return entry;
}

std::optional<ZipEntry> TakeDirectoryRecord(std::string_view& records) {
  constexpr size_t kFixed = 46;
  if (records.size() < kFixed || !records.starts_with(kRecordSignature)) return std::nullopt;
  const size_t name = Read16(records, 28), extra = Read16(records, 30);
  const size_t whole = kFixed + name + extra + Read16(records, 32);
  if (records.size() < whole) return std::nullopt;
  ZipEntry entry;
  entry.flags = Read16(records, 8);
  entry.method = Read16(records, 10);
  entry.dos_time = Read32(records, 12);
  entry.crc = Read32(records, 16);
  entry.packed = Read32(records, 20);
  entry.size = Read32(records, 24);
  entry.attributes = Read32(records, 38);
  entry.offset = Read32(records, 42);
  entry.name = records.substr(kFixed, name);
  ReadExtraFields(records.substr(kFixed + name, extra), entry);
  records.remove_prefix(whole);
  return entry;
}

std::optional<DirectoryPlace> FindDirectory(std::string_view tail) {
  constexpr size_t kEnd = 22, kLocator = 20, kWideEnd = 56;
  size_t at = tail.rfind(kEndSignature);
  while (at != std::string_view::npos && at + kEnd > tail.size()) {
    at = at == 0 ? std::string_view::npos : tail.rfind(kEndSignature, at - 1);
  }
  if (at == std::string_view::npos) return std::nullopt;
  DirectoryPlace place{Read32(tail, at + 16), Read32(tail, at + 12), Read16(tail, at + 10)};
  if (at < kLocator + kWideEnd) return place;
  const size_t wide = at - kLocator - kWideEnd;
  if (tail.substr(wide, 4) != kWideEndSignature) return place;
  return DirectoryPlace{Read64(tail, wide + 48), Read64(tail, wide + 40), Read64(tail, wide + 32)};
}

void ReadExtraFields(std::string_view fields, ZipEntry& entry) {
  while (fields.size() >= 4) {
    const uint16_t id = Read16(fields, 0);
    const std::string_view field = fields.substr(4, Read16(fields, 2));
    if (id == kWideSizes) ReadWideSizes(field, entry);
    if (id == kNtfsTimes) ReadTimes(field, entry.times);
    if (id == kAttributes && field.size() >= 4) entry.attributes = Read32(field, 0);
    fields.remove_prefix(4 + field.size());
  }
}

uint32_t ToDosTime(int64_t filetime, int zone_minutes) {
  constexpr uint32_t kFirst = 1 << 21 | 1 << 16, kLast = 0xFF9FBF7D;
  const LocalTime time = ToLocalTime(filetime + zone_minutes * kStepsAMinute);
  if (time.year < 1980) return kFirst;
  if (time.year > 2107) return kLast;
  return static_cast<uint32_t>((time.year - 1980) << 25 | time.month << 21 | time.day << 16 |
                               time.hour << 11 | time.minute << 5 | time.second / 2);
}

int64_t FromDosTime(uint32_t dos_time, int zone_minutes) {
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(dos_time >> 25) + 1980),
                                         std::chrono::month(dos_time >> 21 & 15),
                                         std::chrono::day(dos_time >> 16 & 31));
  if (!date.ok()) return 0;
  constexpr int64_t kDaysTo1970 = 134774;  // from 1601
  const int64_t days = std::chrono::sys_days(date).time_since_epoch().count() + kDaysTo1970;
  const int64_t minutes = days * 24 * 60 + int64_t{dos_time >> 11 & 31} * 60 + (dos_time >> 5 & 63);
  return (minutes - zone_minutes) * kStepsAMinute + (dos_time & 31) * (kStepsAMinute / 30);
}

}  // namespace quellix
