#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace quellix {

// A cell in use that a key or the ring of descriptors reaches.
struct HiveCell {
  size_t at;    // of its size, in the file
  size_t size;  // whole
  size_t used;  // of it, from its beginning; what follows means nothing
};

// All cells that are reached, in the order of the file. Throws UnsoundHive unless the hive is put
// together as one must be before it is written: every cell lies in its bin, is in use and belongs
// to one place only. `bytes` is the whole file.
std::vector<HiveCell> ReachedCells(std::string_view bytes);

// A number in the file that should name no cell, as what it belongs to is said to be empty.
struct HiveStray {
  size_t owner;  // its place
  size_t cell;   // what it names all the same and nothing else does; 0 for no cell in use
};

// All of them; throws as above.
std::vector<HiveStray> StraysOf(std::string_view bytes);

// Whether the above throw nothing.
bool IsSoundHive(std::string_view bytes);

// Whether bins follow one another to the end that the header names, each where it says it is.
bool HasSoundBins(std::string_view bytes);

}  // namespace quellix
