#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/locale.h"

namespace quellix {

// What the system's scheduler starts by itself, named tasks of which each is described by a text
// in the scheduler's own form (XML, UTF-8).
class Scheduler {
 public:
  struct Task {
    std::string description;
    bool is_enabled = true;
    std::optional<LocalTime> next_run, last_run;  // nothing where there is none, or nobody knows
    std::optional<int32_t> last_result;           // the exit code of the last run
  };

  virtual ~Scheduler() = default;

  // Nothing when there is no task of that name. Throws Error.
  virtual std::optional<Task> Find(std::string_view name) = 0;
  // Takes the place of one that is there. Throws Error; what was there is then as it was.
  virtual void Register(std::string_view name, std::string_view description) = 0;
  // One that is missing is no error. Throws Error.
  virtual void Remove(std::string_view name) = 0;
};

}  // namespace quellix
