#include "browsers/firefox_cleaner.h"

#include <algorithm>
#include <memory>

#include "browsers/firefox_databases.h"
#include "browsers/firefox_profiles.h"
#include "cleaners/mod_mozilla.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

constexpr std::string_view kLocks[] = {"parent.lock", ".parentlock", "lock"};
constexpr std::string_view kCaches[] = {"cache2",       "startupCache",  "thumbnails",
                                        "OfflineCache", "jumpListCache", "shader-cache"};
// The keys that saved passwords are encrypted with are also those of certificates, and stay.
constexpr std::string_view kLogins[] = {"logins.json", "logins-backup.json", "logins.json.corrupt"};
constexpr std::string_view kOldDownloads[] = {"downloads.json"};
constexpr std::string_view kOldCookies[] = {"cookies.sqlite.bak*"};
constexpr std::string_view kSessions[] = {"sessionstore.jsonlz4", "sessionstore.js",
                                          "sessionCheckpoints.json"};
// Data of add-ons lies beside that of sites, "moz-extension+++...".
constexpr std::string_view kStorage[] = {"storage\\default", "storage\\temporary"};

struct ItemKind {
  std::string_view key;
  BrowserKind kind;
};
constexpr ItemKind kItemKinds[] = {{"CleanMozillaCache", BrowserKind::kCache},
                                   {"CleanMozillaCookies", BrowserKind::kCookies},
                                   {"CleanMozillaForms", BrowserKind::kForms},
                                   {"CleanMozillaPasswords", BrowserKind::kPasswords},
                                   {"CleanMozillaHistory", BrowserKind::kHistory},
                                   {"CleanMozillaDownloads", BrowserKind::kDownloads}};

// The site of "https+++www.example.com+8443^partitionKey=...", "" for what is none.
std::string SiteOfStorage(Folder&, const std::string& name) {
  if (!name.starts_with("http")) return {};
  const size_t start = name.find("+++");
  if (start == name.npos) return {};
  const std::string host = name.substr(start + 3);
  return host.substr(0, host.find_first_of("+^"));
}

// Which icons stay can be told only while the places can be read.
void CleanIcons(ProfileCleaner& profile, const std::string& path) {
  if (!profile.folder().Look("favicons.sqlite", Detail::kKind)) return;
  try {
    const KnownPages known = ReadKnownPages(profile.folder(), path + "places.sqlite");
    profile.Rows("favicons.sqlite", FirefoxIcons(known));
  } catch (const Error& error) {
    profile.Leave("favicons.sqlite", SentenceOf(error));
  }
}

void Clean(CleaningContext& context, ProfileCleaner& profile, const BrowserProfile& where,
           BrowserKind kind) {
  switch (kind) {
    case BrowserKind::kCache:
      return CleanCaches(context, where, kCaches);
    case BrowserKind::kCookies:
      profile.Rows("cookies.sqlite", FirefoxCookies());
      if (!KeepOf(context).has_sites()) profile.Files(kOldCookies);
      return;
    case BrowserKind::kHistory:
      profile.Rows("places.sqlite", FirefoxHistory());
      return CleanIcons(profile, where.path);
    case BrowserKind::kDownloads:
      profile.Rows("places.sqlite", FirefoxDownloads());
      profile.Files(kOldDownloads);
      return profile.WholeDatabase("downloads.sqlite");
    case BrowserKind::kForms:
      return profile.Rows("formhistory.sqlite", FirefoxForms());
    case BrowserKind::kPasswords:
      profile.Files(kLogins);
      return profile.WholeDatabase("signons.sqlite");
    case BrowserKind::kSessions:
      profile.Files(kSessions);
      return profile.Below("sessionstore-backups");
    case BrowserKind::kSiteData:
      for (const std::string_view name : kStorage) profile.Sites(name, SiteOfStorage);
      return profile.Rows("webappsstore.sqlite", FirefoxOldStorage());
  }
}

}  // namespace

uint64_t CleanFirefoxProfile(CleaningContext& context, const BrowserProfile& profile,
                             BrowserKind kind) {
  ProfileCleaner cleaner(context, profile.folder, profile.path);
  NotePlace(context.state);
  if (cleaner.IsInUse(kLocks, "Firefox", TextOf(kind).label)) return 0;
  Clean(context, cleaner, profile, kind);
  return cleaner.rows();
}

void CleanFirefox(CleaningContext& context, const Item& item) {
  CleanMozilla(context, item);
  if (context.state.AbortRequested) return;
  const std::vector<BrowserProfile> profiles = FindFirefoxProfiles(context.machine);
  const auto row = std::ranges::find(kItemKinds, std::string_view(item.key), &ItemKind::key);
  if (profiles.empty() || row == std::end(kItemKinds)) return;
  BeginItem(context, item);
  ResetItemCounters(context.state);
  uint64_t rows = 0;
  for (const BrowserProfile& profile : profiles) {
    if (StopsRun(context)) return;
    rows += CleanFirefoxProfile(context, profile, row->kind);
  }
  if (context.state.AbortRequested) return;
  EndRun(context, "");
  AppendBrowserLine(context, "Firefox", item.label, rows);
}

}  // namespace quellix
