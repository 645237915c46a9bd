#pragma once

#include "platform/machine.h"
#include "platform/pause.h"
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

// A pause of a run. From then on AbortRequested tells whether the user has stopped it.
inline bool StopsRun(CleaningContext& context) {
  if (context.view.Breathe()) context.state.AbortRequested = true;
  return context.state.AbortRequested;
}

// The same for what knows no runs; `context` must outlive it.
inline Pause PauseOf(CleaningContext& context) {
  return [&context](const Progress&) { return StopsRun(context); };
}

}  // namespace quellix
