#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// The tips of tips.txt, one a line, shown in turn. Which one was shown last is kept for each user,
// in the registry.
class Tips {
 public:
  explicit Tips(const Machine& machine) : machine_(machine) {}

  // Reads the file and the last tip's number. False when the file is missing. One that cannot be
  // read, or that is no list of tips by its size, leaves no tips.
  bool Load();

  // The tip behind the one shown last, the first behind the last; "" when there are none.
  std::string Next();

  // Stores the number of the tip shown last; nothing when none was. Silent when it cannot.
  void Save() const;

 private:
  std::optional<int32_t> StoredIndex() const;

  Machine machine_;
  std::vector<std::string> tips_;  // without empty lines
  std::optional<int32_t> last_;    // from 0; it need not be one of the tips
  bool shown_ = false;
};

}  // namespace quellix
