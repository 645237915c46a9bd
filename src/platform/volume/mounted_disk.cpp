#include "platform/volume/mounted_disk.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <mntent.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>

#include "platform/volume/unique_fd.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSys = "/sys";

fs::path InSys(const std::string& sys, dev_t device) {
  return fs::path(sys) / "dev/block" /
         (std::to_string(major(device)) + ":" + std::to_string(minor(device)));
}

// A driver in a process of its own locks the disk that it serves.
bool IsDriver(int pid) {
  constexpr size_t kLongest = 15;  // of what the system keeps of a name
  std::string name;
  std::ifstream comm("/proc/" + std::to_string(pid) + "/comm");
  std::getline(comm, name);
  return std::ranges::any_of(
      std::initializer_list<std::string_view>{"ntfs-3g", "lowntfs-3g", "mount.ntfs",
                                              "mount.ntfs-3g", "mount.lowntfs-3g"},
      [&](std::string_view driver) { return name == driver.substr(0, kLongest); });
}

// The system shows "/" in the name of a device as "!".
std::string DeviceNamed(const fs::path& in_sys) {
  std::string name = in_sys.filename().string();
  std::ranges::replace(name, '!', '/');
  return "/dev/" + name;
}

void AddDevices(const fs::path& in_sys, std::vector<DeviceBelow>& devices) {
  std::error_code none;
  const fs::path place = fs::canonical(in_sys, none);
  if (none) return;
  const auto add = [&](const fs::path& below, bool is_whole_disk) {
    DeviceBelow device{DeviceNamed(below), is_whole_disk};
    const auto is_it = [&](const DeviceBelow& known) { return known.file == device.file; };
    if (std::ranges::any_of(devices, is_it)) return;
    devices.push_back(std::move(device));
    AddDevices(below, devices);
  };
  if (fs::exists(place / "partition", none)) add(place.parent_path(), true);
  for (const fs::directory_entry& below : fs::directory_iterator(place / "slaves", none))
    add(below.path(), false);
}

// The image of a loop device, which only who may open it is told by number.
void AddImage(const std::string& file, dev_t device, std::vector<LockedFile>& files) {
  const UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  loop_info64 loop = {};
  if (fd && ioctl(fd.get(), LOOP_GET_STATUS64, &loop) == 0) {
    files.push_back({loop.lo_device, loop.lo_inode});
    return;
  }
  std::string image;
  std::ifstream shown(InSys(kSys, device) / "loop/backing_file");
  struct stat status;
  if (std::getline(shown, image) && stat(image.c_str(), &status) == 0)
    files.push_back({status.st_dev, status.st_ino});
}

}  // namespace

std::vector<MountedDisk> MountedDisks() {
  std::vector<MountedDisk> disks;
  const std::unique_ptr<FILE, int (*)(FILE*)> table(setmntent("/proc/self/mounts", "r"), endmntent);
  if (!table) return disks;
  while (const mntent* const row = getmntent(table.get())) {
    disks.push_back(
        {row->mnt_fsname, row->mnt_dir, row->mnt_type, hasmntopt(row, "force") != nullptr});
  }
  return disks;
}

std::optional<MountedDisk> DiskUnder(const std::string& folder) {
  std::error_code none;
  std::filesystem::path real = std::filesystem::canonical(folder, none);
  const std::vector<MountedDisk> disks = MountedDisks();
  for (; !none; real = real.parent_path()) {
    for (auto disk = disks.rbegin(); disk != disks.rend(); ++disk) {
      if (disk->folder == real) return *disk;
    }
    if (real == real.parent_path()) break;
  }
  return std::nullopt;
}

std::vector<DeviceBelow> DevicesBelow(dev_t device, const std::string& sys) {
  std::vector<DeviceBelow> devices;
  AddDevices(InSys(sys, device), devices);
  return devices;
}

std::vector<LockedFile> FilesBehind(const std::string& file_or_device) {
  std::vector<LockedFile> files;
  const auto add = [&](const std::string& file, bool is_whole_disk) -> std::optional<dev_t> {
    struct stat status;
    if (stat(file.c_str(), &status) != 0) return std::nullopt;
    files.push_back({status.st_dev, status.st_ino, is_whole_disk});
    if (!S_ISBLK(status.st_mode)) return std::nullopt;
    AddImage(file, status.st_rdev, files);
    return status.st_rdev;
  };
  const std::optional<dev_t> device = add(file_or_device, false);
  if (!device) return files;
  for (const DeviceBelow& below : DevicesBelow(*device, kSys)) add(below.file, below.is_whole_disk);
  return files;
}

// A line is "1: OFDLCK ADVISORY WRITE -1 00:1b:4711 100 100": kind, way, process, file, bytes.
bool AreLocked(const std::vector<LockedFile>& files) {
  std::ifstream table("/proc/locks");
  for (std::string line; std::getline(table, line);) {
    char kind[16] = "";
    int pid = 0;
    unsigned major = 0, minor = 0;
    unsigned long number = 0;
    if (std::sscanf(line.c_str(), "%*s %15s %*s %*s %d %x:%x:%lu", kind, &pid, &major, &minor,
                    &number) != 5) {
      continue;
    }
    const bool is_ours = pid == getpid() || (pid > 0 && IsDriver(pid));
    const bool is_flock = std::string_view(kind) == "FLOCK";
    const auto is_it = [&](const LockedFile& file) {
      return file.disk == makedev(major, minor) && file.number == number &&
             !(is_flock && file.is_whole_disk);
    };
    if (!is_ours && std::ranges::any_of(files, is_it)) return true;
  }
  return false;
}

}  // namespace quellix
