#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace quellix {

// Whether an entry starts with Windows, as the task manager of Windows 8 and later keeps it beside
// the entry: a value of the entry's name in a key below kApprovedKey.
struct StartupApproval {
  bool is_on = true;
  int64_t since = 0;  // FILETIME at which it was switched off; 0 where that is not told
};

inline constexpr const char* kApprovedKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\";

// One that cannot be understood leaves its entry on, as one that is not there does.
StartupApproval ReadApproval(const RegistryValue& value);
// As the task manager writes it.
RegistryValue ApprovalOf(bool is_on, int64_t now);

}  // namespace quellix
