#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "browsers/profile_cleaner.h"
#include "platform/machine.h"

namespace quellix {

// A browser that is built on Chromium, by where it keeps what it knows.
struct ChromiumBrowser {
  std::string_view key;       // on the console and in lists
  std::string_view label;     // with its channel
  std::string_view variable;  // the folder below is in
  std::string_view folder;
  // Where it keeps one profile that is not in a folder of its own, and caches elsewhere.
  std::string_view cache_folder = {};  // below %LOCALAPPDATA%
};

std::span<const ChromiumBrowser> ChromiumBrowsers();

// Where it is on a machine. All paths end in "\".
struct ChromiumPlace {
  std::string path;  // of the user's data
  std::shared_ptr<Folder> folder;
  std::vector<BrowserProfile> profiles;  // of people, by their folders' names
};

// Without a folder when the browser has left nothing.
ChromiumPlace FindChromium(const Machine& machine, const ChromiumBrowser& browser);

}  // namespace quellix
