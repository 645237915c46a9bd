#include <cstdlib>

#include "cli/console.h"
#include "platform/error.h"
#include "platform/volume/volume_machine.h"

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

class MountedMachine : public quellix::OpenMachine {
 public:
  explicit MountedMachine(const quellix::MachineOptions& options)
      : mounted_(
            {.volume = options.volume,
             .drives = ParseDrives(options.drives),
             .user = options.user,
             .settings = options.settings.empty() ? UsualSettingsFolder() : options.settings}) {}
  quellix::Machine machine() override { return mounted_.machine(); }

 private:
  quellix::VolumeMachine mounted_;
};

}  // namespace

int main(int argc, char** argv) {
  return quellix::RunConsole(
      {argv + 1, argv + argc},
      {.works_on_volumes = true, .open = [](const quellix::MachineOptions& options) {
         return std::make_unique<MountedMachine>(options);
       }});
}
