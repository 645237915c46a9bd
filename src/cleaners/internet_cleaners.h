#pragma once

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Cleaners of Internet Explorer's cache, cookies and address history; see Cleaner for their
// contract. Cookies named in ck.txt are kept: a cookie stays when its file's full path occurs
// anywhere in that file.
void CleanInternetCache(CleaningContext& context, const Item& item);
void CleanCookies(CleaningContext& context, const Item& item);
void CleanAddressHistory(CleaningContext& context, const Item& item);

}  // namespace quellix
