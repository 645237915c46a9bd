#pragma once

#include "platform/system.h"

namespace quellix {

// The running Windows.
class Win32System : public System {
 public:
  std::string WindowsFolder() override;
  std::string SystemFolder() override;
  std::string TempFolder() override;
  std::optional<std::string> Environment(std::string_view name) override;
  WindowsVersion Version() override;
  bool IsServiceRunning(std::string_view name) override;
  bool IsProgramRunning(std::string_view name) override;
  std::vector<Drive> Drives() override;
  LocalTime Now() override;
  int64_t UtcNow() override;
  LocalTime ToLocalTime(int64_t filetime) override;
  Locale UserLocale() override;
  std::string FromAnsi(std::string_view bytes) override;
};

}  // namespace quellix
