#pragma once

#include <set>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// What is ticked in the main window beside the items, by name ("chrome:cookies"). What is ticked
// and not found now stays ticked for later.
class NameTicks {
 public:
  // The list file that keeps them, a name a line.
  explicit NameTicks(std::string_view file) : file_(file) {}

  bool IsTicked(std::string_view name) const { return ticked_.contains(name); }
  void SetTicked(std::string_view name, bool ticked);
  void Clear() { ticked_.clear(); }
  bool empty() const { return ticked_.empty(); }

  // A missing file is none. Saving writes only what has changed, and keeps a file that could not be
  // read unless something was ticked since. Both throw Error.
  void Load(const Machine& machine);
  void Save(const Machine& machine);

 private:
  std::string file_;
  std::set<std::string, std::less<>> ticked_, stored_;
};

}  // namespace quellix
