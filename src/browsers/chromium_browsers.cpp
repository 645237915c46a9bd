#include "browsers/chromium_browsers.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kLocal = "LOCALAPPDATA", kRoaming = "APPDATA";

constexpr ChromiumBrowser kBrowsers[] = {
    {"brave", "Brave", kLocal, "BraveSoftware\\Brave-Browser\\User Data"},
    {"brave-beta", "Brave Beta", kLocal, "BraveSoftware\\Brave-Browser-Beta\\User Data"},
    {"brave-nightly", "Brave Nightly", kLocal, "BraveSoftware\\Brave-Browser-Nightly\\User Data"},
    {"chrome", "Google Chrome", kLocal, "Google\\Chrome\\User Data"},
    {"chrome-beta", "Google Chrome Beta", kLocal, "Google\\Chrome Beta\\User Data"},
    {"chrome-canary", "Google Chrome Canary", kLocal, "Google\\Chrome SxS\\User Data"},
    {"chrome-dev", "Google Chrome Dev", kLocal, "Google\\Chrome Dev\\User Data"},
    {"chromium", "Chromium", kLocal, "Chromium\\User Data"},
    {"edge", "Microsoft Edge", kLocal, "Microsoft\\Edge\\User Data"},
    {"edge-beta", "Microsoft Edge Beta", kLocal, "Microsoft\\Edge Beta\\User Data"},
    {"edge-canary", "Microsoft Edge Canary", kLocal, "Microsoft\\Edge SxS\\User Data"},
    {"edge-dev", "Microsoft Edge Dev", kLocal, "Microsoft\\Edge Dev\\User Data"},
    {"opera", "Opera", kRoaming, "Opera Software\\Opera Stable", "Opera Software\\Opera Stable"},
    {"opera-beta", "Opera Beta", kRoaming, "Opera Software\\Opera Next",
     "Opera Software\\Opera Next"},
    {"opera-developer", "Opera Developer", kRoaming, "Opera Software\\Opera Developer",
     "Opera Software\\Opera Developer"},
    {"opera-gx", "Opera GX", kRoaming, "Opera Software\\Opera GX Stable",
     "Opera Software\\Opera GX Stable"},
    {"vivaldi", "Vivaldi", kLocal, "Vivaldi\\User Data"},
    {"vivaldi-snapshot", "Vivaldi Snapshot", kLocal, "Vivaldi Snapshot\\User Data"}};

// In any profile that was ever used.
constexpr const char* kMark = "Preferences";

// "Default", "Profile 2"; not those that the browser has for itself and for guests.
bool IsOfAPerson(std::string_view name) {
  return EqualsNoCase(name, "Default") || MatchesMask(name, "Profile *");
}

void AddProfile(ChromiumPlace& place, const std::string& name, const std::string& path,
                const std::string& cache_path, std::shared_ptr<Folder> folder) {
  if (!folder || !folder->Look(kMark, Detail::kKind)) return;
  place.profiles.push_back({name, path, cache_path, std::move(folder)});
}

}  // namespace

std::span<const ChromiumBrowser> ChromiumBrowsers() { return kBrowsers; }

ChromiumPlace FindChromium(const Machine& machine, const ChromiumBrowser& browser) {
  ChromiumPlace place;
  const auto variable = machine.system.Environment(browser.variable);
  const auto local = machine.system.Environment(kLocal);
  if (!variable || variable->empty()) return place;
  place.path = WithBackslash(*variable) + std::string(browser.folder) + "\\";
  std::string caches = place.path;
  if (!browser.cache_folder.empty() && local)
    caches = WithBackslash(*local) + std::string(browser.cache_folder) + "\\";
  try {
    place.folder = machine.files.OpenFolder(place.path);
    if (!place.folder) return place;
    // Opera's first profile once was the folder itself.
    if (!browser.cache_folder.empty())
      AddProfile(place, "Default", place.path, caches, place.folder);
    for (const std::string& name : FoldersIn(*place.folder, "*")) {
      if (!IsOfAPerson(name)) continue;
      AddProfile(place, name, place.path + name + "\\", caches + name + "\\",
                 place.folder->OpenFolder(name));
    }
  } catch (const Error&) {  // what cannot be opened cannot be cleaned either
  }
  return place;
}

}  // namespace quellix
