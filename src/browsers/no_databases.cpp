#include "browsers/firefox_cleaner.h"
#include "cleaners/mod_mozilla.h"

namespace quellix {

// Where SQLite is missing, as for the portable tests.
void CleanFirefox(CleaningContext& context, const Item& item) { CleanMozilla(context, item); }

}  // namespace quellix
