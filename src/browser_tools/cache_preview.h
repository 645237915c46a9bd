#pragma once

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// Cookies and visits are records of the cache, not something to browse to.
bool IsCacheRecord(std::string_view source);

// Whom a cookie or visit belongs to and which address it is for, a line each:
// "User: tester\nAddress: shop.example/". Without an "@" there is no user.
std::string DescribeCacheRecord(std::string_view source);

// What is kept of an entry, for where it cannot be shown as a page. One of both is "".
struct CacheContent {
  std::string text;     // of the file, lines parted by "\n", or a sentence why there is none
  std::string picture;  // full path of the file when it is a picture
};

// Reads the beginning of the entry's file. Never throws.
CacheContent ReadCacheContent(const Machine& machine, const UrlCacheEntry& entry);

}  // namespace quellix
