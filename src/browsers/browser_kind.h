#pragma once

#include <array>
#include <string_view>

namespace quellix {

// What of a browser goes by itself.
enum class BrowserKind {
  kCache,
  kCookies,
  kHistory,
  kDownloads,  // of Firefox alone: elsewhere the history holds them
  kForms,
  kPasswords,
  kSessions,
  kSiteData
};

struct BrowserKindText {
  BrowserKind kind;
  std::string_view key;    // on the console and in lists
  std::string_view label;  // beside a box
  std::string_view cost;   // what its user loses besides traces, "" for nothing
  bool is_risky;           // that cannot be had again by any means
};

// In the order in which they are shown and cleaned.
inline constexpr std::array<BrowserKindText, 8> kBrowserKinds = {{
    {BrowserKind::kCache, "cache", "Cache", "", false},
    {BrowserKind::kCookies, "cookies", "Cookies", "signs you out of web sites", false},
    {BrowserKind::kHistory, "history", "History", "", false},
    {BrowserKind::kDownloads, "downloads", "List of downloads", "", false},
    {BrowserKind::kForms, "forms", "Saved form information",
     "what you typed into forms is lost; saved addresses and cards stay", true},
    {BrowserKind::kPasswords, "passwords", "Saved passwords", "saved passwords are lost", true},
    {BrowserKind::kSessions, "sessions", "Open and closed tabs",
     "tabs that were open are not opened again", true},
    {BrowserKind::kSiteData, "sitedata", "Data of web sites",
     "what web sites keep on this computer is lost, mail and documents of web applications among "
     "it",
     true},
}};

constexpr const BrowserKindText& TextOf(BrowserKind kind) {
  return kBrowserKinds[static_cast<size_t>(kind)];
}

}  // namespace quellix
