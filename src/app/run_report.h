#pragma once

#include "app/context.h"

namespace quellix {

std::string_view CategoryTitle(Category category);

// Appends the totals to RunLog.
void AppendSummary(CleaningContext& context);

// What the log window shows. A category is cleaned when one of its items ran without an error.
RunReport MakeReport(const CleaningContext& context);

}  // namespace quellix
