#include "cli/console_fixture.h"

namespace quellix {

std::string QuellixctlPath() { return "C:\\Program Files\\Quellix\\quellixctl.exe"; }

// The shell takes the outer quotes away.
std::string ShellCommand(const std::string& command) { return "\"" + command + "\""; }

int ExitCodeOf(int status) { return status; }

std::string OutputFile() { return "C:\\QxOutput.txt"; }

std::vector<std::string> MachineArguments(TestMachine& machine) {
  return {"--settings", machine.machine().program_folder};
}

void StoreMachine(TestMachine&) {}

}  // namespace quellix
