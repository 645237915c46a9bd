#include "platform/volume/hive_editor.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"

namespace quellix {
namespace {

using namespace hive_format;  // NOLINT(google-build-using-namespace): the places of one format

constexpr size_t kSmallestCell = 8, kLargestBins = INT32_MAX;
constexpr size_t kMostInList = UINT16_MAX;
constexpr uint32_t kFirstVersionWithHashes = 5;

size_t RoundUp(size_t size, size_t step) { return (size + step - 1) / step * step; }

// A name as it is stored: a byte a character where all have room in one.
struct StoredName {
  std::string bytes;
  bool is_plain;
};

StoredName Store(std::string_view name) {
  const std::u16string wide = ToUtf16(name);
  if (std::ranges::any_of(wide, [](char16_t c) { return c > 0xFF; }))
    return {ToUtf16Bytes(name), false};
  return {std::string(wide.begin(), wide.end()), true};
}

std::u16string Upper(std::u16string name) {
  for (char16_t& c : name) {
    const char32_t upper = UpCase(static_cast<char32_t>(c));
    if (upper <= 0xFFFF) c = static_cast<char16_t>(upper);
  }
  return name;
}

// What a list of sub-keys keeps of a name beside the key's place.
uint32_t Hint(std::string_view mark, std::string_view name) {
  const std::u16string wide = ToUtf16(name);
  uint32_t hint = 0;
  if (mark == "lh") {
    for (const char16_t c : Upper(wide)) hint = 37 * hint + c;
    return hint;
  }
  for (size_t i = 0; i < 4 && i < wide.size(); ++i) {
    if (wide[i] > 0xFF) return 0;  // none
    hint |= uint32_t{wide[i]} << (8 * i);
  }
  return hint;
}

size_t StepOf(std::string_view mark) { return mark[1] == 'i' ? 4 : 8; }

}  // namespace

HiveEditor::HiveEditor(std::string bytes) : bytes_(std::move(bytes)) {
  const std::vector<HiveStray> strays = StraysOf(bytes_);
  ReadFreeCells();
  for (const HiveStray& stray : strays) {
    if (stray.cell != 0) Free(stray.cell);
    Put(stray.owner, kNone);
  }
}

uint32_t HiveEditor::Number(size_t at, size_t size) const { return NumberAt(bytes_, at, size); }
void HiveEditor::Put(size_t at, uint64_t number, size_t size) {
  PutNumber(bytes_, at, number, size);
}
void HiveEditor::Raise(size_t at, size_t number, size_t size) {
  if (Number(at, size) < number) Put(at, number, size);
}
std::string_view HiveEditor::Mark(size_t cell) const {
  return std::string_view(bytes_).substr(cell + kMark, 2);
}
// The place in the file of the cell that a number names.
size_t HiveEditor::CellOf(size_t at) const { return kPage + size_t{Number(at)}; }
size_t HiveEditor::SizeOf(size_t cell) const {
  return static_cast<size_t>(std::abs(int64_t{static_cast<int32_t>(Number(cell))}));
}

// Free neighbors are joined while they are read.
void HiveEditor::ReadFreeCells() {
  const size_t end = kPage + Number(kBinsLength);
  for (size_t bin = kPage; bin < end;) {
    const size_t bin_end = bin + Number(bin + kBinSize);
    for (size_t cell = bin + kBinHeader, size; cell < bin_end; cell += size) {
      size = SizeOf(cell);
      if (static_cast<int32_t>(Number(cell)) > 0) NoteFree(cell, size);
    }
    bin = bin_end;
  }
}

// Of neighbors, which are zero, only the size is overwritten.
void HiveEditor::NoteFree(size_t cell, size_t size) {
  std::fill_n(bytes_.begin() + static_cast<ptrdiff_t>(cell), size, '\0');
  const auto next = free_.lower_bound(cell);
  if (next != free_.end() && cell + size == next->first) {
    size += next->second;
    Put(next->first, 0);
    ForgetFree(next->first, next->second);
  }
  const auto behind = free_.lower_bound(cell);
  if (behind != free_.begin()) {
    const auto [before, before_size] = *std::prev(behind);
    if (before + before_size == cell) {
      cell = before;
      size += before_size;
      ForgetFree(before, before_size);
    }
  }
  free_[cell] = size;
  free_by_size_.insert({size, cell});
  Put(cell, size);
}

void HiveEditor::ForgetFree(size_t cell, size_t size) {
  free_.erase(cell);
  free_by_size_.erase({size, cell});
}

// With room for a cell of `length` bytes.
void HiveEditor::AddBin(size_t length) {
  const size_t bins = Number(kBinsLength), size = RoundUp(length + kBinHeader, kPage);
  if (bins + size > kLargestBins) {
    throw Error(Error::Kind::kFull, "The registry hive cannot grow any more.");
  }
  const size_t bin = kPage + bins;
  bytes_.resize(std::max(bytes_.size(), bin + size));
  std::fill_n(bytes_.begin() + static_cast<ptrdiff_t>(bin), size, '\0');
  bytes_.replace(bin, 4, "hbin");
  Put(bin + kBinPlace, bins);
  Put(bin + kBinSize, size);
  Put(kBinsLength, bins + size);
  NoteFree(bin + kBinHeader, size - kBinHeader);
}

// `length` counts the cell's own size, which is set; all else in it is zero.
size_t HiveEditor::Allocate(size_t length) {
  length = RoundUp(length, kCellAlignment);
  auto found = free_by_size_.lower_bound({length, 0});
  if (found == free_by_size_.end()) {
    AddBin(length);
    found = free_by_size_.lower_bound({length, 0});
  }
  const auto [size, cell] = *found;
  ForgetFree(cell, size);
  const bool is_split = size - length >= kSmallestCell;
  if (is_split) NoteFree(cell + length, size - length);
  Put(cell, uint64_t{0} - (is_split ? length : size));
  return cell;
}

void HiveEditor::Clear(size_t cell) {
  const size_t size = SizeOf(cell);
  if (size > bytes_.size() - cell) throw UnsoundHive();
  std::fill_n(bytes_.begin() + static_cast<ptrdiff_t>(cell), size, '\0');
  Put(cell, size);
}

void HiveEditor::Free(size_t cell) {
  const size_t size = SizeOf(cell);
  if (size > bytes_.size() - cell) throw UnsoundHive();
  NoteFree(cell, size);
}

// A cell of `length` bytes that begins with `used` bytes of another, which is freed.
size_t HiveEditor::CopyOf(size_t cell, size_t used, size_t length) {
  const std::string content = bytes_.substr(cell + kMark, used - kMark);
  const size_t copy = Allocate(length);
  bytes_.replace(copy + kMark, content.size(), content);
  Free(cell);
  return copy;
}

// Makes a gap at a place in a cell of which `used` bytes mean something; the cell may move, and the
// number in the file that names it with it. Returns the cell.
size_t HiveEditor::Insert(size_t cell, size_t owner, size_t at, size_t used, size_t gap) {
  if (SizeOf(cell) < used + gap) {
    cell = CopyOf(cell, used, used + gap + used / 4);  // with room for more to come
    Put(owner, cell - kPage);
  }
  bytes_.replace(cell + at + gap, used - at, bytes_.substr(cell + at, used - at));
  return cell;
}

void HiveEditor::Remove(size_t cell, size_t at, size_t used, size_t gap) {
  bytes_.replace(cell + at, used - at,
                 bytes_.substr(cell + at + gap, used - at - gap) + std::string(gap, '\0'));
}

// Values

size_t HiveEditor::AddValue(size_t key, std::string_view name, const RegistryValue& value) {
  const StoredName stored = Store(name);
  const size_t cell = Allocate(kValueName + stored.bytes.size());
  bytes_.replace(cell + kMark, 2, "vk");
  Put(cell + kValueNameLength, stored.bytes.size(), 2);
  Put(cell + kValueFlags, stored.is_plain ? kValueHasPlainName : 0, 2);
  bytes_.replace(cell + kValueName, stored.bytes.size(), stored.bytes);
  Put(cell + kValueDataSize, kDataInline);
  const size_t count = Number(key + kKeyValueCount), used = kMark + 4 * count;
  if (count == 0) Put(key + kKeyValues, Allocate(used + 4) - kPage);
  const size_t list = Insert(CellOf(key + kKeyValues), key + kKeyValues, used, used, 4);
  Put(list + used, cell - kPage);
  Put(key + kKeyValueCount, count + 1);
  Raise(key + kKeyLongestValue, 2 * ToUtf16(name).size());
  ChangeValue(key, cell, value);
  return cell;
}

void HiveEditor::ChangeValue(size_t key, size_t cell, const RegistryValue& value) {
  FreeData(cell);
  StoreData(cell, value.bytes);
  Put(cell + kValueType, value.type);
  Raise(key + kKeyLargestData, value.bytes.size());
}

void HiveEditor::DeleteValue(size_t key, size_t cell) {
  const size_t count = Number(key + kKeyValueCount), list = CellOf(key + kKeyValues);
  size_t at = kMark;
  while (CellOf(list + at) != cell) at += 4;
  if (at >= kMark + 4 * count) throw UnsoundHive();
  FreeData(cell);
  Free(cell);
  Remove(list, at, kMark + 4 * count, 4);
  Put(key + kKeyValueCount, count - 1);
  if (count > 1) return;
  Free(list);
  Put(key + kKeyValues, kNone);
}

void HiveEditor::StoreData(size_t value, std::string_view bytes) {
  constexpr size_t kMostInline = 4;
  const bool is_inline = bytes.size() <= kMostInline;
  const bool has_pieces =
      bytes.size() > kMostInPiece && Number(kMinorVersion) >= kFirstVersionWithPieces;
  const size_t cell = is_inline ? 0 : has_pieces ? StorePieces(bytes) : StoreInCell(bytes);
  Put(value + kValueDataSize, bytes.size() | (is_inline ? kDataInline : 0));
  Put(value + kValueData, is_inline ? 0 : cell - kPage);
  if (is_inline) bytes_.replace(value + kValueData, bytes.size(), bytes);
}

size_t HiveEditor::StoreInCell(std::string_view bytes, size_t spare) {
  const size_t cell = Allocate(kMark + bytes.size() + spare);
  bytes_.replace(cell + kMark, bytes.size(), bytes);
  return cell;
}

// Each piece ends with room for a number: Windows' do, by their size, and hivex takes that as
// given.
size_t HiveEditor::StorePieces(std::string_view bytes) {
  constexpr size_t kSpare = 4;
  const size_t count = (bytes.size() + kMostInPiece - 1) / kMostInPiece;
  if (count > kMostInList) throw Error(Error::Kind::kOther, "The registry value is too large.");
  const size_t record = Allocate(kPiecesLength);
  bytes_.replace(record + kMark, 2, "db");
  Put(record + kPieceCount, count, 2);
  const size_t list = Allocate(kMark + 4 * count);
  Put(record + kPieceList, list - kPage);
  for (size_t i = 0; i < count; ++i) {
    const size_t piece = StoreInCell(bytes.substr(i * kMostInPiece, kMostInPiece), kSpare);
    Put(list + kMark + 4 * i, piece - kPage);
  }
  return record;
}

void HiveEditor::FreeData(size_t value) {
  const uint32_t size = Number(value + kValueDataSize);
  if ((size & kDataInline) != 0 || size == 0) return;
  const size_t data = CellOf(value + kValueData);
  if (size > kMostInPiece && Number(kMinorVersion) >= kFirstVersionWithPieces) {
    const size_t count = Number(data + kPieceCount, 2), list = CellOf(data + kPieceList);
    for (size_t i = 0; i < count; ++i) Free(CellOf(list + kMark + 4 * i));
    Free(list);
  }
  Free(data);
}

// Keys

std::u16string HiveEditor::UpperNameOf(size_t key) const {
  const std::string name = bytes_.substr(key + kKeyName, Number(key + kKeyNameLength, 2));
  if ((Number(key + kKeyFlags, 2) & kKeyHasPlainName) == 0)
    return Upper(ToUtf16(FromUtf16Bytes(name)));
  std::u16string wide;
  for (const char c : name) wide += static_cast<char16_t>(static_cast<unsigned char>(c));
  return Upper(wide);
}

// Where in one list a name belongs; the lists are sorted by upper case.
HiveEditor::ListPlace HiveEditor::PlaceIn(size_t owner, const std::u16string& upper_name) const {
  const size_t list = CellOf(owner), step = StepOf(Mark(list));
  size_t first = 0, last = Number(list + kListCount, 2);
  while (first < last) {
    const size_t middle = (first + last) / 2;
    const bool is_before = UpperNameOf(CellOf(list + kListEntries + middle * step)) < upper_name;
    (is_before ? first : last) = is_before ? middle + 1 : middle;
  }
  return {list, first, owner};
}

HiveEditor::ListPlace HiveEditor::PlaceFor(size_t parent, const std::u16string& upper_name) const {
  if (Number(parent + kKeySubKeyCount) == 0) return {};
  const size_t list = CellOf(parent + kKeySubKeys);
  if (Mark(list) != "ri") return PlaceIn(parent + kKeySubKeys, upper_name);
  ListPlace place;
  for (size_t i = 0; i < Number(list + kListCount, 2); ++i) {
    place = PlaceIn(list + kListEntries + 4 * i, upper_name);
    if (place.index < Number(place.list + kListCount, 2)) break;
  }
  return place;
}

void HiveEditor::AddToList(size_t parent, size_t key, std::string_view name) {
  const size_t count = Number(parent + kKeySubKeyCount);
  ListPlace place = PlaceFor(parent, Upper(ToUtf16(name)));
  if (place.list == 0) {
    place = {Allocate(kListEntries + 8), 0, parent + kKeySubKeys};
    bytes_.replace(place.list + kMark, 2,
                   Number(kMinorVersion) >= kFirstVersionWithHashes ? "lh" : "lf");
    Put(place.owner, place.list - kPage);
  }
  const std::string mark(Mark(place.list));
  const size_t step = StepOf(mark), in_list = Number(place.list + kListCount, 2);
  if (in_list == kMostInList) {
    throw Error(Error::Kind::kFull, "The registry key cannot take more sub-keys.");
  }
  const size_t at = kListEntries + place.index * step;
  const size_t list = Insert(place.list, place.owner, at, kListEntries + in_list * step, step);
  Put(list + at, key - kPage);
  if (step == 8) Put(list + at + 4, Hint(mark, name));
  Put(list + kListCount, in_list + 1, 2);
  Put(parent + kKeySubKeyCount, count + 1);
}

int64_t HiveEditor::LastWrite(size_t key) const {
  const uint64_t high = Number(key + kKeyWritten + 4);
  return static_cast<int64_t>(high << 32 | Number(key + kKeyWritten));
}

size_t HiveEditor::CreateSubKey(size_t parent, std::string_view name, int64_t now) {
  const StoredName stored = Store(name);
  const size_t key = Allocate(kKeyName + stored.bytes.size());
  bytes_.replace(key + kMark, 2, "nk");
  Put(key + kKeyFlags, stored.is_plain ? kKeyHasPlainName : 0, 2);
  Put(key + kKeyWritten, static_cast<uint64_t>(now), 8);
  Put(key + kKeyParent, parent - kPage);
  for (const size_t none : {kKeySubKeys, kKeyVolatileSubKeys, kKeyValues, kKeyClass}) {
    Put(key + none, kNone);
  }
  Put(key + kKeyNameLength, stored.bytes.size(), 2);
  bytes_.replace(key + kKeyName, stored.bytes.size(), stored.bytes);
  const uint32_t security = Number(parent + kKeySecurity);
  Put(key + kKeySecurity, security);
  const size_t users = kPage + size_t{security} + kSecurityUsers;
  if (security != kNone) Put(users, Number(users) + 1);
  AddToList(parent, key, name);
  Raise(parent + kKeyLongestSubKey, 2 * ToUtf16(name).size(), 2);  // flags stand above
  return key;
}

bool HiveEditor::HasSubKeys(size_t key) const { return Number(key + kKeySubKeyCount) != 0; }

HiveEditor::ListPlace HiveEditor::Find(size_t owner, uint32_t key) const {
  const size_t list = CellOf(owner), step = StepOf(Mark(list));
  const size_t count = Number(list + kListCount, 2);
  for (size_t i = 0; i < count; ++i) {
    const size_t entry = list + kListEntries + i * step;
    if (Mark(list) == "ri") {
      const ListPlace place = Find(entry, key);
      if (place.list != 0) return place;
    } else if (Number(entry) == key) {
      return {list, i, owner};
    }
  }
  return {};
}

void HiveEditor::RemoveFromList(size_t parent, size_t key) {
  const ListPlace place = Find(parent + kKeySubKeys, static_cast<uint32_t>(key - kPage));
  if (place.list == 0) throw UnsoundHive();
  const size_t step = StepOf(Mark(place.list)), count = Number(place.list + kListCount, 2);
  Remove(place.list, kListEntries + place.index * step, kListEntries + count * step, step);
  Put(place.list + kListCount, count - 1, 2);
  Put(parent + kKeySubKeyCount, Number(parent + kKeySubKeyCount) - 1);
  if (count == 1) DropList(parent, place);
}

// An empty list goes, with its place in the list of lists, and that as well when it was the last.
void HiveEditor::DropList(size_t parent, const ListPlace& place) {
  Free(place.list);
  if (place.owner != parent + kKeySubKeys) {
    const size_t lists = CellOf(parent + kKeySubKeys), count = Number(lists + kListCount, 2);
    Remove(lists, place.owner - lists, kListEntries + 4 * count, 4);
    Put(lists + kListCount, count - 1, 2);
    if (count > 1) return;
    Free(lists);
  }
  Put(parent + kKeySubKeys, kNone);
}

// The last user of a descriptor takes it along, out of the ring of all.
void HiveEditor::ReleaseSecurity(size_t key) {
  if (Number(key + kKeySecurity) == kNone) return;
  const size_t security = CellOf(key + kKeySecurity);
  const uint32_t users = Number(security + kSecurityUsers);
  if (users > 1) return Put(security + kSecurityUsers, users - 1);
  const uint32_t before = Number(security + kSecurityBefore);
  const uint32_t after = Number(security + kSecurityAfter);
  Put(kPage + size_t{before} + kSecurityAfter, after);
  Put(kPage + size_t{after} + kSecurityBefore, before);
  Free(security);
}

void HiveEditor::FreeValues(size_t key) {
  const size_t count = ValueCountAt(bytes_, key);
  if (count == 0) return;
  const size_t list = CellOf(key + kKeyValues);
  for (size_t i = 0; i < count; ++i) {
    const size_t value = CellOf(list + kMark + 4 * i);
    FreeData(value);
    Free(value);
  }
  Free(list);
}

void HiveEditor::DeleteKey(size_t key) {
  const size_t parent = CellOf(key + kKeyParent);
  RemoveFromList(parent, key);
  FreeValues(key);
  const bool has_class = Number(key + kKeyClass) != kNone && Number(key + kKeyClassLength, 2) != 0;
  if (has_class) Free(CellOf(key + kKeyClass));
  ReleaseSecurity(key);
  Clear(key);
}

const std::string& HiveEditor::Finish(int64_t now) {
  for (const HiveCell& cell : ReachedCells(bytes_)) {
    std::fill(bytes_.begin() + static_cast<ptrdiff_t>(cell.at + cell.used),
              bytes_.begin() + static_cast<ptrdiff_t>(cell.at + cell.size), '\0');
  }
  const size_t end = kPage + Number(kBinsLength);
  std::fill(bytes_.begin() + static_cast<ptrdiff_t>(end), bytes_.end(), '\0');
  const uint32_t sequence = std::max(Number(kFirstSequence), Number(kSecondSequence)) + 1;
  Put(kFirstSequence, sequence);
  Put(kSecondSequence, sequence);
  Put(kWritten, static_cast<uint64_t>(now), 8);
  Put(kPage + kBinWritten, static_cast<uint64_t>(now), 8);
  Put(kChecksum, HeaderChecksum(bytes_));
  return bytes_;
}

}  // namespace quellix
