#include "run/path_list.h"

#include <algorithm>
#include <cstring>

namespace quellix {
namespace {

constexpr size_t kChunk = 64 * 1024;

}  // namespace

char* PathList::Reserve(size_t length) {
  if (chunk_used_ + length > chunk_size_) {
    chunk_size_ = std::max(length, kChunk);
    chunk_used_ = 0;
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(chunk_size_));
    characters_held_ += chunk_size_;
  }
  char* const result = chunks_.back().get() + chunk_used_;
  chunk_used_ += length;
  return result;
}

void PathList::Append(std::string_view folder, std::string_view name, std::string_view end) {
  const size_t length = folder.size() + name.size() + end.size();
  char* const text = Reserve(length);
  char* at = std::copy(folder.begin(), folder.end(), text);
  at = std::copy(name.begin(), name.end(), at);
  std::copy(end.begin(), end.end(), at);
  paths_.emplace_back(text, length);
}

void PathList::Clear() { *this = PathList(); }

size_t PathList::MemoryHeld() const {
  return characters_held_ + paths_.capacity() * sizeof(std::string_view);
}

}  // namespace quellix
