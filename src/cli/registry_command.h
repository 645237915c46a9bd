#pragma once

#include <string>
#include <vector>

#include "cli/console.h"

namespace quellix {

// What "quellixctl registry" was asked.
struct RegistryCommand {
  std::string tool;  // one of ScanToolNames
  bool thorough = false;
  bool remove = false;
  bool json = false;
  MachineOptions machine;
};

std::vector<std::string> ScanToolNames();

// Prints what a registry tool lists, a line a reference, or as JSON. With `remove` those that lead
// nowhere are deleted, of a tool that ticks none all it lists. Returns an ExitCode; throws Error.
int RunRegistry(const RegistryCommand& command, const ConsolePlatform& platform);

}  // namespace quellix
