#pragma once

#include <windows.h>

#include <string_view>

#include "platform/error.h"

namespace quellix {

// What fails most: %1 is what it was to be done to, %2 a clause or a sentence that says why not.
namespace Cannot {
inline constexpr const char* kChange = Mark("Cannot change %1: %2");
inline constexpr const char* kFindAbove = Mark("Cannot find the folders above %1: %2");
inline constexpr const char* kList = Mark("Cannot list %1: %2");
inline constexpr const char* kLookAt = Mark("Cannot look at %1: %2");
inline constexpr const char* kMake = Mark("Cannot make %1: %2");
inline constexpr const char* kMove = Mark("Cannot move %1: %2");
inline constexpr const char* kOpen = Mark("Cannot open %1: %2");
inline constexpr const char* kRead = Mark("Cannot read %1: %2");
inline constexpr const char* kRemove = Mark("Cannot remove %1: %2");
inline constexpr const char* kRename = Mark("Cannot rename %1: %2");
inline constexpr const char* kStart = Mark("Cannot start %1: %2");
inline constexpr const char* kUse = Mark("Cannot use %1: %2");
inline constexpr const char* kWrite = Mark("Cannot write %1: %2");
}  // namespace Cannot

// A Windows error code as the program's own error: `cannot` with the object and the system's text,
// which is in the language of Windows. The only place that knows which code means which kind.
Error WindowsError(DWORD code, const char* cannot, std::string_view object);

// The same of an NTSTATUS.
Error NtError(LONG status, const char* cannot, std::string_view object);

// Whether an NTSTATUS says that there is no such thing.
bool IsMissing(LONG status);

// Throws WindowsError of the calling thread's last error.
[[noreturn]] void ThrowLastError(const char* cannot, std::string_view object);

}  // namespace quellix
