#pragma once

#include <cstdint>

#include "support/volume_seed.h"

namespace quellix {

// A new NTFS in an image file, mounted with ntfs-3g below the build folder while this lives. While
// it lives, temporary folders are made on it.
class NtfsVolume {
 public:
  // Why this system lets nobody mount one; "" when it does.
  static std::string Hindrance();

  NtfsVolume();
  ~NtfsVolume();
  NtfsVolume(const NtfsVolume&) = delete;
  NtfsVolume& operator=(const NtfsVolume&) = delete;

  // The folder it is mounted in; what lies beside it is on another disk.
  std::string path() const { return home_->path() + "/volume"; }
  std::string Beside(const std::string& name) const { return home_->path() + "/" + name; }
  // Mounts it anew, with options of ntfs-3g.
  void Remount(const std::string& options);
  // The file that holds it.
  std::string Image() const { return image_folder_->path() + "/image"; }
  // Every byte of it, as the disk holds it.
  std::string Bytes();

 private:
  void Mount(const std::string& options);

  std::optional<TemporaryFolder> home_, image_folder_;
  std::string old_tmpdir_;
};

// What NTFS keeps of a file under a name ("system.ntfs_acl"); "" when it keeps nothing.
std::string NtfsAttribute(const std::string& file, const char* name);
void SetNtfsAttribute(const std::string& file, const char* name, const std::string& bytes);
// Makes the folder `link` a junction that leads to a Windows path.
void MakeJunction(const std::string& link, const std::string& target);

}  // namespace quellix
