#pragma once

#include <string>
#include <string_view>

#include "run/context.h"
#include "run/item.h"

namespace quellix {

std::string_view CategoryTitle(Category category);
// As the log window says it.
std::string_view OutcomeText(Outcome outcome);

// The text beside its check box, as logs have it.
std::string LoggedLabel(const Item& item);

// What RunLog says of an item that found nothing of its kind.
void AppendNothingFound(CleaningContext& context, const Item& item);

// Appends the totals to RunLog, and why files stayed.
void AppendSummary(CleaningContext& context);

// One sentence on a run that nobody watched.
std::string BriefReport(const CleaningContext& context);

// What a run had done when it was stopped; "" of one that was not.
std::string StoppedReport(const CleaningContext& context);

// What the log window shows of a run.
RunReport MakeReport(const RunTotals& totals, const Locale& locale);

}  // namespace quellix
