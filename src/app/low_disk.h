#pragma once

#include <cstdint>
#include <functional>

#include "settings/settings.h"

namespace quellix {

// Cleaning when little is free on the drive of Windows, once a day at most, also over several
// starts of the program: when it was is kept in Settings.ini. While what is free there is wiped, by
// this program or another copy in its folder, the drive is full for that alone.
class LowDiskClean {
 public:
  // The ports must outlive it.
  explicit LowDiskClean(const Machine& machine) : machine_(machine), settings_(machine) {}

  // Looks out for less than so many per cent; 0 for nothing.
  void Start(int16_t percent);
  bool IsOn() const { return percent_ > 0; }

  // A tick of a timer; the drive is asked once a minute. Where less is free, nothing is known of a
  // run within a day, and the user could press Clean, that day begins, which is stored, and `clean`
  // is called. It is not where that cannot be stored. Never throws Error of its own.
  void Tick(const std::function<bool()>& can_clean, const std::function<void()>& clean);

 private:
  bool IsLow() const;
  bool BeginDay(int64_t now);

  Machine machine_;
  Settings settings_;
  int16_t percent_ = 0;
  int64_t last_look_ = 0;  // FILETIME; 0 for never
};

}  // namespace quellix
