#pragma once

#include <string>
#include <vector>

#include "backup/backup_reader.h"
#include "platform/machine.h"
#include "platform/pause.h"

namespace quellix {

// A file that a run moved into the recycle bin.
struct RecycledFile {
  std::string path;  // where it was
  uint64_t bytes = 0;
};

// Moves files out of this user's recycle bins ("$R...", which a "$I..." beside it tells of, from
// Windows Vista on) back to where they were: of each the one that was deleted last. What lies in
// another user's bin that user may have put there. Folders that have gone are made again; what is
// there by now stays, and the file in the bin too. Files that the bins do not hold, and folders
// that a link stands for by now, are problems.
RestoreResult RestoreRecycled(const Machine& machine, const std::vector<RecycledFile>& files,
                              const Pause& pause);

}  // namespace quellix
