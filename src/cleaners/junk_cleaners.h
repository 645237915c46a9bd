#pragma once

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// The three items that search whole drives. They delete nothing: each find becomes a row of the
// run's results, which its user reviews. Throw NotAvailable where nobody can.
void CleanUnnecessaryFiles(CleaningContext& context, const Item& item);
void CleanEmptyFiles(CleaningContext& context, const Item& item);
void CleanDeadShortcuts(CleaningContext& context, const Item& item);

// The search for empty folders, likewise: none of the boxes, but chosen by itself.
const Item& EmptyFolderSearch();

// When the run has searched: waits until its user has closed the results, then appends their lines
// to RunLog. AbortRequested is the same afterwards.
void FinishResults(CleaningContext& context);

}  // namespace quellix
