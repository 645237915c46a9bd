#include "cli/console_fixture.h"

namespace quellix {

std::string QuellixctlPath() { return "C:\\Program Files\\Quellix\\quellixctl.exe"; }

// The shell takes the outer quotes away.
std::string ShellCommand(const std::string& command) { return "\"" + command + "\""; }

int ExitCodeOf(int status) { return status; }

// Another one each time: what Windows starts in the background may keep the last one open.
std::string OutputFile() {
  static int number = 0;
  return "C:\\QxOutput" + std::to_string(++number) + ".txt";
}

Names MachineArguments(TestMachine& machine) {
  return {"--settings", machine.machine().program_folder};
}

void StoreMachine(TestMachine&) {}

}  // namespace quellix
