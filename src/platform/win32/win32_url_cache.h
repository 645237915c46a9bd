#pragma once

#include "platform/url_cache.h"

namespace quellix {

// The cache of Windows' own internet functions, which Internet Explorer keeps.
class Win32UrlCache : public UrlCache {
 public:
  void Enumerate(const UrlCacheVisitor& visit) override;
  bool Delete(std::string_view source) override;
};

}  // namespace quellix
