#pragma once

#include <cstdint>
#include <string>

#include "platform/locale.h"
#include "platform/pause.h"
#include "run/views.h"

namespace quellix {

// How long work will go on that has come so far in so many milliseconds: "about 2 minutes left". ""
// in the first seconds and at the first steps, when nobody can tell.
std::string TimeLeftText(const Progress& progress, uint64_t milliseconds);

// What takes the time of a list of files: its bytes where they are known, else its files.
Progress StepsOf(const FileProgress& files);

// "3,571 of 20,000, 9.6 MB, 12 s left": in so many milliseconds, the time where it can be told. ""
// for no list.
std::string ProgressText(const FileProgress& files, const Locale& locale, uint64_t milliseconds);

}  // namespace quellix
