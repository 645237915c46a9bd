#include "platform/volume/volume_machine.h"

#include <filesystem>

#include "platform/error.h"
#include "platform/volume/volume_claim.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

void MakeSettingsFolder(const std::string& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) ThrowErrno(failure.value(), folder);
}

}  // namespace

VolumeMachine::VolumeMachine(const VolumeOptions& options) {
  OpenDrives(options);
  VolumeUser user;
  {
    VolumeRegistry registry(*files_, FindHives(*files_, windows_folder_, user));
    user = ChooseUser(FindUsers(*files_, registry, windows_folder_),
                      FindOtherProfiles(*files_, registry, windows_folder_), options.user);
  }
  registry_.emplace(*files_, FindHives(*files_, windows_folder_, user));
  registry_->KeepHives(options.keep_hives);
  system_.emplace(*files_, *registry_, windows_folder_, user);
  shell_.emplace(*files_, *system_, user);
  profile_.emplace(*files_, *system_);
}

void VolumeMachine::OpenDrives(const VolumeOptions& options) {
  const std::string why_none = WhyNoFolder(options.volume);
  if (!why_none.empty()) throw Error(Error::Kind::kOther, options.volume + ": " + why_none);
  const FoundWindows windows = LookForWindows(options.volume);
  std::map<char, std::string> drives = options.drives;
  if (drives.contains(windows.letter)) {
    throw Error(Error::Kind::kOther, std::string("Drive ") + windows.letter +
                                         ": is the one with Windows and cannot be another folder.");
  }
  MakeSettingsFolder(options.settings);
  drives[windows.letter] = options.volume;
  drives[kSettingsDrive] = options.settings;
  files_.emplace(drives);
  windows_folder_ = std::string(1, windows.letter) + ":\\" + windows.folder_name;
}

Machine VolumeMachine::machine() {
  const std::string program_folder = std::string(1, kSettingsDrive) + ":";
  return {*files_,  *registry_, *shell_,   url_cache_,    *profile_,
          *system_, session_,   cleaners_, program_folder};
}

}  // namespace quellix
