#pragma once

#include <string_view>

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Cleaners of the lists that Windows, its shell and Office keep in the user's registry, and of the
// clipboard; see Cleaner for their contract.
void CleanRunHistory(CleaningContext& context, const Item& item);
void CleanTypedURLs(CleaningContext& context, const Item& item);
void CleanFindHistory(CleaningContext& context, const Item& item);
void CleanInstallFromHistory(CleaningContext& context, const Item& item);
void CleanClipboard(CleaningContext& context, const Item& item);
void CleanOfficeHistory(CleaningContext& context, const Item& item);

// Clears the 25 lists of one Office version ("10.0"); what fails is skipped.
void CleanOfficeVersionHistory(CleaningContext& context, std::string_view version);

}  // namespace quellix
