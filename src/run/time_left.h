#pragma once

#include <cstdint>
#include <string>

#include "platform/pause.h"

namespace quellix {

// How long work will go on that has come so far in so many milliseconds: "about 2 minutes left". ""
// in the first seconds and at the first steps, when nobody can tell.
std::string TimeLeftText(const Progress& progress, uint64_t milliseconds);

}  // namespace quellix
