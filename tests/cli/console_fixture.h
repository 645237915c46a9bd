#pragma once

#include "support/run_fixture.h"

namespace quellix {

struct ProgramResult {
  int exit_code = -1;
  std::string output;  // standard output and error, line ends as "\n"
};

// Runs quellixctl as its users do and waits for it.
ProgramResult RunQuellixctl(const Names& arguments);

// A file of the console's own, outside of what is cleaned; on Windows another one each time.
std::string OutputFile();

// The arguments that name the fixture's machine and its settings folder.
Names MachineArguments(TestMachine& machine);

// A running quellixctl sees the registry and the files as they are on the disk.
void StoreMachine(TestMachine& machine);

inline Names With(Names arguments, const Names& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

// A machine, and its console. `Fixture` is RunFixture or what is made of it.
template <typename Fixture>
struct Console : Fixture {
  // Runs a command on the fixture's machine as it is now; what it has changed is read from the disk
  // afterwards.
  ProgramResult Run(const Names& arguments) {
    StoreMachine(*this->machine);
    const ProgramResult result = RunQuellixctl(With(arguments, MachineArguments(*this->machine)));
    StoreMachine(*this->machine);
    return result;
  }
  // The same, with an exit code and texts that its output holds.
  void Expect(const Names& arguments, int exit_code, std::initializer_list<std::string> told = {}) {
    const ProgramResult result = Run(arguments);
    const std::string trace = ::testing::PrintToString(arguments) + "\n" + result.output;
    EXPECT_EQ(result.exit_code, exit_code) << trace;
    for (const std::string& text : told)
      EXPECT_TRUE(Holds(result.output, text)) << text << "\n" << trace;
  }
};

using ConsoleTest = Console<RunFixture>;

}  // namespace quellix
