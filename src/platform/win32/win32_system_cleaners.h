#pragma once

#include <cstdint>

#include "platform/system_cleaners.h"

namespace quellix {

// The handlers that are registered below VolumeCaches. Each works on a thread of its own, so that
// the window answers however long it takes.
class Win32SystemCleaners : public SystemCleaners {
 public:
  // How long one that was stopped is waited for, in milliseconds.
  explicit Win32SystemCleaners(uint32_t patience = 10'000) : patience_(patience) {}

  std::vector<SystemCleaner> List() override;
  CleanerFind Use(std::string_view key, CleanerUse use, bool is_attended,
                  const Pause& pause) override;

 private:
  uint32_t patience_;
};

}  // namespace quellix
