#pragma once

#include <cstdint>
#include <map>

#include "run/context.h"

namespace quellix {

// Bytes, by drive letter, of the fixed drives that tell.
std::map<char, uint64_t> FreeSpace(const Machine& machine);

// What the drives say of a run, besides what the run says itself.
class FreeSpaceCheck {
 public:
  // Asks now how much is free.
  explicit FreeSpaceCheck(CleaningContext& context);
  // Writes into RunLog, for each drive on which that has changed, what was free before and what is
  // now. Nothing of a preview, nor of a run that removed nothing.
  void Tell();

 private:
  std::map<char, uint64_t> Ask() const;

  CleaningContext& context_;
  std::map<char, uint64_t> before_;  // bytes, by drive letter
};

// Adds to the first files that stay because they are held which programs hold them, where nobody
// waits for a stop.
void NamePrograms(CleaningContext& context);

}  // namespace quellix
