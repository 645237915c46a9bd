#include "ntfs/ntfs_volume.h"

#include <sys/mount.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "platform/text.h"
#include "support/jump_list_bytes.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

int Run(const std::string& command) {
  return std::system(("PATH=$PATH:/usr/sbin:/sbin; " + command + " > /dev/null 2>&1").c_str());
}

}  // namespace

std::string NtfsVolume::Hindrance() {
  if (geteuid() != 0) return "only root can mount an NTFS";
  if (access("/dev/fuse", R_OK | W_OK) != 0) return "this system has no FUSE";
  if (Run("command -v mkfs.ntfs && command -v ntfs-3g") != 0) return "ntfs-3g is not installed";
  return "";
}

NtfsVolume::NtfsVolume() {
  const char* const old = std::getenv("TMPDIR");
  old_tmpdir_ = old == nullptr ? "/tmp" : old;
  fs::create_directories(QUELLIX_NTFS_FOLDER);
  setenv("TMPDIR", QUELLIX_NTFS_FOLDER, 1);
  home_.emplace();
  fs::create_directory(path());
  // In memory, where there is some: each flush is one of the whole image.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
  image_folder_.emplace();
  const std::string make = "truncate -s 12M '" + Image() + "' && mkfs.ntfs -q -F '" + Image() + "'";
  if (Run(make) != 0) throw std::runtime_error("mkfs.ntfs failed");
  Mount("rw");
  setenv("TMPDIR", path().c_str(), 1);
}

NtfsVolume::~NtfsVolume() {
  setenv("TMPDIR", old_tmpdir_.c_str(), 1);
  if (umount2(path().c_str(), 0) != 0) umount2(path().c_str(), MNT_DETACH);
}

void NtfsVolume::Mount(const std::string& options) {
  const std::string mount = "ntfs-3g -o " + options + " '" + Image() + "' '" + path() + "'";
  // The program that served the mount before may take a moment to let go of the image.
  for (int i = 0; i < 100; ++i) {
    if (Run(mount) == 0) return;
    usleep(100'000);
  }
  throw std::runtime_error("ntfs-3g failed");
}

void NtfsVolume::Remount(const std::string& options) {
  if (umount2(path().c_str(), 0) != 0) throw std::runtime_error("the volume is in use");
  Mount(options);
}

std::string NtfsVolume::Bytes() {
  Remount("rw");
  return ReadNative(Image());
}

std::string NtfsAttribute(const std::string& file, const char* name) {
  std::string bytes(64 << 10, '\0');
  const ssize_t size = lgetxattr(file.c_str(), name, bytes.data(), bytes.size());
  return bytes.substr(0, size < 0 ? 0 : static_cast<size_t>(size));
}

void SetNtfsAttribute(const std::string& file, const char* name, const std::string& bytes) {
  if (lsetxattr(file.c_str(), name, bytes.data(), bytes.size(), 0) != 0) {
    throw std::runtime_error(file + " does not take " + name);
  }
}

// Documented by Microsoft as the reparse data of a mount point: tag, length, then the two names by
// offset and length, then the names themselves, each with its NUL.
void MakeJunction(const std::string& link, const std::string& target) {
  fs::create_directory(link);
  const std::string real = ToUtf16Bytes("\\??\\" + target), shown = ToUtf16Bytes(target);
  const std::string names = real + std::string(2, '\0') + shown + std::string(2, '\0');
  SetNtfsAttribute(link, "system.ntfs_reparse_data",
                   Little(0xA0000003, 4) + Little(8 + names.size(), 4) + Little(0, 2) +
                       Little(real.size(), 2) + Little(real.size() + 2, 2) +
                       Little(shown.size(), 2) + names);
}

}  // namespace quellix
