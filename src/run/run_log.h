#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/locale.h"
#include "run/run_state.h"

namespace quellix {

// Lines of RunLog. Their texts are those of Log: in English, or in the language of the windows.
void LogLine(RunTotals& run, std::string_view line);

// That a folder was left alone: `why` is a clause that ends a sentence; or it was passed by with
// all that is in it, as one that a walk has met.
void LogNotCleaned(RunTotals& run, std::string_view path, std::string_view why);
void LogSpared(RunTotals& run, std::string_view path);

// "Cookies... Files Deleted: 2 Space Gained: 3.00 KB". The caption is one for the catalogues, with
// what stands between it and the count.
std::string FilesText(std::string_view caption, int64_t files, double bytes, const Locale& locale);

}  // namespace quellix
