#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/pause.h"
#include "platform/system.h"

namespace quellix {

// The address in an Internet shortcut (*.url), which may be in UTF-8, UTF-16 or the system's code
// page; "" where the bytes hold none.
std::string ReadUrlFile(std::string_view bytes, System& system);

// What an exported list of bookmarks holds: a folder or an address.
struct Bookmark {
  std::string place;  // the folders that it lies in, with "\" between
  std::string name;
  std::string address;  // "" for a folder
  bool is_folder = false;
  bool is_empty = false;  // a folder with no address anywhere below
};

// Bookmarks in the form that browsers export (the Netscape bookmark file), in its order. What is
// none of it is passed over; of bytes that are no such file nothing is read.
// A stop ends it early. Throws Error where there are more than can be listed.
std::vector<Bookmark> ReadBookmarks(std::string_view bytes, System& system,
                                    const Pause& pause = {});

}  // namespace quellix
