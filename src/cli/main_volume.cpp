#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include <filesystem>
#include <iostream>

#include "cli/console.h"
#include "platform/error.h"
#include "platform/volume/processes.h"
#include "platform/volume/volume_claim.h"
#include "platform/volume/volume_machine.h"
#include "platform/volume/volume_survey.h"

namespace {

std::string FromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// Where settings are kept when no folder is named: as the desktop's rules for such files say.
std::string UsualSettingsFolder() {
  const std::string config = FromEnvironment("XDG_CONFIG_HOME");
  if (!config.empty()) return config + "/quellix";
  return FromEnvironment("HOME") + "/.config/quellix";
}

// "D:=DIR" for each further drive.
std::map<char, std::string> ParseDrives(const std::vector<std::string>& drives) {
  std::map<char, std::string> folders;
  for (const std::string& drive : drives) {
    const char letter = drive.empty() ? '\0' : static_cast<char>(drive[0] & ~0x20);
    if (drive.size() < 4 || drive.compare(1, 2, ":=") != 0 || letter < 'A' || letter > 'Z') {
      throw quellix::Error(quellix::Error::Kind::kOther,
                           "\"" + drive + "\" names no drive; write D:=DIR.");
    }
    folders[letter] = drive.substr(3);
  }
  return folders;
}

std::vector<std::string> FoldersOf(const quellix::MachineOptions& options) {
  std::vector<std::string> folders = {options.volume};
  for (const auto& [letter, folder] : ParseDrives(options.drives)) folders.push_back(folder);
  return folders;
}

// A run that changes something is alone on its drives, and refused before it has touched anything
// where they should not be changed now.
quellix::FolderLocks Claim(const quellix::MachineOptions& options) {
  if (options.use != quellix::MachineUse::kChange) return {};
  const std::map<char, std::string> drives = ParseDrives(options.drives);
  quellix::FolderLocks locks(FoldersOf(options));
  std::string refusal;
  for (const std::string& hindrance : quellix::HindrancesOf(options.volume, drives, options.user))
    refusal += "\n  " + hindrance;
  if (refusal.empty()) return locks;
  throw quellix::Error(quellix::Error::Kind::kDenied,
                       "nothing is changed on " + options.volume + ":" + refusal);
}

quellix::VolumeOptions VolumeOptionsOf(const quellix::MachineOptions& options) {
  return {.volume = options.volume,
          .drives = ParseDrives(options.drives),
          .user = options.user,
          .settings = options.settings.empty() ? UsualSettingsFolder() : options.settings,
          .keep_hives = options.keep_hives};
}

std::vector<std::string> UserNames(const quellix::MachineOptions& options) {
  std::vector<std::string> names;
  for (const quellix::VolumeUser& user : quellix::PersonsOn(VolumeOptionsOf(options)))
    names.push_back(user.name);
  return names;
}

// What is made for it on the volume is made by who has claimed it.
quellix::VolumeOptions WithOwnFolder(const quellix::MachineOptions& options) {
  quellix::VolumeOptions all = VolumeOptionsOf(options);
  if (options.own_folder.empty()) return all;
  std::filesystem::create_directories(options.own_folder);
  all.drives['Z'] = options.own_folder;
  return all;
}

bool IsOnMachine(const quellix::MachineOptions& options, const std::string& folder) {
  return quellix::IsOnDiskOf(folder.empty() ? VolumeOptionsOf(options).settings : folder,
                             FoldersOf(options));
}

bool IsWholeDisk(const quellix::MachineOptions& options, char drive) {
  const std::map<char, std::string> drives = ParseDrives(options.drives);
  const auto further = drives.find(drive);
  const std::string folder = further == drives.end() ? options.volume : further->second;
  struct stat own, above;
  return stat(folder.c_str(), &own) == 0 && stat((folder + "/..").c_str(), &above) == 0 &&
         (own.st_dev != above.st_dev || own.st_ino == above.st_ino);
}

class MountedMachine : public quellix::OpenMachine {
 public:
  explicit MountedMachine(const quellix::MachineOptions& options)
      : options_(options), locks_(Claim(options)), mounted_(WithOwnFolder(options)) {}
  // What nobody stored is not lost without a word.
  ~MountedMachine() override { MountedMachine::Store(); }
  bool Store() override {
    try {
      mounted_.registry().CloseHives();
      return true;
    } catch (const quellix::Error& error) {
      std::cerr << error.what() << std::endl;
      return false;
    }
  }
  quellix::Machine machine() override { return mounted_.machine(); }
  std::vector<std::string> Hindrances() override {
    return quellix::HindrancesOf(options_.volume, ParseDrives(options_.drives), options_.user);
  }
  std::vector<std::string> Unknowns() override { return quellix::UnknownsOf(FoldersOf(options_)); }

 private:
  const quellix::MachineOptions options_;
  quellix::FolderLocks locks_;  // until the hives are stored
  quellix::VolumeMachine mounted_;
};

}  // namespace

int main(int argc, char** argv) {
  return quellix::RunConsole({argv + 1, argv + argc},
                             {.works_on_volumes = true,
                              .shows_progress = isatty(STDERR_FILENO) == 1,
                              .can_ask = isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1,
                              .settings_folder = UsualSettingsFolder,
                              .open =
                                  [](const quellix::MachineOptions& options) {
                                    return std::make_unique<MountedMachine>(options);
                                  },
                              .survey = quellix::SurveyVolume,
                              .mounted_places = quellix::MountedPlaces,
                              .identity = quellix::IdentityOf,
                              .is_on_machine = IsOnMachine,
                              .is_whole_disk = IsWholeDisk,
                              .users = UserNames,
                              .run_processes = quellix::RunProcesses});
}
