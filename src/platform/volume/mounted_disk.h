#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
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
using LockedFile = std::pair<dev_t, ino_t>;

// The file or device itself, and the image behind a loop device; those that are there.
std::vector<LockedFile> FilesBehind(const std::string& file_or_device);

// Whether a program other than this one and a driver of NTFS holds a lock on one of some files.
bool AreLocked(const std::vector<LockedFile>& files);

}  // namespace quellix
