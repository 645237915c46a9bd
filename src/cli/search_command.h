#pragma once

#include <string>
#include <vector>

#include "cli/console.h"

namespace quellix {

// What "quellixctl search" was asked.
struct SearchCommand {
  std::string kind;  // one of SearchKinds
  bool remove = false;
  bool json = false;
  MachineOptions machine;
};

// "empty", "shortcuts", "unnecessary".
std::vector<std::string> SearchKinds();

// Prints the finds as they come, or at the end as JSON. With `remove` they are then removed by the
// removal mode of the settings, unless the search was stopped. Returns an ExitCode; throws Error.
int RunSearch(const SearchCommand& command, const ConsolePlatform& platform);

}  // namespace quellix
