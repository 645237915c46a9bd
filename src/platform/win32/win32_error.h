#pragma once

#include <windows.h>

#include <string_view>

#include "platform/error.h"

namespace quellix {

// A Windows error code as the program's own error: "Cannot `action` `object`: " and the system's
// text. The only place that knows which code means which kind.
Error WindowsError(DWORD code, std::string_view action, std::string_view object);

// The same of an NTSTATUS.
Error NtError(LONG status, std::string_view action, std::string_view object);

// Whether an NTSTATUS says that there is no such thing.
bool IsMissing(LONG status);

// Throws WindowsError of the calling thread's last error.
[[noreturn]] void ThrowLastError(std::string_view action, std::string_view object);

}  // namespace quellix
