#pragma once

#include <span>
#include <string>

#include "run/context.h"

namespace quellix {

// Removes what somebody named by hand, by full paths: files, folders with all that is below them,
// however young, and links, which go without what they lead to. What is precious stays, as do the
// folders that users know and all that is kept; what stays, and what is not there, is noted. Ends
// with a line in RunLog, unless the user stops.
void CleanNamed(CleaningContext& context, std::span<const std::string> paths);

}  // namespace quellix
