#pragma once

#include <string>

#include "platform/system.h"
#include "platform/user_profiles.h"
#include "platform/volume/installed_windows.h"

namespace quellix {

// What the Windows on a volume would tell its user, from its registry. Time is this system's.
class VolumeSystem : public System {
 public:
  VolumeSystem(VolumeFileSystem& files, Registry& registry, std::string windows_folder,
               const VolumeUser& user);
  VolumeSystem(const VolumeSystem&) = delete;
  VolumeSystem& operator=(const VolumeSystem&) = delete;

  std::string WindowsFolder() override { return windows_folder_; }
  std::string SystemFolder() override { return windows_folder_ + "\\System32"; }
  std::string TempFolder() override { return variables_.TempFolder(); }
  std::optional<std::string> Environment(std::string_view name) override {
    return variables_.Value(name);
  }
  WindowsVersion Version() override;
  bool IsServiceRunning(std::string_view) override { return false; }  // nothing runs on a volume
  bool IsProgramRunning(std::string_view) override { return false; }
  std::vector<Drive> Drives() override;
  LocalTime Now() override;
  int64_t UtcNow() override;
  LocalTime ToLocalTime(int64_t filetime) override;
  Locale UserLocale() override;
  std::string FromAnsi(std::string_view bytes) override;

 private:
  std::optional<std::string> OfWindows(std::string_view name);
  const std::string& AnsiCodePage();

  VolumeFileSystem& files_;
  Registry& registry_;
  std::string windows_folder_;
  UserVariables variables_;
  std::string ansi_code_page_;  // once it was read
};

}  // namespace quellix
