#pragma once

#include <filesystem>

#include "platform/volume/volume_machine.h"
#include "support/hive_file.h"
#include "support/test_machine.h"

namespace quellix {

inline constexpr const char* kTesterName = "Quellix Tester";
inline constexpr const char* kTesterSid = "S-1-5-21-1004336348-1177238915-682003330-1001";

// A folder of its own below the system's temporary folder, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Lays out a Windows 10 in a folder: hives, one user with profile, temporary folder and classes.
void SeedWindows(const std::string& volume);
// Each file below a folder with its time and bytes.
std::map<std::string, std::string> PictureOf(const std::string& volume);
// A further profile with a hive of its own, listed in the registry.
void SeedUser(const std::string& volume, const std::string& name, const std::string& sid);

// The test machine with what only a volume has.
struct VolumeTestMachine : TestMachine {
  static std::unique_ptr<VolumeTestMachine> CreateVolume();

  // The path of this system for a Windows path.
  virtual std::string Native(std::string_view path) = 0;
  // Stores and closes all hive files; they are opened anew when needed.
  virtual void CloseHives() = 0;
  virtual VolumeOptions options() = 0;
};

}  // namespace quellix
