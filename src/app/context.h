#pragma once

#include "app/run_state.h"
#include "app/settings.h"
#include "app/views.h"
#include "backup/backup_archive.h"
#include "platform/machine.h"

namespace quellix {

// What the procedures of a run work with.
struct CleaningContext {
  Machine machine;
  Settings& settings;
  RunState& state;
  RunView& view;
  BackupArchive& backup;
};

}  // namespace quellix
