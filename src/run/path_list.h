#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace quellix {

// A growing list of paths that costs little more than their characters: hundreds of thousands are
// held during a run. Paths stay where they are until Clear.
class PathList {
 public:
  void Append(std::string_view folder, std::string_view name = {}, std::string_view end = {});
  std::string_view operator[](size_t index) const { return paths_[index]; }
  size_t size() const { return paths_.size(); }
  // Valid until a path is added.
  std::span<const std::string_view> All() const { return paths_; }
  bool empty() const { return paths_.empty(); }
  // Empties the list and gives its memory back.
  void Clear();
  size_t MemoryHeld() const;  // bytes

 private:
  char* Reserve(size_t length);

  std::vector<std::unique_ptr<char[]>> chunks_;
  size_t chunk_used_ = 0;
  size_t chunk_size_ = 0;
  size_t characters_held_ = 0;
  std::vector<std::string_view> paths_;
};

}  // namespace quellix
