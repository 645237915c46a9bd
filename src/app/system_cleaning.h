#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_cleaners.h"
#include "run/context.h"

namespace quellix {

// What its user loses by one of Windows' own cleaners besides junk; "" where nothing is known.
std::string_view CostOf(const SystemCleaner& cleaner);
// The rule that its entries carry: "windows:Update Cleanup".
std::string RuleOf(const SystemCleaner& cleaner);

// Those of a list that are ticked, by their keys; none where there are none of them here.
std::vector<SystemCleaner> TickedCleaners(const Machine& machine,
                                          const std::function<bool(std::string_view)>& is_ticked);

// Has Windows' own code clean, within a run that is begun, unless a preview did not choose it, and
// writes its line into RunLog: what it says it freed, and what the drives say. In a preview it only
// looks. A failure is told there too. Never throws Error.
void CleanBySystem(CleaningContext& context, const SystemCleaner& cleaner);

}  // namespace quellix
