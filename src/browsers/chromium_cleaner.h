#pragma once

#include "browsers/browser_kind.h"
#include "browsers/chromium_browsers.h"
#include "run/context.h"

namespace quellix {

// Cleans a kind in all profiles of a browser; one that runs is told and left whole. Bookmarks,
// preferences, saved addresses and cards, search engines, and add-ons with their data stay. Where
// add-ons and sites keep data in one file, it stays as long as there are add-ons, which is told.
// Returns the rows that went from databases; files are counted in the run's totals. Never throws
// Error.
uint64_t CleanChromium(CleaningContext& context, const ChromiumBrowser& browser, BrowserKind kind);

}  // namespace quellix
