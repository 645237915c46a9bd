#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/absent_ports.h"
#include "platform/machine.h"
#include "platform/volume/installed_windows.h"
#include "platform/volume/volume_registry.h"
#include "platform/volume/volume_session.h"
#include "platform/volume/volume_shell.h"
#include "platform/volume/volume_system.h"

namespace quellix {

// Which Windows to work on. Folders are those of this system.
struct VolumeOptions {
  std::string volume;                  // the drive with Windows
  std::map<char, std::string> drives;  // further drives, by upper-case letter
  std::string user;                    // "" for the only one
  std::string settings;                // the program's own folder; made when it is missing
  bool keep_hives = false;             // the originals of those that are changed
};

// The persons with a profile on the drives of a volume. Changes nothing. Throws Error as
// VolumeMachine does, and where two have profiles of one name.
std::vector<VolumeUser> PersonsOn(const VolumeOptions& options);

// A mounted Windows volume as the machine the engine works on.
class VolumeMachine {
 public:
  // Throws Error with a sentence for the user: no Windows there, a damaged registry, no such user,
  // several users and none named.
  explicit VolumeMachine(const VolumeOptions& options);

  Machine machine();
  VolumeRegistry& registry() { return *registry_; }

 private:
  void OpenDrives(const VolumeOptions& options);

  std::string windows_folder_;
  std::optional<VolumeFileSystem> files_;
  std::optional<VolumeRegistry> registry_;
  std::optional<VolumeSystem> system_;
  std::optional<VolumeShell> shell_;
  AbsentUrlCache url_cache_{"The browser cache belongs to a running Windows."};
  VolumeSession session_;
  AbsentSystemCleaners cleaners_{"The cleaners of Windows itself work only on a running Windows."};
  std::optional<IniFiles> profile_;
};

}  // namespace quellix
