#include "browsers/browser_catalogue.h"

#include <algorithm>

#include "browsers/chromium_cleaner.h"
#include "browsers/firefox_cleaner.h"
#include "browsers/firefox_profiles.h"
#include "cleaners/skeleton.h"
#include "platform/text.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

std::vector<BrowserKind> KindsOf(bool is_firefox) {
  std::vector<BrowserKind> kinds;
  for (const BrowserKindText& row : kBrowserKinds) {
    if (is_firefox || row.kind != BrowserKind::kDownloads) kinds.push_back(row.kind);
  }
  return kinds;
}

const ChromiumBrowser* FindChromiumBrowser(std::string_view key) {
  const auto found = std::ranges::find(ChromiumBrowsers(), key, &ChromiumBrowser::key);
  return found == ChromiumBrowsers().end() ? nullptr : &*found;
}

std::string_view LabelOf(const BrowserChoice& choice) {
  const ChromiumBrowser* const chromium = FindChromiumBrowser(choice.browser);
  return chromium == nullptr ? "Firefox" : chromium->label;
}

uint64_t CleanRows(CleaningContext& context, const BrowserChoice& choice) {
  if (const ChromiumBrowser* const chromium = FindChromiumBrowser(choice.browser))
    return CleanChromium(context, *chromium, choice.kind);
  uint64_t rows = 0;
  for (const BrowserProfile& profile : FindFirefoxProfiles(context.machine)) {
    if (StopsRun(context)) break;
    rows += CleanFirefoxProfile(context, profile, choice.kind);
  }
  return rows;
}

}  // namespace

std::vector<FoundBrowser> FindBrowsers(const Machine& machine) {
  std::vector<FoundBrowser> found;
  for (const ChromiumBrowser& browser : ChromiumBrowsers()) {
    const size_t profiles = FindChromium(machine, browser).profiles.size();
    if (profiles > 0) found.push_back({browser.key, browser.label, profiles, KindsOf(false)});
  }
  if (const size_t profiles = FindFirefoxProfiles(machine).size())
    found.push_back({kFirefoxKey, "Firefox", profiles, KindsOf(true)});
  std::ranges::sort(found, {}, &FoundBrowser::label);
  return found;
}

std::vector<BrowserChoice> ParseBrowserChoice(const std::vector<FoundBrowser>& browsers,
                                              std::string_view name, std::string& problem) {
  const size_t colon = name.find(':');
  const std::string_view key = name.substr(0, colon);
  const auto browser = std::ranges::find_if(
      browsers, [key](const FoundBrowser& each) { return EqualsNoCase(each.key, key); });
  if (browser == browsers.end()) {
    problem = "there is no browser \"" + std::string(key) + "\" here.";
    return {};
  }
  std::vector<BrowserChoice> choices;
  for (const BrowserKind kind : browser->kinds) {
    const BrowserKindText& text = TextOf(kind);
    const bool is_named =
        colon == name.npos ? text.cost.empty() : EqualsNoCase(text.key, name.substr(colon + 1));
    if (is_named) choices.push_back({browser->key, kind});
  }
  if (choices.empty())
    problem = std::string(browser->label) + " has nothing that is called \"" +
              std::string(name.substr(colon + 1)) + "\".";
  return choices;
}

std::string NameOf(const BrowserChoice& choice) {
  return std::string(choice.browser).append(":").append(TextOf(choice.kind).key);
}

void CleanBrowser(CleaningContext& context, const BrowserChoice& choice) {
  RunState& state = context.state;
  ResetItemCounters(state);
  state.Entries->BeginRule(NameOf(choice));
  const uint64_t rows = CleanRows(context, choice);
  state.Entries->BeginRule("");
  if (state.AbortRequested) return;
  AppendBrowserLine(context, LabelOf(choice), TextOf(choice.kind).label, rows);
}

}  // namespace quellix
