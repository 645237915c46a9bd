#pragma once

#include <string>

#include "platform/system.h"
#include "platform/volume/installed_windows.h"

namespace quellix {

inline constexpr std::string_view kBinFolder = "$Recycle.Bin";

// Puts files into a user's recycle bin of the drive they are on, as Windows does from Vista on:
// "$R..." is the file and "$I..." tells where it was. The bin of before that cannot be filled: its
// shared index belongs to a running Windows.
class Recycler {
 public:
  Recycler(VolumeFileSystem& files, System& system, VolumeUser user)
      : files_(files), system_(system), user_(std::move(user)) {}

  // Throws NotAvailable when this Windows or this user has no bin that can be filled.
  void Require();
  // `path` is where the file is now. Throws Error; the file then stays as it was.
  void Recycle(const Located& file, const std::string& path);

 private:
  std::unique_ptr<Folder> OpenBin(char drive);

  VolumeFileSystem& files_;
  System& system_;
  VolumeUser user_;
};

}  // namespace quellix
