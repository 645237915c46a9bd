#include "backup/zip_format.h"

#include <algorithm>

namespace quellix {
namespace {

constexpr uint32_t kFull32 = 0xFFFFFFFF;
constexpr uint16_t kWideVersion = 45;

// Extra fields: the standard ones, and our own with the attributes and the streams of the entry.
enum ExtraField : uint16_t {
  kWideSizes = 0x0001,
  kNtfsTimes = 0x000A,
  kUnixTimes = 0x5455,
  kAttributes = 0x7851,
  kStreams = 0x7852
};

constexpr int64_t kDaysTo1970 = 134774;  // from 1601
constexpr int64_t kSecondsADay = 86400;
constexpr int64_t kStepsASecond = 10'000'000;

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

// Seconds since 1970 in UTC; those of the last write come first, or are not there.
void ReadUnixTimes(std::string_view field, FileTimes& times) {
  if (field.size() < 5 || (field[0] & 1) == 0 || times.last_write != 0) return;
  const int64_t seconds = static_cast<int32_t>(Read32(field, 1));
  times.last_write = (seconds + kDaysTo1970 * kSecondsADay) * kStepsASecond;
}

std::string StreamsField(const ZipEntry& entry) {
  Bytes field;
  for (const auto& [name, bytes] : entry.streams) {
    field.U16(name.size()).U16(bytes.size()).Raw(name).Raw(bytes);
  }
  const std::string content = field.Take();
  return content.empty() ? "" : Bytes().U16(kStreams).U16(content.size()).Raw(content).Take();
}

void ReadStreams(std::string_view field, ZipEntry& entry) {
  entry.streams.clear();
  while (field.size() >= 4) {
    const size_t name = Read16(field, 0), bytes = Read16(field, 2);
    field.remove_prefix(4);
    if (name + bytes > field.size()) return;
    entry.streams.emplace_back(field.substr(0, name), field.substr(name, bytes));
    field.remove_prefix(name + bytes);
  }
}

// Only what did not fit into its own field is there, in this order.
void ReadWideSizes(std::string_view field, ZipEntry& entry) {
  const auto take = [&](uint64_t& value) {
    if (field.size() < 8) return;
    value = Read64(field, 0);
    field.remove_prefix(8);
    entry.wide = true;
  };
  if (entry.size == kFull32) take(entry.size);
  if (entry.packed == kFull32) take(entry.packed);
  if (field.size() >= 8 && entry.offset == kFull32) take(entry.offset);
}

std::string OwnField(const ZipEntry& entry) {
  return Bytes().U16(kAttributes).U16(4).U32(entry.attributes).Take();
}

uint32_t Narrow32(uint64_t value) {
  return static_cast<uint32_t>(std::min<uint64_t>(value, kFull32));
}

}  // namespace

std::string HeaderFields(const ZipEntry& entry) {
  return TimesField(entry.times) + OwnField(entry) + StreamsField(entry);
}

std::string DirectoryFields(const ZipEntry& entry) {
  const FileTimes& times = entry.times;
  const bool knows_times = (times.created | times.last_access | times.last_write) != 0;
  return (knows_times ? TimesField(times) : "") + (entry.own ? OwnField(entry) : "");
}

std::string DirectoryEnd(uint64_t count, uint64_t offset, uint64_t size) {
  constexpr uint64_t kBytesBehindThis = 44;
  Bytes end;
  end.Raw("PK\6\6").U64(kBytesBehindThis).U16(kWideVersion).U16(kWideVersion).U32(0).U32(0);
  end.U64(count).U64(count).U64(size).U64(offset);
  end.Raw("PK\6\7").U32(0).U64(offset + size).U32(1);
  const uint64_t narrow = std::min<uint64_t>(count, 0xFFFF);
  end.Raw(kEndSignature).U16(0).U16(0).U16(narrow).U16(narrow);
  return end.U32(Narrow32(size)).U32(Narrow32(offset)).U16(0).Take();
}

size_t SizeOfRecords(std::string_view records, uint64_t count) {
  constexpr size_t kFixed = 46;
  size_t at = 0;
  for (uint64_t i = 0; i < count; ++i) {
    at += kFixed + Read16(records, at + 28) + Read16(records, at + 30) + Read16(records, at + 32);
  }
  return at;
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

void ReadExtraFields(std::string_view fields, ZipEntry& entry) {
  while (fields.size() >= 4) {
    const uint16_t id = Read16(fields, 0);
    const std::string_view field = fields.substr(4, Read16(fields, 2));
    if (id == kWideSizes) ReadWideSizes(field, entry);
    if (id == kNtfsTimes) ReadTimes(field, entry.times);
    if (id == kUnixTimes) ReadUnixTimes(field, entry.times);
    if (id == kAttributes && field.size() >= 4) {
      entry.attributes = Read32(field, 0);
      entry.own = true;
    }
    if (id == kStreams) ReadStreams(field, entry);
    fields.remove_prefix(4 + field.size());
  }
}

uint32_t ToDosTime(const LocalTime& time) {
  constexpr uint32_t kFirst = 1 << 21 | 1 << 16, kLast = 0xFF9FBF7D;
  if (time.year < 1980) return kFirst;
  if (time.year > 2107) return kLast;
  const auto bits = [](int value, int shift) { return static_cast<uint32_t>(value) << shift; };
  return bits(time.year - 1980, 25) | bits(time.month, 21) | bits(time.day, 16) |
         bits(time.hour, 11) | bits(time.minute, 5) | bits(time.second / 2, 0);
}

LocalTime FromDosTime(uint32_t dos_time) {
  const auto bits = [dos_time](int shift, uint32_t mask) {
    return static_cast<int>(dos_time >> shift & mask);
  };
  const LocalTime time{bits(25, 127) + 1980, bits(21, 15), bits(16, 31),
                       bits(11, 31),         bits(5, 63),  bits(0, 31) * 2};
  return IsCalendarDate(time) ? time : LocalTime{};
}

}  // namespace quellix
