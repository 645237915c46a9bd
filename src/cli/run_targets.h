#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/report.h"

namespace quellix {

// What the arguments say about which volumes and users to work on.
struct TargetChoice {
  std::vector<std::string> volumes, users;
  std::string volumes_from;  // a file of volumes, "" for none
  bool all_users = false;
  unsigned jobs = 1;  // volumes at a time
};

// One of them.
struct RunTarget {
  std::string volume, user;
  std::string settings = {};  // "" for those of all
  std::string problem = {};   // why it cannot begin, "" else

  std::string Name() const {
    return volume.empty() || user.empty() ? volume + user : volume + ", " + user;
  }
};

// Each volume once, or the Windows that this runs on, with each user; one without a user where none
// was named, and one with the problem where all were asked for and cannot be told. `machine` is
// what else the arguments say. Throws Error when the file cannot be read.
std::vector<RunTarget> TargetsOf(const TargetChoice& choice, const ConsolePlatform& platform,
                                 const MachineOptions& machine);

// Does the same for each of several targets, in processes of their own: prints what each has to say
// under its name, then how each ended. Each has a report of its own, whose file is named after that
// of the summary; such files of earlier runs are removed first. Returns the worst exit code. Throws
// Error, before anything was done, where the files cannot be made or removed.
int RunOnAll(const std::vector<RunTarget>& targets, const TargetChoice& choice,
             const ConsolePlatform& platform, ReportOptions& options,
             const std::function<int(const RunTarget& target)>& run);

}  // namespace quellix
