#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "app/mod_shut_down.h"

namespace quellix {

enum class StartMode {
  kNormal,
  kWithWindows,  // "-s": a run starts when the settings say so
  kCleanNow,     // "-c": a run starts at once
  kHidden,       // "-h": a run starts at once, without a window, and then the program ends
  kWithRights,   // what needs administrator rights is cleaned, see RightsArguments
};

// How a command line starts the program: the arguments as they stand behind the program's name, in
// any case. Only a switch by itself counts, so one with anything beside it starts it normally.
StartMode ParseCommandLine(std::string_view arguments);

// What stands before the one path that Explorer's menu hands over.
inline constexpr std::string_view kRemoveSwitch = "--remove";

// The path behind it in a whole command line, the program's name in front: in quotes, which no name
// has in it, and full ("C:\\a b" or a share's); nothing for any other command line.
std::optional<std::string> ParseRemoval(std::string_view command_line);

// Takes "--then shutdown" (or restart, or logoff) off the end of the arguments: how the computer
// ends when the cleaning has ended. kNone where they do not end so.
modShutDown::Ending TakeEnding(std::string& arguments);

// Whether a cleaning run follows the start.
bool CleansAtStart(StartMode mode, bool startup_clean);

// Automatic cleaning at an interval. The clock is asked for FILETIMEs of universal time, which no
// change to daylight saving moves.
class AutoClean {
 public:
  explicit AutoClean(std::function<int64_t()> clock) : clock_(std::move(clock)) {}

  // Begins an interval of so many minutes now; less than 0 counts as 0. Nothing: no run starts.
  void Start(std::optional<int16_t> minutes);
  bool IsOn() const { return CleanInterval.has_value(); }

  // A tick of tmrClean. When more than the interval's minutes have begun since it started, and the
  // user could press Clean, `clean` is called once and a new interval begins when it returns.
  // A clock that is moved back takes the start of the interval along; one that is moved forward, as
  // by sleep, brings on one run at most.
  void Tick(const std::function<bool()>& can_clean, const std::function<void()>& clean);

 private:
  void FollowClock(int64_t now);
  bool IsOver(int64_t now) const;

  std::function<int64_t()> clock_;
  std::optional<int16_t> CleanInterval;  // minutes
  int64_t IntervalStart = 0;             // FILETIME
  int64_t last_tick_ = 0;                // FILETIME
};

}  // namespace quellix
