#pragma once

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Cleaners of one area of the disk each; see Cleaner for their contract. A source that is missing
// is no error: the item logs zero counts.
void CleanTempFiles(CleaningContext& context, const Item& item);
void CleanMemoryDumps(CleaningContext& context, const Item& item);
void CleanPrinterFiles(CleaningContext& context, const Item& item);
void CleanRecentDocuments(CleaningContext& context, const Item& item);
void CleanActiveX(CleaningContext& context, const Item& item);
void CleanOfflinePages(CleaningContext& context, const Item& item);
void CleanActiveSetup(CleaningContext& context, const Item& item);
void CleanIndexer(CleaningContext& context, const Item& item);
void CleanRecycleBin(CleaningContext& context, const Item& item);

}  // namespace quellix
