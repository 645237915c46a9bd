#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/locale.h"

namespace quellix {

struct WindowsVersion {
  int platform = 2;  // 1 is Windows 95 to Me, 2 is Windows NT and later
  int major = 0, minor = 0;
};

enum class DriveType { kUnknown, kNoRoot, kRemovable, kFixed, kRemote, kCdRom, kRamDisk };

struct Drive {
  char letter = 'C';  // upper case
  DriveType type = DriveType::kUnknown;
};

// What a Windows tells about itself and its user.
class System {
 public:
  virtual ~System() = default;

  virtual std::string WindowsFolder() = 0;  // without trailing "\"
  virtual std::string SystemFolder() = 0;   // without trailing "\"
  virtual std::string TempFolder() = 0;     // with trailing "\"
  // Nothing when the variable is not set. Names compare without regard to case.
  virtual std::optional<std::string> Environment(std::string_view name) = 0;
  virtual WindowsVersion Version() = 0;
  // Whether a Windows service runs at the moment; false when it is not installed.
  virtual bool IsServiceRunning(std::string_view name) = 0;
  // Whether a program runs in this user's session, by its file's name ("notepad.exe"); false when
  // that cannot be told.
  virtual bool IsProgramRunning(std::string_view name) = 0;
  virtual std::vector<Drive> Drives() = 0;  // by letter
  virtual LocalTime Now() = 0;
  virtual int64_t UtcNow() = 0;  // FILETIME
  // A FILETIME in the user's time zone, by the rules of its own day.
  virtual LocalTime ToLocalTime(int64_t filetime) = 0;
  virtual Locale UserLocale() = 0;
  // Bytes in the system's ANSI code page, as UTF-8. Bytes without a meaning become U+FFFD.
  virtual std::string FromAnsi(std::string_view bytes) = 0;
};

// The FILETIME of a time in the user's zone, by the rules of its own day; 0 when it is no date.
int64_t FromLocalTime(System& system, const LocalTime& time);

// The text with every %NAME% replaced by its value; "" when one has none, or an empty one.
using VariableValue = std::function<std::optional<std::string>(std::string_view name)>;
std::string ExpandVariables(std::string_view text, const VariableValue& value_of);
// The same by the environment.
std::string ExpandEnvironment(System& system, std::string_view text);

}  // namespace quellix
