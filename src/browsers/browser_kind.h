#pragma once

#include <array>
#include <string_view>

#include "platform/words.h"

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
  std::string_view label;  // beside a box; named for the catalogues, as is what follows
  std::string_view cost;   // what its user loses besides traces, "" for nothing
  bool is_risky;           // that cannot be had again by any means
};

// In the order in which they are shown and cleaned.
inline constexpr std::array<BrowserKindText, 8> kBrowserKinds = {{
    {BrowserKind::kCache, "cache", Mark("Cache"), "", false},
    {BrowserKind::kCookies, "cookies", Mark("Cookies"), Mark("signs you out of web sites"), false},
    {BrowserKind::kHistory, "history", Mark("History"), "", false},
    {BrowserKind::kDownloads, "downloads", Mark("List of downloads"), "", false},
    {BrowserKind::kForms, "forms", Mark("Saved form information"),
     Mark("what you typed into forms is lost; saved addresses and cards stay"), true},
    {BrowserKind::kPasswords, "passwords", Mark("Saved passwords"),
     Mark("saved passwords are lost"), true},
    {BrowserKind::kSessions, "sessions", Mark("Open and closed tabs"),
     Mark("tabs that were open are not opened again"), true},
    {BrowserKind::kSiteData, "sitedata", Mark("Data of web sites"),
     Mark("what web sites keep on this computer is lost, mail and documents of web applications "
          "among "
          "it"),
     true},
}};

constexpr const BrowserKindText& TextOf(BrowserKind kind) {
  return kBrowserKinds[static_cast<size_t>(kind)];
}

}  // namespace quellix
