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

std::optional<VolumeUser> UserOfProfile(VolumeFileSystem& files, std::string sid,
                                        std::string profile) {
  if (!Exists(files, profile + std::string(kUserHive))) return std::nullopt;
  std::string name(NamePart(profile));
  return VolumeUser{std::move(name), std::move(sid), std::move(profile)};
}

// Accounts of persons, of a machine or domain and of the Microsoft cloud.
bool IsPerson(std::string_view sid) {
  const bool known = sid.starts_with("S-1-5-21-") || sid.starts_with("S-1-12-1-");
  return known && sid.find('.') == std::string_view::npos;
}

// Of persons, or of the services.
std::vector<VolumeUser> UsersOfProfileList(VolumeFileSystem& files, Registry& registry,
                                           const std::string& windows_folder, bool persons) {
  std::vector<VolumeUser> users;
  const std::string list = std::string(kCurrentVersion) + "\\ProfileList";
  const auto key = registry.Open(RegistryRoot::kLocalMachine, list, RegistryAccess::kRead);
  for (uint32_t i = 0; key; ++i) {
    const auto sid = key->SubKeyAt(i);
    if (!sid) break;
    if (IsPerson(*sid) != persons) continue;
    auto path =
        ReadText(registry, RegistryRoot::kLocalMachine, list + "\\" + *sid, "ProfileImagePath");
    if (!path) continue;
    *path = ReplaceNoCase(*path, "%SystemDrive%", DriveOf(windows_folder));
    *path = ReplaceNoCase(*path, "%SystemRoot%", windows_folder);
    if (auto user = UserOfProfile(files, *sid, std::string(WithoutBackslash(*path)))) {
      users.push_back(std::move(*user));
    }
  }
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
      auto user = UserOfProfile(files, "", folder + "\\" + std::string(entry.name));
      if (user) users.push_back(std::move(*user));
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

std::optional<std::string> ReadText(Registry& registry, RegistryRoot root, std::string_view key,
                                    std::string_view name) {
  const auto open = registry.Open(root, key, RegistryAccess::kRead);
  const auto value = open ? open->QueryValue(name) : std::nullopt;
  if (!value || (value->type != kRegSz && value->type != kRegExpandSz)) return std::nullopt;
  return std::string(TrimNull(FromUtf16Bytes(value->bytes)));
}

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
  std::vector<VolumeUser> users = UsersOfProfileList(files, registry, windows_folder, true);
  return users.empty() ? UsersOfFolders(files, DriveOf(windows_folder)) : users;
}

std::vector<VolumeUser> FindOtherProfiles(VolumeFileSystem& files, Registry& registry,
                                          const std::string& windows_folder) {
  std::vector<VolumeUser> others = UsersOfProfileList(files, registry, windows_folder, false);
  for (const char* folder : {"\\Users\\Default", "\\Documents and Settings\\Default User"}) {
    if (auto profile = UserOfProfile(files, "", DriveOf(windows_folder) + folder))
      others.push_back(std::move(*profile));
  }
  return others;
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
