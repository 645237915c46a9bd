#include "platform/volume/hive_check.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <unordered_set>

#include "platform/volume/hive_format.h"

namespace quellix {
namespace {

using namespace hive_format;  // NOLINT(google-build-using-namespace): the places of one format

constexpr size_t kAlignment = 4;  // of what is found, though Windows makes all cells wider

void Require(bool sound) {
  if (!sound) throw UnsoundHive();
}

// Calls `visit` with the place and the end of each bin.
template <class Visit>
void ForEachBin(std::string_view bytes, const Visit& visit) {
  Require(bytes.size() >= kPage);
  const size_t length = NumberAt(bytes, kBinsLength);
  Require(length <= bytes.size() - kPage);
  for (size_t at = kPage; at < kPage + length;) {
    const size_t size = NumberAt(bytes, at + kBinSize);
    Require(bytes.substr(at, 4) == "hbin" && size >= kPage && size % kPage == 0 &&
            size <= kPage + length - at);
    visit(at, at + size);
    at += size;
  }
}

class Check {
 public:
  explicit Check(std::string_view bytes) : bytes_(bytes), cells_(bytes.size() / kAlignment) {}

  void Run() {
    ForEachBin(bytes_, [this](size_t at, size_t end) { ReadCells(at + kBinHeader, end); });
    open_.push_back({Number(kRootKey), kNone});
    while (!open_.empty()) {
      const OpenKey key = open_.back();
      open_.pop_back();
      TakeKey(key);
    }
    std::ranges::sort(reached_, {}, &HiveCell::at);
  }
  std::vector<HiveCell> reached() { return std::move(reached_); }
  std::vector<HiveStray> Strays() {
    for (HiveStray& stray : strays_) stray.cell = TakeLeftOver(Number(stray.owner));
    return std::move(strays_);
  }

 private:
  enum class Cell : uint8_t { kFree, kUsed, kTaken };
  struct OpenKey {
    uint32_t place, parent;
  };

  uint32_t Number(size_t at, size_t bytes = 4) const { return NumberAt(bytes_, at, bytes); }
  std::string_view Mark(size_t at) const { return bytes_.substr(at + kMark, 2); }

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
    Require(cells_[at / kAlignment] != Cell::kFree && SizeOf(at) >= length);
    return at;
  }
  size_t SizeOf(size_t cell) const { return kNone - Number(cell) + 1; }

  // The same of a cell that nothing else has taken.
  size_t Take(uint32_t place, size_t length) {
    const size_t at = CellAt(place, length);
    Require(cells_[at / kAlignment] == Cell::kUsed);
    cells_[at / kAlignment] = Cell::kTaken;
    reached_.push_back({at, SizeOf(at), length});
    return at;
  }
  // More of the cell taken last is in use than was known.
  void Use(size_t length) {
    Require(reached_.back().size >= length);
    reached_.back().used = length;
  }

  // The cell that a stray number names, when nothing has taken it; else 0.
  size_t TakeLeftOver(uint32_t place) {
    const size_t at = kPage + size_t{place};
    const bool is_cell = at % kAlignment == 0 && at / kAlignment < cells_.size();
    if (!is_cell || cells_[at / kAlignment] != Cell::kUsed) return 0;
    cells_[at / kAlignment] = Cell::kTaken;
    return at;
  }
  void NoteStray(size_t owner) {
    if (Number(owner) != kNone) strays_.push_back({owner, 0});
  }

  void TakeKey(const OpenKey& open) {
    const size_t key = Take(open.place, kKeyName);
    Require(Mark(key) == "nk");
    Require(open.parent == kNone || Number(key + kKeyParent) == open.parent);
    Use(kKeyName + Number(key + kKeyNameLength, 2));
    const uint32_t sub_keys = Number(key + kKeySubKeyCount);
    if (sub_keys == 0) {
      NoteStray(key + kKeySubKeys);
    } else {
      Require(TakeSubKeys(Number(key + kKeySubKeys), open.place, true) == sub_keys);
    }
    TakeValues(key);
    const uint32_t name = Number(key + kKeyClass), length = Number(key + kKeyClassLength, 2);
    if (length == 0) {
      NoteStray(key + kKeyClass);
    } else if (name != kNone) {
      Take(name, kMark + length);
    }
    TakeSecurity(Number(key + kKeySecurity));
  }

  // A list of keys, or of such lists; how many keys those are.
  size_t TakeSubKeys(uint32_t place, uint32_t parent, bool may_hold_lists) {
    const size_t list = Take(place, kListEntries);
    const std::string_view mark = Mark(list);
    const bool holds_lists = mark == "ri";
    Require(mark == "lf" || mark == "lh" || mark == "li" || (holds_lists && may_hold_lists));
    const size_t count = Number(list + kListCount, 2), step = mark[1] == 'i' ? 4 : 8;
    Use(kListEntries + count * step);
    size_t keys = holds_lists ? 0 : count;
    for (size_t i = 0; i < count; ++i) {
      const uint32_t entry = Number(list + kListEntries + i * step);
      if (holds_lists) {
        keys += TakeSubKeys(entry, parent, false);
      } else {
        open_.push_back({entry, parent});
      }
    }
    return keys;
  }

  void TakeValues(size_t key) {
    const size_t count = ValueCountAt(bytes_, key);
    const bool is_predefined = (Number(key + kKeyFlags, 2) & kKeyIsPredefined) != 0;
    if (count == 0) return is_predefined ? void() : NoteStray(key + kKeyValues);
    const size_t list = Take(Number(key + kKeyValues), kMark + count * 4);
    for (size_t i = 0; i < count; ++i) TakeValue(Number(list + kMark + i * 4));
  }

  void TakeValue(uint32_t place) {
    const size_t value = Take(place, kValueName);
    Require(Mark(value) == "vk");
    Use(kValueName + Number(value + kValueNameLength, 2));
    const uint32_t size = Number(value + kValueDataSize);
    if ((size & kDataInline) != 0) return;
    if (size == 0) return NoteStray(value + kValueData);
    const uint32_t data = Number(value + kValueData);
    const bool has_pieces = size > kMostInPiece && Number(kMinorVersion) >= kFirstVersionWithPieces;
    has_pieces ? TakePieces(data, size) : void(Take(data, kMark + size_t{size}));
  }

  void TakePieces(uint32_t place, size_t size) {
    const size_t record = Take(place, kPiecesLength);
    Require(Mark(record) == "db");
    const size_t count = Number(record + kPieceCount, 2);
    const size_t list = Take(Number(record + kPieceList), kMark + 4 * count);
    for (size_t i = 0; i < count; ++i) {
      const size_t piece = std::min(size, kMostInPiece);
      Take(Number(list + kMark + 4 * i), kMark + piece);
      size -= piece;
    }
    Require(size == 0);
  }

  // A descriptor serves many keys; all of them are in a ring.
  void TakeSecurity(uint32_t place) {
    while (place != kNone && security_.insert(place).second) {
      const size_t descriptor = Take(place, kSecurityDescriptor);
      Require(Mark(descriptor) == "sk");
      Use(kSecurityDescriptor + size_t{Number(descriptor + kSecuritySize)});
      for (const size_t neighbor : {kSecurityBefore, kSecurityAfter}) {
        Require(Mark(CellAt(Number(descriptor + neighbor), kSecurityDescriptor)) == "sk");
      }
      place = Number(descriptor + kSecurityAfter);
    }
  }

  std::string_view bytes_;
  std::vector<Cell> cells_;    // by place in the file, in steps of the alignment
  std::vector<OpenKey> open_;  // keys that are still to be looked at
  std::unordered_set<uint32_t> security_;
  std::vector<HiveCell> reached_;
  std::vector<HiveStray> strays_;
};

}  // namespace

std::vector<HiveCell> ReachedCells(std::string_view bytes) {
  Check check(bytes);
  check.Run();
  return check.reached();
}

std::vector<HiveStray> StraysOf(std::string_view bytes) {
  Check check(bytes);
  check.Run();
  return check.Strays();
}

bool IsSoundHive(std::string_view bytes) {
  try {
    ReachedCells(bytes);
    return true;
  } catch (const UnsoundHive&) {
    return false;
  }
}

bool HasSoundBins(std::string_view bytes) {
  try {
    ForEachBin(bytes, [&bytes](size_t at, size_t) {
      Require(NumberAt(bytes, at + kBinPlace) == at - kPage);
    });
    return true;
  } catch (const UnsoundHive&) {
    return false;
  }
}

}  // namespace quellix
