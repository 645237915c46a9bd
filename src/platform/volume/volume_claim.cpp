#include "platform/volume/volume_claim.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>

#include "platform/text.h"
#include "platform/volume/installed_windows.h"
#include "platform/volume/mounted_disk.h"
#include "platform/volume/ntfs_state.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

constexpr const char
    *kHibernated =
        "This Windows is hibernated, or was shut down with fast start-up. Start it and "
        "shut it down whole: shutdown /s /f /t 0",
    *kFellBack = "It is mounted read-only, as ntfs-3g does by itself then.",
    *kMountedReadOnly = "It is mounted read-only. Mount it for writing: mount -o remount,rw ",
    *kNoRight = "You have no right to write to it. Mount it for yourself, or do this as root.",
    *kDirty = "Its NTFS is marked as not closed properly. Let Windows check it: chkdsk /f",
    *kForced =
        " It is mounted by force, so that this may be the mark of a driver at work: unmount it, "
        "and mount it without force, which succeeds where Windows asks for no check.",
    *kInUse =
        "Another program, such as a running virtual machine, holds a lock on it. Shut that "
        "down first.",
    *kHibernationUnknown = "Whether this Windows is hibernated cannot be told. ",
    *kUseUnknown = "Whether another program works on it cannot be told. ",
    *kHidden = "It cannot be read without more rights.",
    *kDirtUnknown =
        "The disk could not be looked at without more rights: whether Windows asks for a check of "
        "it is not known.";

// A Windows that sleeps has written what it goes on with there, or has begun to read it ("RSTR");
// what it holds of the disk would not fit any more.
bool IsHibernated(VolumeFileSystem& files) {
  const auto info = files.Look("C:\\hiberfil.sys", Detail::kKind);
  if (!info || info->is_folder || info->is_link) return false;
  const UniqueFd fd = files.OpenForRead("C:\\hiberfil.sys");
  char mark[4] = {};
  if (!fd || pread(fd.get(), mark, sizeof mark, 0) != sizeof mark) return false;
  const std::string_view told(mark, sizeof mark);
  return EqualsNoCase(told, "hibr") || EqualsNoCase(told, "rstr");
}

bool IsReadOnly(const std::string& folder) {
  struct statvfs disk;
  return statvfs(folder.c_str(), &disk) == 0 && (disk.f_flag & ST_RDONLY) != 0;
}

// The kernel's own driver marks the disk as soon as something is written, and lets nobody write to
// one that was marked before unless it is forced.
DiskState StateOf(const MountedDisk& disk) {
  const bool is_own_mark = disk.type == "ntfs3" && !disk.is_forced;
  return is_own_mark ? DiskState{} : LookAtDisk(disk.device);
}

bool MayBeNtfs(const MountedDisk& disk) {
  return disk.type.starts_with("ntfs") || disk.type.starts_with("fuse") || disk.type == "ufsd";
}

// By whoever runs a machine on the disk, or has its folders shared.
bool IsInUse(VolumeFileSystem& files, const std::string& windows_folder,
             const std::optional<MountedDisk>& disk) {
  std::vector<LockedFile> locked;
  if (disk) locked = FilesBehind(disk->device);
  for (const char* hive : {"SOFTWARE", "SYSTEM"}) {
    if (windows_folder.empty()) break;
    const UniqueFd fd = files.OpenForRead(MachineHive("C:\\" + windows_folder, hive));
    struct stat status;
    if (fd && fstat(fd.get(), &status) == 0) locked.push_back({status.st_dev, status.st_ino});
  }
  return AreLocked(locked);
}

std::string HowToMount(const std::string& place, bool is_file, const DiskState& state) {
  if (state.is_hidden) return kHidden;
  const std::string loop = is_file ? "loop," : "";
  switch (state.kind) {
    case DiskState::Kind::kBitLocker:
      return "It is encrypted with BitLocker. Unlock it first: cryptsetup open --type bitlk " +
             place + " NAME";
    case DiskState::Kind::kNtfs:
      return "It is an NTFS that is not mounted. To look: mount -t ntfs-3g -o " + loop + "ro " +
             place + " DIR, and without ro to clean.";
    case DiskState::Kind::kPartitioned:
      return "It is a disk with partitions. Show them as devices: losetup --find --show "
             "--partscan " +
             place;
    case DiskState::Kind::kVirtual:
      return "It is a virtual machine's disk. Show it as a plain one, DIR/nbd: nbdfuse DIR "
             "--socket-activation qemu-nbd --format=" +
             state.format + " " + place;
    case DiskState::Kind::kUnknown:
      break;
  }
  return "It is no folder, and no disk that is known here.";
}

bool MayWrite(VolumeFileSystem& files, const std::string& folder) {
  try {
    return faccessat(files.OpenFolderOf(folder + "\\NTUSER.DAT")->fd(), ".", W_OK, AT_EACCESS) == 0;
  } catch (const Error&) {
    return false;
  }
}

// To the drive with Windows, or to the profile of someone whose traces are cleaned.
bool MayWrite(const std::string& volume, const FoundWindows& windows,
              std::map<char, std::string> drives, const std::string& user) {
  if (faccessat(AT_FDCWD, volume.c_str(), W_OK, AT_EACCESS) == 0) return true;
  drives[windows.letter] = volume;
  VolumeFileSystem files(drives);
  const std::string folder = std::string(1, windows.letter) + ":\\" + windows.folder_name;
  VolumeRegistry registry(files, FindHives(files, folder, {}));
  std::vector<VolumeUser> users = FindUsers(files, registry, folder);
  if (!user.empty()) {
    std::ranges::move(FindOtherProfiles(files, registry, folder), std::back_inserter(users));
    std::erase_if(users, [&](const VolumeUser& one) { return !EqualsNoCase(one.name, user); });
  }
  return std::ranges::any_of(
      users, [&files](const VolumeUser& one) { return MayWrite(files, one.profile); });
}

// What `look` finds, or else that it could not look.
bool Finds(const std::function<bool()>& look, const char* unknown,
           std::vector<std::string>& hindrances) {
  try {
    return look();
  } catch (const Error& error) {
    hindrances.push_back(std::string(unknown) + error.what());
    return false;
  }
}

// Of one drive; `windows_folder` is the name of the one there with Windows, or "".
std::vector<std::string> HindrancesOn(const std::string& folder, const std::string& windows_folder,
                                      const std::function<bool()>& may_write) {
  std::vector<std::string> hindrances;
  VolumeFileSystem files({{'C', folder}});
  const std::optional<MountedDisk> disk = DiskUnder(folder);
  const bool is_hibernated =
      Finds([&] { return IsHibernated(files); }, kHibernationUnknown, hindrances);
  if (is_hibernated) hindrances.emplace_back(kHibernated);
  if (!windows_folder.empty() && IsReadOnly(folder)) {
    hindrances.push_back(is_hibernated ? kFellBack : kMountedReadOnly + folder);
  } else if (!may_write()) {
    hindrances.emplace_back(kNoRight);
  }
  if (disk && StateOf(*disk).is_dirty)
    hindrances.push_back(std::string(kDirty) + (disk->is_forced ? kForced : ""));
  if (Finds([&] { return IsInUse(files, windows_folder, disk); }, kUseUnknown, hindrances))
    hindrances.emplace_back(kInUse);
  return hindrances;
}

}  // namespace

std::vector<std::string> HindrancesOf(const std::string& volume,
                                      const std::map<char, std::string>& drives,
                                      const std::string& user) {
  if (std::string why = WhyNoFolder(volume); !why.empty()) return {std::move(why)};
  const FoundWindows windows = LookForWindows(volume);
  std::vector<std::string> all = HindrancesOn(
      volume, windows.folder_name, [&] { return MayWrite(volume, windows, drives, user); });
  for (const auto& [letter, folder] : drives) {
    for (const std::string& hindrance : HindrancesOn(folder, "", [] { return true; }))
      all.push_back(std::string(1, letter) + ": " + hindrance);
  }
  return all;
}

std::vector<std::string> UnknownsOf(const std::vector<std::string>& folders) {
  for (const std::string& folder : folders) {
    const std::optional<MountedDisk> disk = DiskUnder(folder);
    if (disk && MayBeNtfs(*disk) && StateOf(*disk).is_hidden) return {kDirtUnknown};
  }
  return {};
}

bool IsOnDiskOf(const std::string& folder, const std::vector<std::string>& places) {
  std::filesystem::path nearest = folder;
  struct stat status;
  while (stat(nearest.c_str(), &status) != 0) {
    if (nearest == nearest.parent_path()) return false;
    nearest = nearest.parent_path();
  }
  return std::ranges::any_of(places, [&status](const std::string& place) {
    struct stat other;
    return stat(place.c_str(), &other) == 0 && other.st_dev == status.st_dev;
  });
}

std::string IdentityOf(const std::string& place) {
  struct stat status;
  if (stat(place.c_str(), &status) != 0) return place;
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

std::string WhyNoFolder(const std::string& place) {
  struct stat status;
  if (stat(place.c_str(), &status) != 0) ThrowErrno(errno, place);
  if (S_ISDIR(status.st_mode)) return "";
  const DiskState state = LookAtDisk(place);
  const std::string why = HowToMount(place, S_ISREG(status.st_mode), state);
  return state.is_dirty ? why + " " + kDirty : why;
}

// A disk that knows no locks lets everybody work.
FolderLocks::FolderLocks(const std::vector<std::string>& folders) {
  std::set<std::pair<dev_t, ino_t>> known;
  for (const std::string& folder : folders) {
    UniqueFd fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status;
    if (!fd && errno == ENOTDIR) continue;
    if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, folder);
    if (!known.emplace(status.st_dev, status.st_ino).second) continue;
    if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
      throw Error(Error::Kind::kInUse,
                  "Another run of Quellix works on " + folder + ". Wait until it has ended.");
    }
    held_.push_back(std::move(fd));
  }
}

}  // namespace quellix
