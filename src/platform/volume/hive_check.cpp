#include "platform/volume/hive_check.h"

#include <cstdint>
#include <cstdlib>
#include <unordered_set>
#include <vector>

namespace quellix {
namespace {

// The file format: a header of one page, then bins of pages with a header of 32 bytes and cells.
// A cell begins with its size, negative while it is in use; other cells name it by its place behind
// the file's header. All numbers have their lowest byte first.
constexpr size_t kPage = 0x1000, kBinsLength = 0x28, kBinSize = 8, kBinHeader = 0x20;
constexpr size_t kAlignment = 4;
constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr size_t kRootKey = 0x24;

// Places in a cell, from its size on.
constexpr size_t kKeySubKeyCount = 24, kKeySubKeys = 32, kKeyValueCount = 40, kKeyValues = 44,
                 kKeySecurity = 48, kKeyLength = 80;
constexpr size_t kValueDataSize = 8, kValueData = 12, kValueLength = 24;
constexpr size_t kListCount = 6, kListEntries = 8;
constexpr size_t kSecurityBefore = 8, kSecurityAfter = 12, kSecurityLength = 24;
constexpr uint32_t kDataInline = 0x80000000;

struct Unsound {};

void Require(bool sound) {
  if (!sound) throw Unsound();
}

class Check {
 public:
  explicit Check(std::string_view bytes) : bytes_(bytes), cells_(bytes.size() / kAlignment) {}

  void Run() {
    Require(bytes_.size() >= kPage);
    ReadBins();
    open_.push_back(Number(kRootKey));
    while (!open_.empty()) {
      const uint32_t key = open_.back();
      open_.pop_back();
      TakeKey(key);
    }
  }

 private:
  enum class Cell : uint8_t { kFree, kUsed, kTaken };

  uint32_t Number(size_t at, size_t bytes = 4) const {
    Require(at <= bytes_.size() && bytes_.size() - at >= bytes);
    uint32_t number = 0;
    for (size_t i = bytes; i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes_[at + i]);
    return number;
  }
  std::string_view Mark(size_t at) const { return bytes_.substr(at + 4, 2); }

  void ReadBins() {
    const size_t length = Number(kBinsLength);
    Require(length <= bytes_.size() - kPage);
    for (size_t at = kPage; at < kPage + length;) {
      const size_t size = Number(at + kBinSize);
      Require(bytes_.substr(at, 4) == "hbin" && size >= kPage && size % kPage == 0 &&
              size <= kPage + length - at);
      ReadCells(at + kBinHeader, at + size);
      at += size;
    }
  }

  void ReadCells(size_t at, size_t end) {
    while (at < end) {
      const int64_t stored = static_cast<int32_t>(Number(at));
      const auto size = static_cast<size_t>(std::abs(stored));
      Require(size > kAlignment && size % kAlignment == 0 && size <= end - at);
      if (stored < 0) cells_[at / kAlignment] = Cell::kUsed;
      at += size;
    }
  }

  // The place in the file of a cell in use with room for `length` bytes.
  size_t CellAt(uint32_t place, size_t length) const {
    const size_t at = kPage + size_t{place};
    Require(at % kAlignment == 0 && at / kAlignment < cells_.size());
    Require(cells_[at / kAlignment] != Cell::kFree && kNone - Number(at) + 1 >= length);
    return at;
  }

  // The same of a cell that nothing else has taken.
  size_t Take(uint32_t place, size_t length) {
    const size_t at = CellAt(place, length);
    Require(cells_[at / kAlignment] == Cell::kUsed);
    cells_[at / kAlignment] = Cell::kTaken;
    return at;
  }

  void TakeKey(uint32_t place) {
    const size_t key = Take(place, kKeyLength);
    Require(Mark(key) == "nk");
    if (Number(key + kKeySubKeyCount) != 0) TakeSubKeys(Number(key + kKeySubKeys), true);
    if (Number(key + kKeyValueCount) != 0) {
      TakeValues(Number(key + kKeyValues), Number(key + kKeyValueCount));
    }
    TakeSecurity(Number(key + kKeySecurity));
  }

  // A list of keys, or of such lists.
  void TakeSubKeys(uint32_t place, bool may_hold_lists) {
    const size_t list = Take(place, kListEntries);
    const std::string_view mark = Mark(list);
    const bool holds_lists = mark == "ri";
    Require(mark == "lf" || mark == "lh" || mark == "li" || (holds_lists && may_hold_lists));
    const size_t count = Number(list + kListCount, 2), step = mark[1] == 'i' ? 4 : 8;
    CellAt(place, kListEntries + count * step);
    for (size_t i = 0; i < count; ++i) {
      const uint32_t entry = Number(list + kListEntries + i * step);
      holds_lists ? TakeSubKeys(entry, false) : open_.push_back(entry);
    }
  }

  void TakeValues(uint32_t place, uint32_t count) {
    const size_t list = Take(place, 4 + size_t{count} * 4);
    for (size_t i = 1; i <= count; ++i) TakeValue(Number(list + i * 4));
  }

  void TakeValue(uint32_t place) {
    const size_t value = Take(place, kValueLength);
    Require(Mark(value) == "vk");
    if ((Number(value + kValueDataSize) & kDataInline) == 0) Take(Number(value + kValueData), 4);
  }

  // A descriptor serves many keys; all of them are in a ring.
  void TakeSecurity(uint32_t place) {
    if (place == kNone || !security_.insert(place).second) return;
    const size_t descriptor = Take(place, kSecurityLength);
    Require(Mark(descriptor) == "sk");
    for (const size_t neighbor : {kSecurityBefore, kSecurityAfter}) {
      Require(Mark(CellAt(Number(descriptor + neighbor), kSecurityLength)) == "sk");
    }
  }

  std::string_view bytes_;
  std::vector<Cell> cells_;     // by place in the file, in steps of the alignment
  std::vector<uint32_t> open_;  // keys that are still to be looked at
  std::unordered_set<uint32_t> security_;
};

}  // namespace

bool IsSoundHive(std::string_view bytes) {
  try {
    Check(bytes).Run();
    return true;
  } catch (const Unsound&) {
    return false;
  }
}

}  // namespace quellix
