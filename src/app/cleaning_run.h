#pragma once

#include <span>

#include "app/selection.h"
#include "browsers/browser_catalogue.h"
#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Runs the cleaners of all checked items in run order, appends the summary to RunLog and shows the
// report (not in a hidden run).
void RunCleaning(CleaningContext& context, const Selection& selection);

// Keeps a run that is over for later reading, as the settings say. RunCleaning and RunOneItem do
// that themselves.
void KeepRun(CleaningContext& context);

// Runs one item, whatever the state of its box, with the same log and report.
void RunOneItem(CleaningContext& context, const Item& item);

// Cleans kinds of browsers, likewise.
void RunBrowsers(CleaningContext& context, std::span<const BrowserChoice> choices);

}  // namespace quellix
