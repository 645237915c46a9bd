#pragma once

#include <string>
#include <vector>

#include "support/run_fixture.h"

namespace quellix {

struct ProgramResult {
  int exit_code = -1;
  std::string output;  // standard output and error, line ends as "\n"
};

// Runs quellixctl as its users do and waits for it.
ProgramResult RunQuellixctl(const std::vector<std::string>& arguments);

// The arguments that name the fixture's machine and its settings folder.
std::vector<std::string> MachineArguments(TestMachine& machine);

// A running quellixctl sees the registry and the files as they are on the disk.
void StoreMachine(TestMachine& machine);

class ConsoleTest : public RunFixture {
 protected:
  ProgramResult Clean(std::vector<std::string> arguments) {
    StoreMachine(*machine);
    arguments.insert(arguments.begin(), "clean");
    const std::vector<std::string> where = MachineArguments(*machine);
    arguments.insert(arguments.end(), where.begin(), where.end());
    return RunQuellixctl(arguments);
  }
};

}  // namespace quellix
