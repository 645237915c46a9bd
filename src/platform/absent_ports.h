#pragma once

#include <string>

#include "platform/error.h"
#include "platform/system_cleaners.h"
#include "platform/url_cache.h"

namespace quellix {

// Ports that a machine cannot have; each use throws NotAvailable with a sentence that says why,
// named for the catalogues.

class AbsentUrlCache : public UrlCache {
 public:
  explicit AbsentUrlCache(std::string why) : why_(std::move(why)) {}
  void Enumerate(const UrlCacheVisitor&) override { throw NotAvailable(Say(why_)); }
  bool Delete(std::string_view) override { throw NotAvailable(Say(why_)); }

 private:
  std::string why_;
};

class AbsentSystemCleaners : public SystemCleaners {
 public:
  explicit AbsentSystemCleaners(std::string why) : why_(std::move(why)) {}
  std::vector<SystemCleaner> List() override { throw NotAvailable(Say(why_)); }
  CleanerFind Use(std::string_view, CleanerUse, bool, const Pause&) override {
    throw NotAvailable(Say(why_));
  }

 private:
  std::string why_;
};

}  // namespace quellix
