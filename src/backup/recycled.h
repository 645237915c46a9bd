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

// Moves files out of the recycle bins that may be read ("X:\$Recycle.Bin\<user>\$R...", which a
// "$I..." beside it tells of, from Windows Vista on) back to where they were: of each the one that
// was deleted last. Folders that have gone are made again; what is there by now stays, and the file
// in the bin too. Files that the bins do not hold are problems.
RestoreResult RestoreRecycled(const Machine& machine, const std::vector<RecycledFile>& files,
                              const Pause& pause);

}  // namespace quellix
