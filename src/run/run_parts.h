#pragma once

#include <memory>
#include <typeindex>
#include <unordered_map>

namespace quellix {

// What the folders above keep for the length of a run: one of each type.
class RunParts {
 public:
  // Null when there is none yet.
  template <typename Part>
  std::shared_ptr<Part> Find() const {
    const auto found = parts_.find(typeid(Part));
    return found == parts_.end() ? nullptr : std::static_pointer_cast<Part>(found->second);
  }
  template <typename Part>
  void Put(std::shared_ptr<Part> part) {
    parts_[typeid(Part)] = std::move(part);
  }
  // Made by its default when it is asked for first.
  template <typename Part>
  Part& Get() {
    if (!parts_.contains(typeid(Part))) Put(std::make_shared<Part>());
    return *Find<Part>();
  }
  // What was kept, which is then kept no longer.
  template <typename Part>
  std::shared_ptr<Part> Take() {
    std::shared_ptr<Part> part = Find<Part>();
    parts_.erase(typeid(Part));
    return part;
  }
  void Clear() { parts_.clear(); }

 private:
  std::unordered_map<std::type_index, std::shared_ptr<void>> parts_;
};

}  // namespace quellix
