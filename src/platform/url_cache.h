#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// Type bits as Windows documents them for CacheEntryType.
enum UrlCacheType : uint32_t {
  kNormalEntry = 0x00000001,
  kHttp11Entry = 0x00000040,
  kCookieEntry = 0x00100000,
  kUrlHistoryEntry = 0x00200000,
};

struct UrlCacheEntry {
  std::string source;      // its address: "http://…", "Cookie:user@…", "Visited: …"
  std::string local_file;  // "" when it has none
  uint32_t type = 0;       // UrlCacheType and other bits
  uint64_t size = 0;       // bytes of the local file
  uint32_t hit_rate = 0;   // how often it was used
  // FILETIMEs; 0 is a time that was never set.
  int64_t last_access = 0, last_modified = 0, expires = 0;
};

// Returns false to end the enumeration.
using UrlCacheVisitor = std::function<bool(const UrlCacheEntry&)>;

// The browser cache of the current user. All functions throw Error (NotAvailable for a volume).
class UrlCache {
 public:
  virtual ~UrlCache() = default;

  // Visits every entry, in the cache's order; the visitor changes nothing in the cache. Throws
  // behind the entries that could be read.
  virtual void Enumerate(const UrlCacheVisitor& visit) = 0;
  // Deletes an entry with its local file; false when it is gone already or in use.
  virtual bool Delete(std::string_view source) = 0;

  std::vector<UrlCacheEntry> Entries() {
    std::vector<UrlCacheEntry> entries;
    Enumerate([&](const UrlCacheEntry& entry) {
      entries.push_back(entry);
      return true;
    });
    return entries;
  }
};

}  // namespace quellix
