#include "backup/zip_reader.h"

#include <algorithm>
#include <vector>

#include "backup/deflate.h"
#include "platform/error.h"

namespace quellix {
namespace {

[[noreturn]] void Fail(const ZipEntry& entry, const char* what) {
  throw Error(Error::Kind::kOther, "\"" + entry.name + "\" " + what);
}

// Every record is there and leads to a place before the directory.
bool IsWhole(const ZipDirectory& directory) {
  std::string_view records = directory.records;
  for (uint64_t i = 0; i < directory.count; ++i) {
    const auto entry = TakeDirectoryRecord(records);
    if (!entry || entry->offset >= directory.offset) return false;
  }
  return records.empty();
}

// Copies stored data, or inflates; nothing when they are damaged.
std::optional<PackedTotals> Unpack(const ZipEntry& entry,
                                   const std::function<size_t(std::span<char>)>& read,
                                   const std::function<void(std::string_view)>& write) {
  if (entry.method == kDeflated) return InflateStream(read, write);
  PackedTotals totals;
  std::vector<char> buffer(256 << 10);
  while (const size_t got = read(buffer)) {
    totals.crc = Checksum(totals.crc, std::span(buffer).first(got));
    totals.size += got;
    write({buffer.data(), got});
  }
  totals.packed = totals.size;
  return totals;
}

}  // namespace

std::string ReadText(RandomFile& file, uint64_t offset, uint64_t size) {
  std::string text(static_cast<size_t>(size), '\0');
  text.resize(file.Read(offset, text));
  return text;
}

std::optional<ZipDirectory> ReadDirectory(RandomFile& file) {
  const uint64_t size = file.Size();
  const uint64_t tail = std::min(size, kLargestEnd);
  const auto place = FindDirectory(ReadText(file, size - tail, tail));
  if (!place || place->offset > size || place->size > size - place->offset) return std::nullopt;
  ZipDirectory directory{ReadText(file, place->offset, place->size), place->offset, place->count};
  if (directory.records.size() != place->size || !IsWhole(directory)) return std::nullopt;
  return directory;
}

void VisitEntries(const ZipDirectory& directory,
                  const std::function<bool(const ZipEntry&)>& visit) {
  std::string_view records = directory.records;
  while (const auto entry = TakeDirectoryRecord(records)) {
    if (!visit(*entry)) return;
  }
}

std::optional<uint64_t> DataOffset(RandomFile& file, const ZipEntry& entry) {
  const auto rest = LocalHeaderRest(ReadText(file, entry.offset, kLocalHeaderSize));
  if (!rest) return std::nullopt;
  return entry.offset + kLocalHeaderSize + *rest;
}

void ExtractEntry(RandomFile& file, const ZipEntry& entry,
                  const std::function<void(std::string_view)>& write) {
  if ((entry.flags & kEncrypted) != 0) Fail(entry, "is encrypted, which is not supported.");
  if (entry.method != kStored && entry.method != kDeflated) {
    Fail(entry, "is packed in a way that is not supported.");
  }
  const auto data = DataOffset(file, entry);
  if (!data) Fail(entry, "is damaged.");
  uint64_t at = 0, written = 0;
  const auto read = [&](std::span<char> buffer) {
    const size_t part = static_cast<size_t>(std::min<uint64_t>(buffer.size(), entry.packed - at));
    const size_t got = file.Read(*data + at, buffer.first(part));
    at += got;
    return got;
  };
  const auto write_some = [&](std::string_view bytes) {
    written += bytes.size();
    if (written > entry.size) Fail(entry, "is longer than it says; it is damaged.");
    write(bytes);
  };
  const auto totals = Unpack(entry, read, write_some);
  if (!totals || totals->size != entry.size || totals->crc != entry.crc) {
    Fail(entry, "is damaged.");
  }
}

}  // namespace quellix
