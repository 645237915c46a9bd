#pragma once

#include "run/run_state.h"

namespace quellix {

// How the programs end.
enum ExitCode {
  kDone = 0,
  kFailed = 1,
  kWrongUsage = 2,
  kSomeFilesStayed = 3,
  kHandedOn = 4,  // a copy of the program that was open was asked to do it
};

// After a run; one that was stopped has failed, and files that went without the backup they were to
// have count like files that stayed.
inline ExitCode ExitCodeOf(const RunTotals& totals) {
  if (totals.AbortRequested || totals.SomeErrors) return kFailed;
  return totals.SomeFilesLocked || totals.FilesNotBackedUp > 0 ? kSomeFilesStayed : kDone;
}

}  // namespace quellix
