#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quellix {

enum class ChangeKind {
  kRemoveFile,
  kRecycleFile,
  kRemoveFolder,
  kDeleteValue,
  kDeleteKey,
  kEraseIniKey,
  kEraseIniSection,
  kEmptyRecycleBin,
  kDeleteCacheEntry,
  kClearAddressHistory,
  kEmptyClipboard,
  // What removes nothing.
  kWriteFile,
  kMakeFolder,
  kSetAttributes,
  kMakeKey,
  kSetValue,
  kEndSession,
};

// One change that was asked for and not made. Texts are UTF-8.
struct Change {
  ChangeKind kind;
  std::string
      target;        // path, key with its root's name, or address; "" for the user's one of a kind
  std::string part;  // value name, or section and key of an INI file
  uint64_t bytes = 0;  // of a file, or of all in the recycle bin
};

// In the order they were asked for.
using ChangeLog = std::vector<Change>;

}  // namespace quellix
