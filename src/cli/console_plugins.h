#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/console.h"
#include "cli/console_run.h"
#include "run/run_state.h"

namespace CLI {
class App;
}

namespace quellix {

// What the commands of the console share. Fail prints a sentence and returns the code.
int Fail(std::string_view sentence, ExitCode code);
void AddMachineOptions(CLI::App& command, MachineOptions& options, const ConsolePlatform& platform);

// "quellixctl plugins ...". FILE is a plug-in of the folder Plugins or a path of the console's own.
class ConsolePlugins {
 public:
  ConsolePlugins(CLI::App& app, const ConsolePlatform& platform);

  bool IsParsed() const;
  // Does the command that was parsed; returns an ExitCode. Throws Error.
  int Run();

 private:
  int List(const Machine& machine);
  int Check(const Machine& machine);
  int Process(const Machine& machine, RunKind kind);
  int Switch(const Machine& machine, bool on);

  CLI::App* AddCommand(const char* name, const char* what, const char* argument);

  const ConsolePlatform& platform_;
  MachineOptions options_;
  std::vector<std::string> names_;
  CLI::App* plugins_;
  CLI::App *list_, *check_, *preview_, *process_, *enable_, *disable_;
};

}  // namespace quellix
