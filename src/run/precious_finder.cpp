#include "run/precious_finder.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/known_folders.h"
#include "run/precious_names.h"
#include "settings/own_files.h"
#include "settings/settings.h"

namespace quellix {
namespace {

using enum RegistryRoot;
using NameList = std::initializer_list<const char*>;

constexpr const char* kProfileList = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
constexpr const char* kShellKeys[] = {
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"};

// Below the Windows folder.
constexpr NameList kWindowsFolders = {"System32",
                                      "SysWOW64",
                                      "SysArm32",
                                      "System",
                                      "assembly",
                                      "Fonts",
                                      "inf",
                                      "Microsoft.NET",
                                      "SystemApps",
                                      "ImmersiveControlPanel",
                                      "SystemResources",
                                      "Resources",
                                      "security",
                                      "PolicyDefinitions",
                                      "Globalization",
                                      "registration",
                                      "AppPatch",
                                      "IME",
                                      "Media",
                                      "Provisioning"};
constexpr NameList kWindowsTrees = {"WinSxS",
                                    "Installer",
                                    "servicing",
                                    "Boot",
                                    "System32\\config",
                                    "System32\\drivers",
                                    "System32\\DriverStore",
                                    "System32\\Boot",
                                    "System32\\Recovery",
                                    "SysWOW64\\config",
                                    "SysWOW64\\drivers",
                                    "System32\\wbem\\Repository",
                                    "System32\\Tasks"};
constexpr NameList kFreeInWindows = {
    "System32\\LogFiles",
    "System32\\winevt\\Logs",
    "System32\\spool\\PRINTERS",
    "System32\\wbem\\Logs",
    "System32\\wdi\\LogFiles",
    "System32\\sru",
    "security\\logs",
    "System32\\config\\systemprofile\\AppData\\Local\\Temp",
    "System32\\config\\systemprofile\\AppData\\Local\\Microsoft\\Windows\\INetCache",
    "SysWOW64\\config\\systemprofile\\AppData\\Local\\Temp",
    "SysWOW64\\config\\systemprofile\\AppData\\Local\\Microsoft\\Windows\\INetCache"};

// Below a profile.
constexpr NameList kProfileHomes = {"AppData",
                                    "AppData\\Roaming",
                                    "AppData\\Roaming\\Microsoft",
                                    "AppData\\Roaming\\Microsoft\\Windows",
                                    "AppData\\Local",
                                    "AppData\\Local\\Microsoft",
                                    "AppData\\Local\\Microsoft\\Windows",
                                    "AppData\\Local\\Packages",
                                    "AppData\\LocalLow",
                                    "Application Data",
                                    "Application Data\\Microsoft",
                                    "Local Settings",
                                    "Local Settings\\Application Data",
                                    "Local Settings\\Application Data\\Microsoft"};
constexpr NameList kProfileTrees = {"AppData\\Roaming\\Microsoft\\Protect",
                                    "AppData\\Roaming\\Microsoft\\Crypto",
                                    "AppData\\Roaming\\Microsoft\\Credentials",
                                    "AppData\\Roaming\\Microsoft\\Vault",
                                    "AppData\\Roaming\\Microsoft\\SystemCertificates",
                                    "AppData\\Local\\Microsoft\\Vault",
                                    "AppData\\Local\\Microsoft\\Credentials",
                                    "Application Data\\Microsoft\\Protect",
                                    "Application Data\\Microsoft\\Crypto",
                                    "Application Data\\Microsoft\\Credentials",
                                    ".ssh",
                                    ".gnupg"};
constexpr NameList kPersonalFolders = {"Desktop",
                                       "Documents",
                                       "My Documents",
                                       "Downloads",
                                       "Pictures",
                                       "My Pictures",
                                       "Music",
                                       "My Music",
                                       "Videos",
                                       "My Videos",
                                       "Favorites",
                                       "Links",
                                       "Contacts",
                                       "Saved Games",
                                       "Searches",
                                       "Start Menu",
                                       "AppData\\Roaming\\Microsoft\\Windows\\Start Menu",
                                       "Dropbox",
                                       "Google Drive",
                                       "iCloudDrive",
                                       "Nextcloud",
                                       "Creative Cloud Files",
                                       "Box",
                                       "My Documents\\My Pictures",
                                       "My Documents\\My Music",
                                       "My Documents\\My Videos"};

// Values of a user's list of folders.
constexpr NameList kMovedHomes = {"AppData", "Local AppData",
                                  "{A520A1A4-1780-4FF6-BD18-167343C5AF16}"};
constexpr NameList kMovedPersonal = {
    "Desktop",  "Personal",  "My Pictures", "My Music",
    "My Video", "Favorites", "Start Menu",  "{374DE290-123F-4565-9164-39C4925E467B}"};

template <class Visit>
void ForEachFolder(Folder& folder, const Visit& visit) {
  std::vector<std::string> names;
  try {
    folder.Enumerate(Detail::kKind, [&names](const Entry& entry) {
      if (entry.info.is_folder && !entry.info.is_link) names.emplace_back(entry.name);
      return true;
    });
    for (const std::string& name : names) visit(name);
  } catch (const Error&) {  // what cannot be listed cannot be emptied
  }
}

}  // namespace

void PreciousFinder::Find(std::string_view backup_folder) {
  Note(machine_.program_folder, Kind::kOwn);
  Note(machine_.installed_folder, Kind::kOwn);
  Note(backup_folder, Kind::kOwn);
  NoteOtherCopy();
  FindDrives();
  FindWindows();
  FindPrograms();
  FindProfiles();
  FindKnownFolders();
  FindOthersFolders();
}

// What a copy with other rights backs up to.
void PreciousFinder::NoteOtherCopy() try {
  if (FoundFolders(machine_).size() > 1)
    Note(Settings(BesideProgram(machine_)).Load().BackupFolder, Kind::kOwn);
} catch (const Error&) {  // its settings cannot be read, nor are its backups listed
  return;
}

std::unique_ptr<Folder> PreciousFinder::Open(std::string_view path) {
  pause_();
  try {
    return path.empty() ? nullptr : machine_.files.OpenFolder(path);
  } catch (const Error&) {
    return nullptr;
  }
}

// Of a link what it leads to: someone may come there by another path.
void PreciousFinder::Note(std::string_view path, Kind kind) {
  pause_();
  try {
    const auto folder = path.empty() ? nullptr : machine_.files.OpenLinked(path);
    if (folder) places_.Note(*folder, kind);
  } catch (const Error&) {  // nothing else can open it either
  }
}

void PreciousFinder::NoteIn(FolderBranch& branch, std::initializer_list<const char*> names,
                            Kind kind) {
  for (const char* name : names) {
    pause_();
    const FolderBranch::Place& place = branch.Find(name);
    if (place.folder) places_.Note(*place.folder, kind, &place.above);
  }
}

void PreciousFinder::FindDrives() {
  for (const Drive& drive : machine_.system.Drives()) {
    const bool is_disk = drive.type == DriveType::kFixed || drive.type == DriveType::kRamDisk;
    if (!is_disk && (drive.type != DriveType::kRemovable || drive.letter < 'C')) continue;
    const auto root = Open(std::string(1, drive.letter) + ":\\");
    if (!root) continue;
    places_.Note(*root, Kind::kHome);
    FolderBranch below(*root);
    NoteIn(below,
           {"Boot", "EFI", "Recovery", "System Volume Information", "$Recycle.Bin", "RECYCLER",
            "RECYCLED", "$WinREAgent", "Config.Msi"},
           Kind::kTree);
    for (const char* name :
         {"pagefile.sys", "hiberfil.sys", "swapfile.sys", "bootmgr", "BOOTNXT", "BOOTSECT.BAK",
          "ntldr", "NTDETECT.COM", "boot.ini", "io.sys", "msdos.sys", "command.com"}) {
      places_.NoteFile(*root, name);
    }
    FindWhatToSpare(*root, below);
  }
}

void PreciousFinder::FindWhatToSpare(Folder& root, FolderBranch& below) {
  for (const char* name : {"$Recycle.Bin", "RECYCLER", "RECYCLED"}) {
    if (const auto& place = below.Find(name); place.folder) places_.NoteToSpare(*place.folder);
  }
  for (const char* name : {"pagefile.sys", "hiberfil.sys", "swapfile.sys"}) {
    NoteFileToSpare(root, name);
  }
  ForEachFolder(root, [&](const std::string& name) {
    if (!IsPreviousWindows(name)) return;
    if (const FolderBranch::Place& old = below.Find(name); old.folder) {
      places_.NoteToSpare(*old.folder);
    }
  });
}

// Event logs of before Windows Vista lie between the hives.
void PreciousFinder::FindOldEventLogs(FolderBranch& in_system) {
  const FolderBranch::Place& config = in_system.Find("config");
  if (!config.folder) return;
  for (const char* name : {"AppEvent.Evt", "SecEvent.Evt", "SysEvent.Evt", "Internet.evt"}) {
    NoteFileToSpare(*config.folder, name);
  }
}

void PreciousFinder::NoteFileToSpare(Folder& folder, std::string_view name) {
  try {
    places_.NoteFileToSpare(folder, name);
  } catch (const Error&) {  // nothing else can look at it either
  }
}

void PreciousFinder::FindWindows() {
  const auto windows = Open(machine_.system.WindowsFolder());
  if (!windows) return;
  places_.Note(*windows, Kind::kRoot);
  FolderBranch below(*windows);
  NoteIn(below, kWindowsFolders, Kind::kSystem);
  NoteIn(below, kWindowsTrees, Kind::kTree);
  if (const auto& place = below.Find("Installer"); place.folder)
    places_.NotePackages(*place.folder);
  NoteIn(below, kFreeInWindows, Kind::kFree);
  if (const auto system = Open(machine_.system.SystemFolder())) {
    places_.Note(*system, Kind::kSystem);
    FolderBranch in_system(*system);
    NoteIn(in_system, {"config", "drivers"}, Kind::kTree);
    FindOldEventLogs(in_system);
  }
}

void PreciousFinder::FindPrograms() {
  const std::string drive = machine_.system.WindowsFolder().substr(0, 3);
  for (const char* name : {"Program Files", "Program Files (x86)", "Program Files (Arm)"}) {
    Note(drive + name, Kind::kHome);
    Note(drive + name + "\\WindowsApps", Kind::kTree);
    Note(drive + name + "\\Common Files", Kind::kHome);
  }
  for (const char* name :
       {"ProgramFiles", "ProgramFiles(x86)", "ProgramW6432", "CommonProgramFiles",
        "CommonProgramFiles(x86)", "CommonProgramW6432", "ProgramData", "ALLUSERSPROFILE"}) {
    Note(machine_.system.Environment(name).value_or(""), Kind::kHome);
  }
  const auto data = Open(drive + "ProgramData");
  if (!data) return;
  places_.Note(*data, Kind::kHome);
  FolderBranch below(*data);
  NoteIn(below, {"Microsoft", "Microsoft\\Windows", "Packages"}, Kind::kHome);
  NoteIn(below, {"Microsoft\\Crypto", "Microsoft\\Vault", "Package Cache"}, Kind::kTree);
}

void PreciousFinder::FindProfiles() {
  const auto profile = Open(machine_.system.Environment("USERPROFILE").value_or(""));
  if (profile) FindProfile(*profile);
  const std::string drive = machine_.system.WindowsFolder().substr(0, 3);
  std::vector<std::string> folders = {
      std::string(FolderPart(machine_.system.Environment("USERPROFILE").value_or(""))),
      drive + "Users", drive + "Documents and Settings"};
  for (const std::string& path : folders) {
    const auto users = path.size() > 3 ? Open(path) : nullptr;
    if (!users) continue;
    places_.Note(*users, Kind::kHome);
    ForEachFolder(*users, [&](const std::string& name) {
      if (const auto user = users->OpenFolder(name)) FindProfile(*user);
    });
  }
  FindListedProfiles();
}

void PreciousFinder::FindListedProfiles() {
  try {
    const auto list = machine_.registry.Open(kLocalMachine, kProfileList, RegistryAccess::kRead);
    for (uint32_t i = 0; const auto name = list ? list->SubKeyAt(i) : std::nullopt; ++i) {
      const auto key = list->Open(*name, RegistryAccess::kRead);
      const auto user = key ? Open(ReadFolderValue(machine_, *key, "ProfileImagePath")) : nullptr;
      if (user) FindProfile(*user);
    }
  } catch (const Error&) {  // a registry that cannot be read names no profile
  }
}

void PreciousFinder::FindProfile(Folder& profile) {
  const auto noted = places_.folders_.find(profile.Id());
  if (noted != places_.folders_.end() && noted->second >= Kind::kHome) return;
  places_.Note(profile, Kind::kHome);
  FolderBranch below(profile);
  NoteIn(below, kProfileHomes, Kind::kHome);
  NoteIn(below, kProfileTrees, Kind::kTree);
  NoteIn(below, kPersonalFolders, Kind::kPersonal);
  ForEachFolder(profile, [&](const std::string& name) {
    if (EqualsNoCase(std::string_view(name).substr(0, 8), "OneDrive")) {
      NoteIn(below, {name.c_str()}, Kind::kPersonal);
    }
  });
}

// Where the user's folders are when they were moved.
void PreciousFinder::FindKnownFolders() {
  for (const char* key : kShellKeys) {
    NoteFolderValues(kCurrentUser, key, kMovedHomes, Kind::kHome);
    NoteFolderValues(kCurrentUser, key, kMovedPersonal, Kind::kPersonal);
    NoteFolderValues(kLocalMachine, key, {"Common AppData"}, Kind::kHome);
    NoteFolderValues(kLocalMachine, key,
                     {"Common Desktop", "Common Documents", "CommonMusic", "CommonPictures",
                      "CommonVideo", "Common Start Menu", "Common Favorites"},
                     Kind::kPersonal);
  }
  for (const char* name : {"OneDrive", "OneDriveConsumer", "OneDriveCommercial"}) {
    Note(machine_.system.Environment(name).value_or(""), Kind::kPersonal);
  }
}

// Of users whose hives are loaded: where theirs are when they were moved.
void PreciousFinder::FindOthersFolders() {
  std::vector<std::string> users;
  try {
    const auto all = machine_.registry.Open(kUsers, "", RegistryAccess::kRead);
    if (all) users = SubKeyNames(*all);
  } catch (const Error&) {  // where they cannot be listed they are not known
  }
  for (const std::string& user : users) {
    if (!user.starts_with("S-1-5-21-") && !user.starts_with("S-1-12-1-")) continue;  // a system's
    for (const char* const key : kShellKeys) {
      try {
        const auto folders =
            machine_.registry.Open(kUsers, user + "\\" + key, RegistryAccess::kRead);
        if (folders) NoteMoved(*folders, ProfileOf(user));
      } catch (const Error&) {  // not his: the others'
      }
    }
  }
}

// "" where none is listed.
std::string PreciousFinder::ProfileOf(const std::string& user) {
  const auto key = machine_.registry.Open(kLocalMachine, std::string(kProfileList) + "\\" + user,
                                          RegistryAccess::kRead);
  return key ? ReadFolderValue(machine_, *key, "ProfileImagePath") : "";
}

// His variables are his own. Nobody is asked on a network for what another user has named.
void PreciousFinder::NoteMoved(RegistryKey& folders, const std::string& profile) {
  const auto note = [&](NameList names, Kind kind) {
    for (const char* const name : names) {
      const auto value = folders.QueryValue(name);
      if (!value || (value->type != kRegSz && value->type != kRegExpandSz)) continue;
      const std::string text = FromUtf16Bytes(value->bytes);
      const std::string own = ReplaceNoCase(TrimNull(text), "%USERPROFILE%", profile);
      if (!own.starts_with('\\')) Note(ExpandEnvironment(machine_.system, own), kind);
    }
  };
  note(kMovedHomes, Kind::kHome);
  note(kMovedPersonal, Kind::kPersonal);
}

void PreciousFinder::NoteFolderValues(RegistryRoot root, const char* key,
                                      std::initializer_list<const char*> names, Kind kind) {
  try {
    const auto opened = machine_.registry.Open(root, key, RegistryAccess::kRead);
    if (!opened) return;
    for (const char* name : names) Note(ReadFolderValue(machine_, *opened, name), kind);
  } catch (const Error&) {  // a registry that cannot be read names no folder
  }
}

}  // namespace quellix
