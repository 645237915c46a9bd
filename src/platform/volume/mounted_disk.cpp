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

#include "platform/volume/unique_fd.h"

namespace quellix {
namespace {

// A driver in a process of its own locks the disk that it serves.
bool IsDriver(int pid) {
  std::string name;
  std::ifstream("/proc/" + std::to_string(pid) + "/comm") >> name;
  return name.find("ntfs") != std::string::npos;
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

std::vector<LockedFile> FilesBehind(const std::string& file_or_device) {
  std::vector<LockedFile> files;
  struct stat status;
  if (stat(file_or_device.c_str(), &status) != 0) return files;
  files.emplace_back(status.st_dev, status.st_ino);
  if (!S_ISBLK(status.st_mode)) return files;
  const UniqueFd device(open(file_or_device.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  loop_info64 loop = {};
  if (device && ioctl(device.get(), LOOP_GET_STATUS64, &loop) == 0)
    files.emplace_back(loop.lo_device, loop.lo_inode);
  return files;
}

// A line is "1: OFDLCK ADVISORY WRITE -1 00:1b:4711 100 100": kind, way, process, file, bytes.
bool AreLocked(const std::vector<LockedFile>& files) {
  std::ifstream table("/proc/locks");
  for (std::string line; std::getline(table, line);) {
    int pid = 0;
    unsigned major = 0, minor = 0;
    unsigned long number = 0;
    if (std::sscanf(line.c_str(), "%*s %*s %*s %*s %d %x:%x:%lu", &pid, &major, &minor, &number) !=
        4) {
      continue;
    }
    const LockedFile locked(makedev(major, minor), number);
    const bool is_ours = pid == getpid() || (pid > 0 && IsDriver(pid));
    if (!is_ours && std::ranges::find(files, locked) != files.end()) return true;
  }
  return false;
}

}  // namespace quellix
