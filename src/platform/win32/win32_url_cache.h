#pragma once

#include "platform/url_cache.h"

namespace quellix {

// The cache of Windows' own internet functions, which Internet Explorer keeps.
class Win32UrlCache : public UrlCache {
 public:
  std::vector<UrlCacheEntry> Entries() override;
  bool Delete(std::string_view source) override;
};

}  // namespace quellix
