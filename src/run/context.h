#pragma once

#include "platform/machine.h"
#include "run/backup_archive.h"
#include "run/run_state.h"
#include "run/views.h"
#include "settings/settings.h"

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
