#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/free_space_wiper.h"
#include "platform/machine.h"
#include "platform/pause.h"
#include "platform/words.h"

namespace quellix {

// What is said before free space is wiped: what no program reaches so.
inline constexpr const char* kBeyondWiping = Mark(
    "What solid-state disks have set aside, snapshots and earlier versions keep, and the ends "
    "of the files that stay, no program reaches this way.");

// Why a drive is none to be wiped, a sentence; "" for a disk of this machine. Other computers'
// disks are theirs to wipe.
std::string WhyNotWiped(const Machine& machine, char letter);

// The disks of this machine whose free space can be wiped, one after the other.
class FreeSpaceDrives {
 public:
  // The ports must outlive it.
  explicit FreeSpaceDrives(const Machine& machine) : machine_(machine) {}

  struct Row {
    std::string root;  // "C:\"
    std::string kind;
    uint64_t free = 0, size = 0;  // bytes
    bool is_ticked = false;
    std::string result = {};  // what came of wiping it; "" before
  };

  // Those that are here and tell, none ticked.
  void List();
  size_t count() const { return rows_.size(); }
  const Row& row(size_t index) const { return rows_[index]; }
  void Toggle(size_t index) { rows_[index].is_ticked = !rows_[index].is_ticked; }
  bool HasTicks() const;

  // What to ask before the ticked ones are wiped.
  std::string Question(bool zeros) const;
  // Wipes the ticked ones; what came of each is its result. A stop leaves out the rest. Never
  // throws Error.
  void Wipe(bool zeros, const Pause& pause);
  // What came of it all, a line; "" before.
  const std::string& summary() const { return summary_; }

 private:
  // Whether it was wiped to its end.
  bool WipeOne(Row& row, bool zeros, const Pause& pause);
  void ReadRoom(Row& row);
  std::string TextOf(const FreeSpaceWiped& wiped) const;

  Machine machine_;
  std::vector<Row> rows_;
  std::string summary_;
  bool is_stopped_ = false;
};

}  // namespace quellix
