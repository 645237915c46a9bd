#pragma once

#include <set>
#include <string>

#include "platform/forwarding_system.h"

namespace quellix {

// A real system on which the programs run that a test names.
struct ProgramSystem : ForwardingSystem {
  using ForwardingSystem::ForwardingSystem;

  bool IsProgramRunning(std::string_view name) override { return running.contains(name); }

  std::set<std::string, std::less<>> running;  // names of their files
};

}  // namespace quellix
