#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/pause.h"
#include "platform/registry.h"

namespace quellix {

// Registry keys and values as text, in the format of the registry editor's version 5.

// The text of a .reg file as it grows. Both functions throw Error when the format cannot carry a
// name (a NUL or a line break in it); nothing is added then.
class RegFileText {
 public:
  // Begins a key: the values that follow are its own. Goes on with the key before when it is that.
  void AddKey(RegistryRoot root, std::string_view path);
  // Without a value: that there is none of that name.
  void AddValue(std::string_view name, const std::optional<RegistryValue>& value);

  bool IsEmpty() const { return text_.empty(); }
  // What was added, as UTF-16LE bytes.
  std::string Bytes() const;

 private:
  std::string text_, key_;
};

// What every such file begins with: the mark of UTF-16LE and the line that names the format.
std::string RegFileHeader();

struct RegFileKey {
  RegistryRoot root;
  std::string path;
  std::vector<std::pair<std::string, std::optional<RegistryValue>>>
      values;  // nothing: there is none
};

struct RegFile {
  std::vector<RegFileKey> keys;  // in the order of the file
  bool is_cut_off = false;       // its last entry is not whole and is left out
};

// A file, also one that ends in the middle of an entry, or before the first. Throws Error, with the
// line, for what else the registry editor would not take; keys that are to be deleted are refused
// as well. Also where `pause`, which is told of characters, ends it.
RegFile ParseRegFile(std::string_view bytes, const Pause& pause = {});

}  // namespace quellix
