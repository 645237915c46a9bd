#include <sys/wait.h>
#include <unistd.h>

#include "cli/console_fixture.h"
#include "support/volume_seed.h"

namespace quellix {

std::string QuellixctlPath() { return QUELLIXCTL; }

std::string ShellCommand(const std::string& command) { return command; }

int ExitCodeOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

std::string OutputFile() {
  return std::filesystem::temp_directory_path() / ("quellixctl-" + std::to_string(getpid()));
}

Names MachineArguments(TestMachine& machine) {
  const VolumeOptions options = dynamic_cast<VolumeTestMachine&>(machine).options();
  return {"--volume", options.volume, "--settings", options.settings};
}

void StoreMachine(TestMachine& machine) { dynamic_cast<VolumeTestMachine&>(machine).CloseHives(); }

}  // namespace quellix
