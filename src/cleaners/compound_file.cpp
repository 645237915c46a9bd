#include "cleaners/compound_file.h"

#include <cstdint>
#include <vector>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kSignature = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr size_t kHeaderSize = 512, kEntrySize = 128, kMiniSector = 64;
constexpr uint32_t kLastSector = 0xFFFFFFFA, kEndOfChain = 0xFFFFFFFE, kFree = 0xFFFFFFFF;

// Of the header.
constexpr size_t kMajorVersion = 26, kSectorShift = 30, kMiniSectorShift = 32, kFirstFolder = 48,
                 kMiniLimit = 56, kFirstMiniTable = 60, kFirstMoreTables = 68, kTables = 76;
// Of a directory entry.
constexpr size_t kNameLength = 64, kType = 66, kFirstOfStream = 116, kStreamSize = 120;
constexpr char kStream = 2, kRoot = 5;

[[noreturn]] void Refuse() {
  throw Error(Error::Kind::kOther, Say("It is no compound file, or damaged."));
}

// A number of 1 to 8 bytes, low byte first.
uint64_t NumberAt(std::string_view bytes, size_t at, size_t size) {
  if (at > bytes.size() || size > bytes.size() - at) Refuse();
  uint64_t number = 0;
  for (size_t i = size; i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes[at + i]);
  return number;
}

uint32_t Word(std::string_view bytes, size_t at) {
  return static_cast<uint32_t>(NumberAt(bytes, at, 4));
}

using Table = std::vector<uint32_t>;  // which sector follows each

class CompoundFile {
 public:
  explicit CompoundFile(std::string_view file) : file_(file) {
    if (file.size() < kHeaderSize || !file.starts_with(kSignature)) Refuse();
    const uint64_t version = NumberAt(file, kMajorVersion, 2);
    const uint64_t shift = NumberAt(file, kSectorShift, 2);
    const bool fits = (version == 3 && shift == 9) || (version == 4 && shift == 12);
    if (!fits || NumberAt(file, kMiniSectorShift, 2) != 6) Refuse();
    sector_ = size_t{1} << shift;
    size_bytes_ = version == 3 ? 4 : 8;
    ReadTable();
    folder_ = Chain(Word(file, kFirstFolder));
    if (folder_.size() < kEntrySize || folder_[kType] != kRoot) Refuse();
  }

  std::optional<std::string> Read(std::string_view name) const {
    const std::string wanted = ToUtf16Bytes(name) + std::string(2, '\0');
    std::optional<std::string> found;
    for (size_t at = 0; at + kEntrySize <= folder_.size(); at += kEntrySize) {
      const std::string_view entry = std::string_view(folder_).substr(at, kEntrySize);
      const bool is_wanted = entry[kType] == kStream && entry.starts_with(wanted) &&
                             NumberAt(entry, kNameLength, 2) == wanted.size();
      if (is_wanted && found) Refuse();
      if (is_wanted) found = Stream(entry);
    }
    return found;
  }

 private:
  // "" behind the end; the last one may be cut off.
  std::string_view Sector(uint32_t number) const {
    const uint64_t at = (uint64_t{number} + 1) * sector_;
    return at < file_.size() ? file_.substr(at, sector_) : std::string_view();
  }

  size_t SectorCount() const { return file_.size() / sector_; }

  void AddToTable(uint32_t sector) {
    const std::string_view numbers = Sector(sector);
    if (numbers.size() != sector_ || table_.size() > file_.size()) Refuse();
    for (size_t at = 0; at < sector_; at += 4) table_.push_back(Word(numbers, at));
  }

  // The header names the first sectors of the table; more names stand in a chain of sectors.
  void ReadTable() {
    for (size_t at = kTables; at < kHeaderSize; at += 4) {
      if (const uint32_t sector = Word(file_, at); sector != kFree) AddToTable(sector);
    }
    uint32_t more = Word(file_, kFirstMoreTables);
    for (size_t steps = 0; more <= kLastSector; ++steps) {
      const std::string_view names = Sector(more);
      if (names.size() != sector_ || steps > SectorCount()) Refuse();
      for (size_t at = 0; at < sector_ - 4; at += 4) {
        if (const uint32_t sector = Word(names, at); sector != kFree) AddToTable(sector);
      }
      more = Word(names, sector_ - 4);
    }
  }

  std::string Chain(uint32_t first) const {
    std::string bytes;
    for (uint32_t at = first; at != kEndOfChain; at = table_[at]) {
      const std::string_view part = Sector(at);
      if (at >= table_.size() || part.empty() || bytes.size() > file_.size()) Refuse();
      bytes += part;
    }
    return bytes;
  }

  // Short streams lie in pieces of one stream, that of the root, with a table of their own.
  std::string MiniChain(uint32_t first) const {
    const std::string table = Chain(Word(file_, kFirstMiniTable));
    const std::string all = Chain(Word(folder_, kFirstOfStream));
    std::string bytes;
    for (uint32_t at = first; at != kEndOfChain; at = Word(table, size_t{at} * 4)) {
      if (uint64_t{at} * kMiniSector >= all.size() || bytes.size() > all.size()) Refuse();
      bytes.append(all, at * kMiniSector, kMiniSector);
    }
    return bytes;
  }

  std::string Stream(std::string_view entry) const {
    const uint64_t size = NumberAt(entry, kStreamSize, size_bytes_);
    if (size == 0) return {};
    const uint32_t first = Word(entry, kFirstOfStream);
    std::string bytes = size < Word(file_, kMiniLimit) ? MiniChain(first) : Chain(first);
    if (bytes.size() < size) Refuse();
    bytes.resize(size);
    return bytes;
  }

  std::string_view file_;
  size_t sector_ = 0;      // bytes
  size_t size_bytes_ = 0;  // of the size of a stream
  Table table_;
  std::string folder_;  // all entries
};

}  // namespace

std::optional<std::string> ReadStream(std::string_view file, std::string_view name) {
  return CompoundFile(file).Read(name);
}

}  // namespace quellix
