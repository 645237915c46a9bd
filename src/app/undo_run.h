#pragma once

#include "backup/backup_reader.h"
#include "platform/machine.h"
#include "platform/pause.h"
#include "run/run_entries.h"
#include "run/views.h"

namespace quellix {

// Whether a run backed something up, or recycled it, so that it can be put back.
bool CanUndo(const RunEntries& run);

// Puts back what a run backed up: its files where they were, and what it deleted from the registry;
// and what it moved into the recycle bin, where that is of Windows Vista or later.
// A file that is there by now is asked about. What cannot be restored, and why, is in the result.
// What went without a backup stays gone. Never throws Error.
RestoreResult UndoRun(const Machine& machine, const RunEntries& run, Prompts& prompts,
                      const Pause& pause);

}  // namespace quellix
