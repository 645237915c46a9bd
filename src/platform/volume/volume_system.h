#pragma once

#include <string>

#include "platform/system.h"
#include "platform/volume/installed_windows.h"

namespace quellix {

// What the Windows on a volume would tell its user, from its registry. Time is this system's.
class VolumeSystem : public System {
 public:
  VolumeSystem(VolumeFileSystem& files, Registry& registry, std::string windows_folder,
               VolumeUser user)
      : files_(files),
        registry_(registry),
        windows_folder_(std::move(windows_folder)),
        user_(std::move(user)) {}

  std::string WindowsFolder() override { return windows_folder_; }
  std::string SystemFolder() override { return windows_folder_ + "\\System32"; }
  std::string TempFolder() override;
  std::optional<std::string> Environment(std::string_view name) override;
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
  // How far one look-up of a variable has gone.
  struct Expansion {
    int depth = 0, count = 0;
  };

  std::optional<std::string> Variable(std::string_view name, Expansion& expansion);
  std::optional<std::string> RawVariable(std::string_view name);
  std::optional<std::string> WellKnownVariable(std::string_view name);
  std::string Expand(std::string_view text, Expansion& expansion);
  std::string LocalFolder(std::string_view now, std::string_view before_vista);
  const std::string& AnsiCodePage();

  VolumeFileSystem& files_;
  Registry& registry_;
  std::string windows_folder_;
  VolumeUser user_;
  std::string ansi_code_page_;  // once it was read
};

}  // namespace quellix
