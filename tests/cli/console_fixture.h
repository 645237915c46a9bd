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

// A file of the console's own, outside of what is cleaned; on Windows another one each time.
std::string OutputFile();

// The arguments that name the fixture's machine and its settings folder.
std::vector<std::string> MachineArguments(TestMachine& machine);

// A running quellixctl sees the registry and the files as they are on the disk.
void StoreMachine(TestMachine& machine);

// A machine, and its console. `Fixture` is RunFixture or what is made of it.
template <typename Fixture>
class Console : public Fixture {
 protected:
  // Runs a command on the fixture's machine as it is now; what it has changed is read from the disk
  // afterwards.
  ProgramResult Run(std::vector<std::string> arguments) {
    StoreMachine(*this->machine);
    for (const std::string& more : MachineArguments(*this->machine)) arguments.push_back(more);
    const ProgramResult result = RunQuellixctl(arguments);
    StoreMachine(*this->machine);
    return result;
  }
  // The same, with an exit code and texts that its output holds.
  void Expect(const std::vector<std::string>& arguments, int exit_code,
              std::initializer_list<std::string> told = {}) {
    const ProgramResult result = Run(arguments);
    const std::string trace = ::testing::PrintToString(arguments) + "\n" + result.output;
    EXPECT_EQ(result.exit_code, exit_code) << trace;
    for (const std::string& text : told) {
      EXPECT_NE(result.output.find(text), std::string::npos) << text << "\n" << trace;
    }
  }
};

using ConsoleTest = Console<RunFixture>;

}  // namespace quellix
