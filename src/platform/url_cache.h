#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// Type bits as Windows documents them for CacheEntryType.
enum UrlCacheType : uint32_t {
  kCookieEntry = 0x00100000,
  kUrlHistoryEntry = 0x00200000,
};

struct UrlCacheEntry {
  std::string source;      // its address: "http://…", "Cookie:user@…", "Visited: …"
  std::string local_file;  // "" when it has none
  uint32_t type = 0;       // UrlCacheType and other bits
  uint64_t size = 0;       // bytes of the local file
};

// The browser cache of the current user. Both throw Error (NotAvailable for a volume).
class UrlCache {
 public:
  virtual ~UrlCache() = default;

  virtual std::vector<UrlCacheEntry> Entries() = 0;
  // Deletes an entry with its local file; false when it is gone already or in use.
  virtual bool Delete(std::string_view source) = 0;
};

}  // namespace quellix
