#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace quellix {

// The entries of one folder, their names told apart by their ends in one text.
class Listing {
 public:
  void Add(const Entry& entry) {
    names_ += entry.name;
    infos_.push_back({names_.size(), entry.info});
  }
  // Room for as much as another one holds.
  void Reserve(const Listing& other) {
    names_.reserve(other.names_.size());
    infos_.reserve(other.infos_.size());
  }
  // None any more; the room stays.
  void Clear() {
    names_.clear();
    infos_.clear();
  }
  size_t size() const { return infos_.size(); }
  Entry operator[](size_t i) const {
    const size_t start = i == 0 ? 0 : infos_[i - 1].end;
    return {std::string_view(names_).substr(start, infos_[i].end - start), infos_[i].info};
  }
  // The memory a copy takes, in bytes.
  size_t bytes() const { return names_.size() + infos_.size() * sizeof(Place); }

 private:
  struct Place {
    size_t end;
    FileInfo info;
  };
  std::string names_;
  std::vector<Place> infos_;
};

}  // namespace quellix
