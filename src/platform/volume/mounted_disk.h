#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace quellix {

// A disk, or an image of one, that is mounted in a folder of this system.
struct MountedDisk {
  std::string device, folder, type;
  bool is_forced = false;  // for writing, though it was marked as dirty
};

std::vector<MountedDisk> MountedDisks();

// The one that a folder is on; nothing when the system does not tell.
std::optional<MountedDisk> DiskUnder(const std::string& folder);

// A file of this system, as its table of locks knows it.
struct LockedFile {
  dev_t disk;
  ino_t number;
  bool is_whole_disk = false;  // the system itself takes locks of the kind FLOCK on such a one
};

// A device that one of this system is made of: the disk of a partition, what a device mapper maps.
struct DeviceBelow {
  std::string file;  // "/dev/sda"
  bool is_whole_disk = false;
};

// Those of a block device, of those again and so on, as the system shows them in its folder `sys`.
std::vector<DeviceBelow> DevicesBelow(dev_t device, const std::string& sys);

// The file or device itself, what it is made of, and the images behind loop devices; those that are
// there.
std::vector<LockedFile> FilesBehind(const std::string& file_or_device);

// Whether a program other than this one and a driver of NTFS holds a lock on one of some files.
bool AreLocked(const std::vector<LockedFile>& files);

}  // namespace quellix
