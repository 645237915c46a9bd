#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "browsers/browser_kind.h"
#include "run/context.h"

namespace quellix {

inline constexpr std::string_view kFirefoxKey = "firefox";  // its key

// A browser that this machine's user has, or had, with what of it can be cleaned.
struct FoundBrowser {
  std::string_view key;    // "chrome-beta": on the console and in lists
  std::string_view label;  // "Google Chrome Beta"
  size_t profiles = 0;
  std::vector<BrowserKind> kinds;  // in their order
};

// By label. Changes nothing and never throws Error.
std::vector<FoundBrowser> FindBrowsers(const Machine& machine);

// A kind of a browser, as "chrome:cookies" names it; a browser's key alone names all that costs
// nothing but traces.
struct BrowserChoice {
  std::string_view browser;  // a FoundBrowser's key
  BrowserKind kind;
};
// What a name means on this machine. Where there is no such browser or kind, `problem` is given a
// sentence and nothing is returned.
std::vector<BrowserChoice> ParseBrowserChoice(const std::vector<FoundBrowser>& browsers,
                                              std::string_view name, std::string& problem);
// "chrome:cookies"
std::string NameOf(const BrowserChoice& choice);

// Cleans a kind in all profiles of a browser, within a run that is begun, and writes its line into
// RunLog: its entries carry the choice's name as their rule. Never throws Error.
void CleanBrowser(CleaningContext& context, const BrowserChoice& choice);

}  // namespace quellix
