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

// What is where, by upper-case letters.
struct MappedDrives {
  std::map<char, std::string> folders;
  std::string windows_folder;
};

MappedDrives MapDrives(const VolumeOptions& options) {
  const std::string why_none = WhyNoFolder(options.volume);
  if (!why_none.empty()) throw Error(Error::Kind::kOther, options.volume + ": " + why_none);
  const FoundWindows windows = LookForWindows(options.volume);
  MappedDrives drives{options.drives, std::string(1, windows.letter) + ":\\" + windows.folder_name};
  if (drives.folders.contains(windows.letter)) {
    throw Error(Error::Kind::kOther, std::string("Drive ") + windows.letter +
                                         ": is the one with Windows and cannot be another folder.");
  }
  drives.folders[windows.letter] = options.volume;
  return drives;
}

}  // namespace

std::vector<VolumeUser> PersonsOn(const VolumeOptions& options) {
  const MappedDrives drives = MapDrives(options);
  VolumeFileSystem files(drives.folders);
  VolumeRegistry registry(files, FindHives(files, drives.windows_folder, {}));
  std::vector<VolumeUser> persons = FindUsers(files, registry, drives.windows_folder);
  for (const VolumeUser& person : persons) RequireOneProfile(persons, person.name);
  return persons;
}

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
  MappedDrives drives = MapDrives(options);
  MakeSettingsFolder(options.settings);
  drives.folders[kSettingsDrive] = options.settings;
  files_.emplace(drives.folders);
  windows_folder_ = drives.windows_folder;
}

Machine VolumeMachine::machine() {
  const std::string program_folder = std::string(1, kSettingsDrive) + ":";
  return {*files_,  *registry_, *shell_,   url_cache_,    *profile_,
          *system_, session_,   cleaners_, program_folder};
}

}  // namespace quellix
