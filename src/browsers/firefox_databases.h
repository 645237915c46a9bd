#pragma once

#include <set>
#include <string>

#include "browsers/database_cleaning.h"

namespace quellix {

// What goes from Firefox's databases.
DatabaseJob FirefoxCookies();     // cookies.sqlite
DatabaseJob FirefoxForms();       // formhistory.sqlite
DatabaseJob FirefoxHistory();     // places.sqlite
DatabaseJob FirefoxDownloads();   // places.sqlite
DatabaseJob FirefoxOldStorage();  // webappsstore.sqlite, of each site

// The addresses that places.sqlite still holds, for the icons that stay.
struct KnownPages {
  std::set<std::string, std::less<>> pages, hosts;
};
KnownPages ReadKnownPages(Folder& profile, std::string_view shown);
// favicons.sqlite: what belongs to no known page; `known` must outlive the job.
DatabaseJob FirefoxIcons(const KnownPages& known);

// The host of an address, "" where it has none.
std::string_view HostOf(std::string_view url);

}  // namespace quellix
