#pragma once

#include "run/run_state.h"

namespace quellix {

// How the programs end.
enum ExitCode { kDone = 0, kFailed = 1, kWrongUsage = 2, kSomeFilesStayed = 3 };

// After a run; one that was stopped has failed, and files that went without the backup they were to
// have count like files that stayed.
inline ExitCode ExitCodeOf(const RunState& state) {
  if (state.AbortRequested || state.SomeErrors) return kFailed;
  return state.SomeFilesLocked || state.FilesNotBackedUp > 0 ? kSomeFilesStayed : kDone;
}

}  // namespace quellix
