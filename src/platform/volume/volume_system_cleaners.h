#pragma once

#include "platform/error.h"
#include "platform/system_cleaners.h"

namespace quellix {

// The code of a volume's Windows cannot be run.
class VolumeSystemCleaners : public SystemCleaners {
 public:
  std::vector<SystemCleaner> List() override { Refuse(); }
  CleanerFind Use(std::string_view, CleanerUse, bool, const Pause&) override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() {
    throw NotAvailable("The cleaners of Windows itself work only on a running Windows.");
  }
};

}  // namespace quellix
