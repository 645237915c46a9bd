#include "platform/volume/hive_log.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/marvin32.h"

namespace quellix {
namespace {

using namespace hive_format;  // NOLINT(google-build-using-namespace): the places of one format

// The header of a log differs from its hive's in the type.
constexpr uint32_t kOfHive = 0, kOfVectorLog = 1, kOfOldVectorLog = 2, kOfEntryLog = 6;

// Places in an entry.
constexpr size_t kEntrySize = 4, kEntryFlags = 8, kEntrySequence = 12, kEntryBinsLength = 16,
                 kEntryPages = 20, kEntryHash = 24, kEntryHeadHash = 32, kEntryHeader = 40;
constexpr uint64_t kSeed = 0x82EF4D887A4E55C5;

struct Entry {
  uint32_t sequence = 0, flags = 0, bins_length = 0;
  std::string_view bytes;
};

uint64_t LongNumberAt(std::string_view bytes, size_t at) {
  return uint64_t{NumberAt(bytes, at + 4)} << 32 | NumberAt(bytes, at);
}

// A bin that was added was logged, so no hive grows by more than its logs hold.
void Grow(std::string& hive, uint32_t bins_length, size_t most) {
  if (bins_length > most) throw UnsoundHive();
  if (hive.size() < kPage + bins_length) hive.resize(kPage + bins_length);
}

size_t MostBins(std::string_view hive, const std::vector<std::string>& logs) {
  size_t most = hive.size();
  for (const std::string& log : logs) most += log.size();
  return most;
}

// Copies the pages of an entry, or without a hive only looks whether they fit.
void CopyPages(const Entry& entry, std::string* hive) {
  const size_t count = NumberAt(entry.bytes, kEntryPages);
  size_t from = kEntryHeader + 8 * count;
  if (from > entry.bytes.size()) throw UnsoundHive();
  for (size_t i = 0; i < count; ++i) {
    const size_t place = NumberAt(entry.bytes, kEntryHeader + 8 * i);
    const size_t size = NumberAt(entry.bytes, kEntryHeader + 8 * i + 4);
    const bool fits = size <= entry.bytes.size() - from && place <= entry.bins_length &&
                      size <= entry.bins_length - place;
    if (!fits) throw UnsoundHive();
    if (hive) hive->replace(kPage + place, size, entry.bytes.substr(from, size));
    from += size;
  }
}

// The entry that stands at the beginning of some bytes; nothing when it is none or is broken.
std::optional<Entry> ReadEntry(std::string_view bytes) {
  if (bytes.size() < kSector || !bytes.starts_with("HvLE")) return std::nullopt;
  const size_t size = NumberAt(bytes, kEntrySize);
  if (size < kSector || size % kSector != 0 || size > bytes.size()) return std::nullopt;
  bytes = bytes.substr(0, size);
  const bool is_whole =
      LongNumberAt(bytes, kEntryHash) == Marvin32(bytes.substr(kEntryHeader), kSeed) &&
      LongNumberAt(bytes, kEntryHeadHash) == Marvin32(bytes.substr(0, kEntryHeadHash), kSeed);
  const Entry entry{NumberAt(bytes, kEntrySequence), NumberAt(bytes, kEntryFlags),
                    NumberAt(bytes, kEntryBinsLength), bytes};
  if (!is_whole || entry.bins_length % kPage != 0) return std::nullopt;
  CopyPages(entry, nullptr);
  return entry;
}

// One whose own writing was ended.
bool IsLog(std::string_view log, uint32_t type) {
  return IsClosedHive(log) && NumberAt(log, kFileType) == type;
}

// The number of the first entry that belongs to what a log was begun for; what is left of earlier
// ones has lower numbers, or stands behind.
uint32_t FirstOf(std::string_view log) { return NumberAt(log, kFirstSequence); }

// The whole entries of a log from its beginning on, up to what is none or does not fit.
std::vector<Entry> EntriesOf(std::string_view log) {
  std::vector<Entry> entries;
  if (!IsLog(log, kOfEntryLog)) return entries;
  try {
    for (log.remove_prefix(kSector);;) {
      const std::optional<Entry> entry = ReadEntry(log);
      if (!entry) return entries;
      entries.push_back(*entry);
      log.remove_prefix(entry->bytes.size());
    }
  } catch (const UnsoundHive&) {
    return entries;
  }
}

void SetHeader(std::string& hive, uint32_t sequence, uint32_t bins_length) {
  PutNumber(hive, kFirstSequence, sequence);
  PutNumber(hive, kSecondSequence, sequence);
  PutNumber(hive, kFileType, kOfHive);
  PutNumber(hive, kBinsLength, bins_length);
  PutNumber(hive, kChecksum, HeaderChecksum(hive));
}

void ApplyEntry(std::string& hive, const Entry& entry, size_t most_bins) {
  Grow(hive, entry.bins_length, most_bins);
  CopyPages(entry, &hive);
  PutNumber(hive, kFlags, entry.flags);
  SetHeader(hive, entry.sequence, entry.bins_length);
}

// The logs of entries, the one that was begun first before the other.
std::vector<std::string_view> EntryLogs(const std::vector<std::string>& logs) {
  std::vector<std::string_view> sorted;
  for (const std::string& log : logs) {
    if (IsLog(log, kOfEntryLog)) sorted.push_back(log);
  }
  std::ranges::stable_sort(sorted, {}, FirstOf);
  return sorted;
}

// From the number that the first log was begun with on, unless the hive has been stored with a
// later one since, each with the number behind the one before, over both logs.
void ApplyEntries(std::string& hive, std::span<const std::string_view> logs, size_t most_bins) {
  const uint32_t stored = NumberAt(hive, kSecondSequence);
  std::optional<uint32_t> next;
  for (const std::string_view log : logs) {
    uint32_t expected = next.value_or(FirstOf(log));
    if (expected < stored) continue;
    for (const Entry& entry : EntriesOf(log)) {
      if (entry.sequence != expected) break;
      ApplyEntry(hive, entry, most_bins);
      next = ++expected;
    }
  }
}

uint64_t WrittenAt(std::string_view hive) {
  return LongNumberAt(hive, HasSoundHeader(hive) ? kWritten : kPage + kBinWritten);
}

// Whether a log holds the pages of just the writing that the hive did not end.
bool IsVectorLogOf(std::string_view log, std::string_view hive) {
  const bool is_log = IsLog(log, kOfVectorLog) || IsLog(log, kOfOldVectorLog);
  return is_log && LongNumberAt(log, kWritten) == WrittenAt(hive) &&
         log.substr(kSector, 4) == "DIRT";
}

// A bit tells of each sector behind the header whether the log has it; they follow in order.
void ApplyVector(std::string& hive, std::string_view log) {
  const uint32_t bins_length = NumberAt(log, kBinsLength);
  const size_t vector = kSector + 4, sectors = bins_length / kSector;
  size_t from = (vector + sectors / 8 + kSector - 1) / kSector * kSector;
  Grow(hive, bins_length, hive.size() + log.size());
  for (size_t sector = 0; sector < sectors; ++sector) {
    if ((NumberAt(log, vector + sector / 8, 1) >> sector % 8 & 1) == 0) continue;
    if (from + kSector > log.size()) throw UnsoundHive();
    hive.replace(kPage + sector * kSector, kSector, log.substr(from, kSector));
    from += kSector;
  }
  hive.replace(0, kSector, log.substr(0, kSector));
  SetHeader(hive, NumberAt(log, kSecondSequence), bins_length);
}

// A broken header comes from the log that was begun last, which alone counts then.
std::string WithHeaderOf(const std::string& hive, std::string_view log) {
  std::string repaired = hive;
  repaired.replace(0, kSector, log, 0, kSector);
  PutNumber(repaired, kFileType, kOfHive);
  return repaired;
}

std::string Replayed(const std::string& hive, const std::vector<std::string>& logs) {
  for (const std::string& log : logs) {
    if (!IsVectorLogOf(log, hive)) continue;
    std::string replayed = hive;
    ApplyVector(replayed, log);
    return replayed;
  }
  const std::vector<std::string_view> sorted = EntryLogs(logs);
  if (sorted.empty()) throw UnsoundHive();
  const bool has_header = HasSoundHeader(hive);
  std::string replayed = has_header ? hive : WithHeaderOf(hive, sorted.back());
  const std::span<const std::string_view> all(sorted);
  ApplyEntries(replayed, has_header ? all : all.last(1), MostBins(hive, logs));
  return replayed;
}

// Whether the logs of a hive that was closed properly hold nothing that it has not got.
bool HasAll(const std::string& hive, const std::vector<std::string>& logs) {
  const uint32_t stored = NumberAt(hive, kSecondSequence);
  std::string replayed = hive;
  const size_t most_bins = MostBins(hive, logs);
  for (const std::string_view log : EntryLogs(logs)) {
    for (const Entry& entry : EntriesOf(log)) {
      if (entry.sequence >= stored) ApplyEntry(replayed, entry, most_bins);
    }
  }
  return std::string_view(replayed).substr(kPage) == std::string_view(hive).substr(kPage);
}

}  // namespace

HiveLogs ReplayLogs(std::string& hive, const std::vector<std::string>& logs) {
  try {
    if (hive.size() < kPage) return HiveLogs::kUnfit;
    if (IsClosedHive(hive)) return HasAll(hive, logs) ? HiveLogs::kNothingNew : HiveLogs::kUnfit;
    std::string replayed = Replayed(hive, logs);
    if (!IsClosedHive(replayed) || !HasSoundBins(replayed)) return HiveLogs::kUnfit;
    hive = std::move(replayed);
    return HiveLogs::kReplayed;
  } catch (const UnsoundHive&) {
    return HiveLogs::kUnfit;
  }
}

bool IsClosedHive(std::string_view header) {
  return HasSoundHeader(header) &&
         NumberAt(header, kFirstSequence) == NumberAt(header, kSecondSequence);
}

bool MayConcern(std::string_view hive_header, const std::function<std::string(uint64_t)>& read) {
  const std::string header = read(0);
  if (!HasSoundHeader(header)) return false;  // no log
  if (!IsClosedHive(hive_header)) return true;
  if (!IsLog(header, kOfEntryLog)) return false;
  const uint32_t first = NumberAt(hive_header, kSecondSequence);
  for (uint64_t at = kSector;;) {
    const std::string entry = read(at);
    if (entry.size() < kSector || !entry.starts_with("HvLE")) return false;
    if (NumberAt(entry, kEntrySequence) >= first) return true;
    const size_t size = NumberAt(entry, kEntrySize);
    if (size < kSector || size % kSector != 0) return false;
    at += size;
  }
}

}  // namespace quellix
