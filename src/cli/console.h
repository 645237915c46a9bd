#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/surveyed_volume.h"
#include "run/exit_code.h"

namespace quellix {

// What a command does with what is on a machine.
enum class MachineUse {
  kLook,
  kPreview,  // tells what a change would do
  kChange,
};

// What the arguments say about the machine to work on. Texts are UTF-8; folders are the console's
// own, not the machine's.
struct MachineOptions {
  std::string volume;               // folder a Windows volume is mounted in
  std::vector<std::string> drives;  // "D:=DIR"
  std::string user;                 // "" for the only one
  std::string settings;             // folder of Settings.ini, "" for the usual place
  std::string own_folder;           // becomes drive Z: and is made when it is missing; "" for none
  bool keep_hives = false;          // leave the originals of changed registry hives beside them
  MachineUse use = MachineUse::kLook;
};

// A machine with the ports it owns.
class OpenMachine {
 public:
  virtual ~OpenMachine() = default;
  virtual Machine machine() = 0;
  // Whether it is that of another user than who runs this.
  virtual bool IsForAnother() { return false; }
  // Stores what is still to be stored; false when that failed, which was told then.
  virtual bool Store() { return true; }
  // Why a change would be refused: a sentence each. For whoever previews one.
  virtual std::vector<std::string> Hindrances() { return {}; }
  // What could not be found out before a change, and hinders none: a sentence each.
  virtual std::vector<std::string> Unknowns() { return {}; }
};

// What differs between a console on Windows and one on another system.
struct ConsolePlatform {
  bool works_on_volumes = false;
  bool shows_progress = false;  // standard error is a terminal
  bool can_ask = false;         // standard input and standard error are
  // Where settings, lists and logs are when no folder is named.
  std::function<std::string()> settings_folder;
  // Throws Error with a sentence for the user, also where a change is refused.
  std::function<std::unique_ptr<OpenMachine>(const MachineOptions&)> open;
  // Where it works on volumes: what is in a place, by Error when there is none, and where to look.
  std::function<SurveyedVolume(const std::string& place)> survey = {};
  std::function<std::vector<std::string>()> mounted_places = {};
  // There, too: a text that is the same for all spellings of a place.
  std::function<std::string(const std::string& place)> identity = {};
  // And whether a folder of the console's own system, "" for that of the settings, is or would be
  // on a disk of the machine.
  std::function<bool(const MachineOptions&, const std::string& folder)> is_on_machine = {};
  // There, too: whether a drive is a disk that was mounted, and no folder of another one.
  std::function<bool(const MachineOptions&, char drive)> is_whole_disk = {};
  // The names of the persons with a profile on a machine, no two alike. Throws Error.
  std::function<std::vector<std::string>(const MachineOptions&)> users = {};
  // Does jobs, so many at a time where it works on volumes, else one after another.
  std::function<void(const std::vector<ProcessJob>& jobs, size_t at_once,
                     const std::function<void(size_t job, const ProcessResult& result)>& ended)>
      run_processes = {};
};

// quellixctl: parses the arguments, does the command, prints to standard output and error. Ctrl-C
// stops a run. Returns an ExitCode.
int RunConsole(std::vector<std::string> arguments, const ConsolePlatform& platform);

}  // namespace quellix
