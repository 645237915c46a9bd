#pragma once

#include "platform/url_cache.h"

namespace quellix {

// The WinINet cache of the logged-on user.
class Win32UrlCache : public UrlCache {
 public:
  std::vector<UrlCacheEntry> Entries() override;
  bool Delete(std::string_view source) override;
};

}  // namespace quellix
