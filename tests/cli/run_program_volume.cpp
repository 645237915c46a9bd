#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "cli/console_fixture.h"
#include "support/volume_seed.h"

namespace quellix {

std::string QuellixctlPath() { return QUELLIXCTL; }

int RunInto(const std::string& command, const std::string& file) {
  const int status = std::system((command + " > \"" + file + "\" 2>&1").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string OutputFile() {
  return std::filesystem::temp_directory_path() / ("quellixctl-" + std::to_string(getpid()));
}

Names MachineArguments(TestMachine& machine) {
  const VolumeOptions options = dynamic_cast<VolumeTestMachine&>(machine).options();
  return {"--volume", options.volume, "--settings", options.settings};
}

void StoreMachine(TestMachine& machine) { dynamic_cast<VolumeTestMachine&>(machine).CloseHives(); }

}  // namespace quellix
