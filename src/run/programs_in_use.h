#pragma once

#include <functional>
#include <string>

#include "run/context.h"

namespace quellix {

// A program that may hold open what is to be cleaned.
struct ProgramInUse {
  std::string name;  // as its user knows it
  std::string what;  // is to be cleaned, for a window
  ProgramUse use;    // its texts must outlive the call
};

// Whether the program is out of the way: it does not run, or its user had it closed now. Who
// watches the run is asked, once per program; a run that nobody watches, a preview, and one whose
// preview had nothing of the rule in work, only look. A program that was asked to close is awaited
// until it ends, the run is stopped, or it took too long, which is asked about anew. Nothing is
// ended by force. What becomes of it is told in RunLog; that it stands in the way is the caller's
// to tell.
bool IsOutOfTheWay(CleaningContext& context, const ProgramInUse& program,
                   const std::function<bool()>& runs);

}  // namespace quellix
