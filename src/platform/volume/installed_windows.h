#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/user_profiles.h"
#include "platform/volume/volume_file_system.h"
#include "platform/volume/volume_registry.h"

namespace quellix {

using VolumeUser = UserProfile;

// The Windows on a volume.
struct InstalledWindows {
  std::string folder;  // "C:\Windows"
  std::vector<VolumeUser> users;
};

// The name of the root folder of a drive that holds a Windows; nothing when there is none.
std::optional<std::string> FindWindowsFolder(VolumeFileSystem& files, char drive);

// Where a Windows is: its root folder, and the letter it gives to its own drive ("C" when it does
// not tell).
struct FoundWindows {
  std::string folder_name;
  char letter;
};
// In a folder of this system. Throws Error (kMissing) that tells what was looked for.
FoundWindows LookForWindows(const std::string& volume);

// Path of a hive of the machine ("SOFTWARE", "SYSTEM", "DEFAULT") in a Windows folder.
std::string MachineHive(const std::string& windows_folder, std::string_view name);

// The letter Windows itself gives to the drive it is on; nothing when the registry does not tell.
std::optional<char> OwnDriveLetter(Registry& registry);

// The users with a profile and a registry of their own on the mapped drives.
std::vector<VolumeUser> FindUsers(VolumeFileSystem& files, Registry& registry,
                                  const std::string& windows_folder);

// The profiles of services, and the one that new users begin with.
std::vector<VolumeUser> FindOtherProfiles(VolumeFileSystem& files, Registry& registry,
                                          const std::string& windows_folder);

// Throws Error that names the folders where several users have profiles of that name.
void RequireOneProfile(const std::vector<VolumeUser>& users, const std::string& name);

// The user named, in any case, or the only one; of the others only one that is named. Throws Error
// that lists the names of users otherwise.
VolumeUser ChooseUser(const std::vector<VolumeUser>& users, const std::vector<VolumeUser>& others,
                      const std::string& name);

// All hives of the machine and of a user, those that exist.
HivePaths FindHives(VolumeFileSystem& files, const std::string& windows_folder,
                    const VolumeUser& user);

}  // namespace quellix
