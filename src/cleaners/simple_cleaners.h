#pragma once

#include "app/context.h"
#include "app/item.h"

namespace quellix {

// Cleaners of one short step each; see Cleaner for their contract.
void CleanTempFiles(CleaningContext& context, const Item& item);
void CleanRecycleBin(CleaningContext& context, const Item& item);
void CleanRunHistory(CleaningContext& context, const Item& item);
void CleanTypedURLs(CleaningContext& context, const Item& item);
void CleanClipboard(CleaningContext& context, const Item& item);

}  // namespace quellix
