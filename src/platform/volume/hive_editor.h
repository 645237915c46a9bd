#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "platform/registry.h"

namespace quellix {

// Changes the bytes of a registry hive in place. What is deleted is overwritten at once. Keys and
// values are known by the place of their cell in the file, which stays theirs; the place of a
// deleted key is given to no other as long as this lives.
//
// All throw UnsoundHive where the hive is not put together as one must be, and Error (kFull) where
// it would grow beyond what the format can hold; what was changed by then is half done.
class HiveEditor {
 public:
  // `bytes` is a whole file. Throws UnsoundHive where ReachedCells does. What a key or value that
  // says it is empty names all the same goes.
  explicit HiveEditor(std::string bytes);

  // Behind the key's other values. Returns its place.
  size_t AddValue(size_t key, std::string_view name, const RegistryValue& value);
  void ChangeValue(size_t key, size_t cell, const RegistryValue& value);
  void DeleteValue(size_t key, size_t cell);

  // A sub-key that is not there yet, with the parent's access list. Returns its place.
  size_t CreateSubKey(size_t parent, std::string_view name, int64_t now);
  bool HasSubKeys(size_t key) const;
  int64_t LastWrite(size_t key) const;  // a FILETIME
  // One without sub-keys that is not the root, with all its values.
  void DeleteKey(size_t key);

  // Overwrites what lies free and what follows the content of cells, and makes the header that of a
  // hive that was closed after one more change. Returns the bytes, which this goes on to own; looks
  // at all of them before.
  const std::string& Finish(int64_t now);

 private:
  // Where a sub-key stands in the lists of its parent.
  struct ListPlace {
    size_t list = 0;  // 0 where there is none
    size_t index = 0;
    size_t owner = 0;  // the number in the file that names the list
  };

  uint32_t Number(size_t at, size_t size = 4) const;
  void Put(size_t at, uint64_t number, size_t size = 4);
  void Raise(size_t at, size_t number, size_t size = 4);
  std::string_view Mark(size_t cell) const;
  size_t CellOf(size_t at) const;
  size_t SizeOf(size_t cell) const;

  void ReadFreeCells();
  void NoteFree(size_t cell, size_t size);
  void ForgetFree(size_t cell, size_t size);
  void AddBin(size_t length);
  size_t Allocate(size_t length);
  void Clear(size_t cell);
  void Free(size_t cell);
  size_t CopyOf(size_t cell, size_t used, size_t length);
  size_t Insert(size_t cell, size_t owner, size_t at, size_t used, size_t gap);
  void Remove(size_t cell, size_t at, size_t used, size_t gap);

  void StoreData(size_t value, std::string_view bytes);
  size_t StorePieces(std::string_view bytes);
  size_t StoreInCell(std::string_view bytes, size_t spare = 0);
  void FreeData(size_t value);
  void FreeValues(size_t key);

  std::u16string UpperNameOf(size_t key) const;
  ListPlace PlaceFor(size_t parent, const std::u16string& upper_name) const;
  ListPlace PlaceIn(size_t owner, const std::u16string& upper_name) const;
  ListPlace Find(size_t owner, uint32_t key) const;
  void AddToList(size_t parent, size_t key, std::string_view name);
  void RemoveFromList(size_t parent, size_t key);
  void DropList(size_t parent, const ListPlace& place);
  void ReleaseSecurity(size_t key);

  std::string bytes_;
  std::map<size_t, size_t> free_;                     // sizes by place; not those of deleted keys
  std::set<std::pair<size_t, size_t>> free_by_size_;  // the same by size and place
};

}  // namespace quellix
