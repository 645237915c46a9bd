#pragma once

#include <set>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// What of the browsers found here is ticked in the main window, by name ("chrome:cookies"). What is
// ticked and not found now stays ticked for later.
class BrowserTicks {
 public:
  bool IsTicked(std::string_view name) const { return ticked_.contains(name); }
  void SetTicked(std::string_view name, bool ticked);
  bool empty() const { return ticked_.empty(); }

  // Browsers.txt, a name a line; a missing file is none. Saving writes only what has changed, and
  // keeps a file that could not be read unless something was ticked since. Both throw Error.
  void Load(const Machine& machine);
  void Save(const Machine& machine);

 private:
  std::set<std::string, std::less<>> ticked_, stored_;
};

}  // namespace quellix
