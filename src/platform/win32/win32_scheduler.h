#pragma once

#include "platform/scheduler.h"
#include "platform/win32/win32_com.h"

namespace quellix {

// The task scheduler of Windows 7 and later.
class Win32Scheduler : public Scheduler {
 public:
  explicit Win32Scheduler(Win32Com& com) : com_(com) {}

  std::optional<Task> Find(std::string_view name) override;
  void Register(std::string_view name, std::string_view description) override;
  void Remove(std::string_view name) override;

 private:
  Win32Com& com_;
};

}  // namespace quellix
