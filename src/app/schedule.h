#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/locale.h"
#include "platform/scheduler.h"

namespace quellix {

// When the system starts a hidden cleaning.
struct Schedule {
  enum class When { kNever, kDaily, kWeekly, kAtLogOn, kWhenIdle };
  When when = When::kNever;
  int hour = 12, minute = 0;  // of the first two
  int weekday = 1;            // of the second: 0 is Sunday
  bool operator==(const Schedule&) const = default;
};

// Sentences of the page that sets it: when it runs next, and what came of the last time.
struct ScheduleState {
  Schedule schedule;
  std::string next, last;
};

// The one task of a user, found and changed under its own name and never doubled.
class ScheduledCleaning {
 public:
  // `program`: the full path of quellix.exe; `user`: his security identifier. `scheduler` must
  // outlive it.
  ScheduledCleaning(Scheduler& scheduler, std::string program, std::string user)
      : scheduler_(scheduler), program_(std::move(program)), user_(std::move(user)) {}

  // Of the task as it stands now; one whose times were changed elsewhere to what cannot be told
  // here counts as daily. Throws Error.
  ScheduleState Look(const Locale& locale) const;
  // kNever takes the task away. Nothing is done where it is so already. Throws Error.
  void Set(const Schedule& wanted);

 private:
  std::string Name() const;

  Scheduler& scheduler_;
  std::string program_, user_;
};

// The scheduler's own form of it, and back: nothing for a text that is none of ours.
std::string ScheduleText(const Schedule& schedule, std::string_view program, std::string_view user);
std::optional<Schedule> ParseSchedule(std::string_view text);

}  // namespace quellix
