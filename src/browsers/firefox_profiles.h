#pragma once

#include <vector>

#include "browsers/profile_cleaner.h"
#include "platform/machine.h"

namespace quellix {

// The user's profiles of Firefox, each once: those that profiles.ini names, wherever they are, and
// those in the usual folder, whatever profiles.ini says; also of the Firefox from the Store. What
// cannot be opened is left out.
std::vector<BrowserProfile> FindFirefoxProfiles(const Machine& machine);

}  // namespace quellix
