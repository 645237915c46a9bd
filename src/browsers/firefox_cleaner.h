#pragma once

#include "browsers/browser_kind.h"
#include "browsers/profile_cleaner.h"
#include "run/context.h"
#include "run/item.h"

namespace quellix {

// One of the six Firefox items: in the files of old versions as CleanMozilla does, and in the
// profiles of today, for which a line is written. See Cleaner for the contract.
void CleanFirefox(CleaningContext& context, const Item& item);

// Cleans a kind in one profile of today; one that is in use is told and left whole. Bookmarks with
// their icons and tags, keys, certificates, settings and add-ons with their data stay. Returns the
// rows that went from databases; files are counted in the run's totals. Never throws Error.
uint64_t CleanFirefoxProfile(CleaningContext& context, const BrowserProfile& profile,
                             BrowserKind kind);

}  // namespace quellix
