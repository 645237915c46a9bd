#pragma once

#include "platform/error.h"
#include "platform/url_cache.h"

namespace quellix {

// The browser cache's index can be changed by a running Windows only.
class VolumeUrlCache : public UrlCache {
 public:
  void Enumerate(const UrlCacheVisitor&) override { Refuse(); }
  bool Delete(std::string_view) override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() {
    throw NotAvailable("The browser cache belongs to a running Windows.");
  }
};

}  // namespace quellix
