#include "browsers/chromium_cleaner.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

constexpr std::string_view kLocks[] = {"lockfile", "SingletonLock"};

// Of each profile.
constexpr std::string_view kProfileCaches[] = {
    "Cache",           "Code Cache",        "GPUCache",    "DawnCache",        "DawnGraphiteCache",
    "DawnWebGPUCache", "GraphiteDawnCache", "Media Cache", "Application Cache"};
// Of the browser.
constexpr std::string_view kSharedCaches[] = {"ShaderCache", "GrShaderCache", "GraphiteDawnCache",
                                              "component_crx_cache", "Crashpad\\reports"};
constexpr std::string_view kHistories[] = {"History",       "Archived History",
                                           "Top Sites",     "Shortcuts",
                                           "Media History", "Network Action Predictor"};
constexpr std::string_view kHistoryFiles[] = {"Visited Links", "History Provider Cache",
                                              "DownloadMetadata", "History Index *"};
constexpr std::string_view kPasswordDatabases[] = {"Login Data", "Login Data For Account"};
constexpr std::string_view kSessionFiles[] = {"Current Session", "Current Tabs", "Last Session",
                                              "Last Tabs"};

constexpr DatabaseStep kCookieList[] = {
    {"SELECT ltrim(host_key, '.'), 1, length(name) + length(value) FROM cookies"}};
constexpr DatabaseStep kCookieSteps[] = {{"DELETE FROM cookies WHERE goes(ltrim(host_key, '.'))"}};

// Addresses and cards were saved on purpose.
constexpr DatabaseStep kFormList[] = {
    {"SELECT 'form entries', count(*), sum(length(name) + length(value)) FROM autofill"}};
constexpr DatabaseStep kFormSteps[] = {{"DELETE FROM autofill"}};

constexpr DatabaseStep kIconList[] = {
    {"SELECT 'icons of visited pages', count(*), sum(length(page_url)) FROM icon_mapping "
     "WHERE NOT is_bookmarked(page_url)"}};
constexpr DatabaseStep kIconSteps[] = {
    {"DELETE FROM icon_mapping WHERE NOT is_bookmarked(page_url)"},
    {"DELETE FROM favicon_bitmaps WHERE icon_id NOT IN (SELECT icon_id FROM icon_mapping)"},
    {"DELETE FROM favicons WHERE id NOT IN (SELECT icon_id FROM icon_mapping)"}};

// A folder "https_www.example.com_0.indexeddb.leveldb" or "https_www.example.com_0".
std::string SiteOfFolder(Folder&, const std::string& name) {
  if (!name.starts_with("http_") && !name.starts_with("https_")) return {};
  const std::string host = name.substr(name.find('_') + 1);
  return host.substr(0, host.find('_'));
}

// A cache that a site's own programs keep names its origin in a file beside it.
std::string SiteOfCache(Folder& caches, const std::string& name) {
  const std::unique_ptr<Folder> folder = caches.OpenFolder(name);
  if (!folder || !folder->Look("index.txt", Detail::kKind)) return {};
  const std::unique_ptr<RandomFile> index = folder->Open("index.txt", OpenMode::kRead);
  constexpr size_t kMost = 1 << 20;
  std::string text(static_cast<size_t>(std::min<uint64_t>(index->Size(), kMost)), '\0');
  text.resize(index->Read(0, text));
  if (text.find("extension://") != text.npos) return {};
  const size_t start = text.find("http");
  const size_t host = start == text.npos ? start : text.find("://", start);
  if (host == text.npos) return {};
  const std::string site = text.substr(host + 3);
  return site.substr(0, site.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789.-"));
}

// What a bookmark stands for keeps its icon.
DatabaseJob IconJob(const std::string& bookmarks) {
  return {
      .list = kIconList, .steps = kIconSteps, .add_functions = [&bookmarks](Database& database) {
        database.AddTest("is_bookmarked", [&bookmarks](std::string_view url) {
          return bookmarks.find("\"" + std::string(url) + "\"") != bookmarks.npos;
        });
      }};
}

// In the profile itself until version 95.
void CleanCookies(ProfileCleaner& profile) {
  const DatabaseJob job{.list = kCookieList, .is_by_site = true, .steps = kCookieSteps};
  profile.Rows("Cookies", job);
  profile.Rows("Network\\Cookies", job);
}

std::string ReadText(Folder& folder, const char* name) {
  if (!folder.Look(name, Detail::kKind)) return {};
  const std::unique_ptr<RandomFile> file = folder.Open(name, OpenMode::kRead);
  constexpr uint64_t kMost = 256u << 20;
  if (file->Size() > kMost) throw Error(Error::Kind::kOther, Say("The bookmarks are too many."));
  std::string text(static_cast<size_t>(file->Size()), '\0');
  text.resize(file->Read(0, text));
  return text;
}

void CleanHistory(ProfileCleaner& profile) {
  for (const std::string_view name : kHistories) profile.WholeDatabase(name);
  profile.Files(kHistoryFiles);
  try {
    std::string bookmarks;
    for (const char* name : {"Bookmarks", "AccountBookmarks"})
      bookmarks += ReadText(profile.folder(), name);
    profile.Rows("Favicons", IconJob(bookmarks));
  } catch (const Error& error) {
    profile.Leave("Favicons", SentenceOf(error));
  }
}

bool HasAddOns(Folder& profile) {
  for (const char* name : {"Extensions", "Local Extension Settings"}) {
    const std::unique_ptr<Folder> folder = profile.OpenFolder(name);
    if (folder && !FoldersIn(*folder, "*").empty()) return true;
  }
  return false;
}

// Sites and add-ons keep theirs in one store, of which nothing can be taken out.
void CleanStore(ProfileCleaner& profile, const char* name) {
  try {
    if (!profile.folder().OpenFolder(name) || profile.IsKeptForSites(name)) return;
    if (!HasAddOns(profile.folder())) return profile.Below(name);
    profile.Leave(name, Say("It was left as it is: it also holds data of add-ons."));
  } catch (const Error& error) {
    profile.Leave(name, SentenceOf(error));
  }
}

void CleanSiteData(ProfileCleaner& profile) {
  profile.Sites("IndexedDB", SiteOfFolder);
  profile.Sites("databases", SiteOfFolder);
  profile.Sites("Service Worker\\CacheStorage", SiteOfCache);
  CleanStore(profile, "Local Storage\\leveldb");
  CleanStore(profile, "Session Storage");
}

uint64_t CleanProfile(CleaningContext& context, const BrowserProfile& where, BrowserKind kind) {
  ProfileCleaner profile(context, where.folder, where.path);
  switch (kind) {
    case BrowserKind::kCache:
      CleanCaches(context, where, kProfileCaches);
      break;
    case BrowserKind::kCookies:
      CleanCookies(profile);
      break;
    case BrowserKind::kHistory:
      CleanHistory(profile);
      break;
    case BrowserKind::kForms:
      profile.Rows("Web Data", {.list = kFormList, .steps = kFormSteps});
      break;
    case BrowserKind::kPasswords:
      for (const std::string_view name : kPasswordDatabases) profile.WholeDatabase(name);
      break;
    case BrowserKind::kSessions:
      profile.Below("Sessions");
      profile.Files(kSessionFiles);
      break;
    case BrowserKind::kSiteData:
      CleanSiteData(profile);
      break;
    case BrowserKind::kDownloads:
      break;
  }
  return profile.rows();
}

}  // namespace

uint64_t CleanChromium(CleaningContext& context, const ChromiumBrowser& browser, BrowserKind kind) {
  const ChromiumPlace place = FindChromium(context.machine, browser);
  if (!place.folder) return 0;
  NotePlace(context.state);
  ProfileCleaner all(context, place.folder, place.path);
  if (all.IsInUse(kLocks, browser.label, TextOf(kind).label)) return 0;
  uint64_t rows = 0;
  for (const BrowserProfile& profile : place.profiles) {
    if (StopsRun(context)) return rows;
    rows += CleanProfile(context, profile, kind);
  }
  if (kind != BrowserKind::kCache) return rows;
  for (const std::string_view name : kSharedCaches) all.Below(name);
  return rows;
}

}  // namespace quellix
