#include "platform/volume/installed_windows.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr std::string_view kUserHive = "\\NTUSER.DAT";
constexpr std::string_view kUserClassesHives[] = {
    "\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat",
    "\\Local Settings\\Application Data\\Microsoft\\Windows\\UsrClass.dat",
};

bool Exists(VolumeFileSystem& files, const std::string& path) {
  return files.Look(path).has_value();
}

std::string DriveOf(const std::string& windows_folder) { return windows_folder.substr(0, 2); }

bool HasHive(VolumeFileSystem& files, const VolumeUser& user) {
  return Exists(files, user.profile + std::string(kUserHive));
}

// A profile may be listed twice, as after a repair of an account.
void KeepFirstOfEachProfile(std::vector<VolumeUser>& users) {
  for (auto user = users.begin(); user != users.end(); ++user) {
    const auto is_same = [&](const VolumeUser& other) {
      return EqualsNoCase(other.profile, user->profile);
    };
    users.erase(std::remove_if(user + 1, users.end(), is_same), users.end());
  }
}

// Of persons, or of the services.
std::vector<VolumeUser> UsersWithHive(VolumeFileSystem& files, Registry& registry,
                                      const std::string& windows_folder, Persons persons) {
  std::vector<VolumeUser> users = ListedProfiles(registry, windows_folder, persons);
  std::erase_if(users, [&files](const VolumeUser& user) { return !HasHive(files, user); });
  KeepFirstOfEachProfile(users);
  return users;
}

bool IsServiceProfile(std::string_view name) {
  static constexpr std::string_view kNames[] = {"Default",   "Default User", "Public",
                                                "All Users", "LocalService", "NetworkService"};
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [name](std::string_view other) { return EqualsNoCase(name, other); });
}

std::vector<VolumeUser> UsersOfFolders(VolumeFileSystem& files, const std::string& drive) {
  std::vector<VolumeUser> users;
  for (const char* parent : {"\\Users", "\\Documents and Settings"}) {
    const std::string folder = drive + parent;
    files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
      if (!entry.info.is_folder || entry.info.is_link || IsServiceProfile(entry.name)) return true;
      VolumeUser user{std::string(entry.name), "", folder + "\\" + std::string(entry.name)};
      if (HasHive(files, user)) users.push_back(std::move(user));
      return true;
    });
  }
  return users;
}

std::string Names(const std::vector<VolumeUser>& users) {
  std::string names;
  for (const VolumeUser& user : users) names += (names.empty() ? "" : ", ") + user.name;
  return names;
}

}  // namespace

std::optional<std::string> FindWindowsFolder(VolumeFileSystem& files, char drive) {
  std::optional<std::string> found;
  const std::string root = std::string(1, drive) + ":\\";
  files.Enumerate(root, Detail::kKind, [&](const Entry& entry) {
    if (!entry.info.is_folder || entry.info.is_link) return true;
    const std::string name(entry.name);
    if (Exists(files, MachineHive(root + name, "SOFTWARE")) && (!found || *found > name)) {
      found = name;
    }
    return true;
  });
  return found;
}

std::string MachineHive(const std::string& windows_folder, std::string_view name) {
  return windows_folder + "\\System32\\config\\" + std::string(name);
}

std::optional<char> OwnDriveLetter(Registry& registry) {
  const auto root = ReadText(registry, RegistryRoot::kLocalMachine, kCurrentVersion, "SystemRoot");
  if (!root || root->size() < 2 || (*root)[1] != ':') return std::nullopt;
  const char32_t letter = UpCase(static_cast<unsigned char>((*root)[0]));
  if (letter < 'A' || letter > 'Z') return std::nullopt;
  return static_cast<char>(letter);
}

// Looks with a drive letter of its own before the real one is known.
FoundWindows LookForWindows(const std::string& volume) {
  VolumeFileSystem files({{'C', volume}});
  const auto name = FindWindowsFolder(files, 'C');
  if (!name) {
    throw Error(Error::Kind::kMissing,
                "There is no Windows on this volume: no folder in " + volume +
                    " holds System32\\config\\SOFTWARE. (Windows 95, 98 and Me have no such "
                    "registry.)");
  }
  HivePaths paths;
  paths.software = MachineHive("C:\\" + *name, "SOFTWARE");
  VolumeRegistry registry(files, paths);
  return {*name, OwnDriveLetter(registry).value_or('C')};
}

std::vector<VolumeUser> FindUsers(VolumeFileSystem& files, Registry& registry,
                                  const std::string& windows_folder) {
  std::vector<VolumeUser> users = UsersWithHive(files, registry, windows_folder, Persons::kYes);
  return users.empty() ? UsersOfFolders(files, DriveOf(windows_folder)) : users;
}

std::vector<VolumeUser> FindOtherProfiles(VolumeFileSystem& files, Registry& registry,
                                          const std::string& windows_folder) {
  std::vector<VolumeUser> others = UsersWithHive(files, registry, windows_folder, Persons::kNo);
  for (const char* folder : {"\\Users\\Default", "\\Documents and Settings\\Default User"}) {
    VolumeUser profile{std::string(NamePart(folder)), "", DriveOf(windows_folder) + folder};
    if (HasHive(files, profile)) others.push_back(std::move(profile));
  }
  return others;
}

void RequireOneProfile(const std::vector<VolumeUser>& users, const std::string& name) {
  std::string folders;
  size_t count = 0;
  for (const VolumeUser& user : users) {
    if (!EqualsNoCase(user.name, name)) continue;
    folders += (count++ == 0 ? "" : " and ") + user.profile;
  }
  if (count > 1) {
    throw Error(Error::Kind::kOther,
                "Several users on this volume have a profile named \"" + name + "\": " + folders);
  }
}

VolumeUser ChooseUser(const std::vector<VolumeUser>& users, const std::vector<VolumeUser>& others,
                      const std::string& name) {
  const auto fits = [&name](const VolumeUser& user) {
    return name.empty() || EqualsNoCase(user.name, name);
  };
  const auto found = std::find_if(users.begin(), users.end(), fits);
  const auto named = std::find_if(others.begin(), others.end(), fits);
  if (found == users.end() && !name.empty() && named != others.end()) return *named;
  const std::string names = Names(users);
  if (users.empty()) throw Error(Error::Kind::kMissing, "There is no user on this volume.");
  if (found == users.end()) {
    throw Error(Error::Kind::kMissing,
                "There is no user \"" + name + "\" on this volume. Its users are: " + names);
  }
  if (name.empty() && users.size() > 1) {
    throw Error(Error::Kind::kOther,
                "There are several users on this volume, choose one of: " + names);
  }
  RequireOneProfile(users, found->name);
  return *found;
}

HivePaths FindHives(VolumeFileSystem& files, const std::string& windows_folder,
                    const VolumeUser& user) {
  const auto existing = [&files](const std::string& path) {
    return Exists(files, path) ? path : std::string();
  };
  HivePaths paths;
  paths.software = existing(MachineHive(windows_folder, "SOFTWARE"));
  paths.system = existing(MachineHive(windows_folder, "SYSTEM"));
  paths.defaults = existing(MachineHive(windows_folder, "DEFAULT"));
  paths.user = existing(user.profile + std::string(kUserHive));
  for (const std::string_view hive : kUserClassesHives) {
    if (paths.classes.empty()) paths.classes = existing(user.profile + std::string(hive));
  }
  paths.sid = user.sid;
  return paths;
}

}  // namespace quellix
