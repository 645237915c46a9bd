#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cli/console.h"
#include "cli/report.h"
#include "cli/run_targets.h"

namespace quellix {

// The commands of quellixctl. All have one shape: their options are bound to what their action
// keeps, and the action works on the machine that the arguments name, returns an ExitCode and may
// throw Error.
class ConsoleCommands {
 public:
  using Action = std::function<int(const Machine& machine)>;

  // Both must outlive this object.
  ConsoleCommands(CLI::App& app, const ConsolePlatform& platform)
      : app_(app), platform_(platform) {}

  // A group of commands, for AddTo.
  CLI::App& AddGroup(const char* name, const char* what);
  // A command with the options that name the machine.
  CLI::App& Add(const char* name, const char* what, Action action) {
    return AddTo(app_, name, what, std::move(action));
  }
  CLI::App& AddTo(CLI::App& group, const char* name, const char* what, Action action);
  // One that needs no machine.
  CLI::App& AddPlain(const char* name, const char* what, std::function<int()> action) {
    return AddPlainTo(app_, name, what, std::move(action));
  }
  CLI::App& AddPlainTo(CLI::App& group, const char* name, const char* what,
                       std::function<int()> action);

  // A command that changes what is on the machine: unless it is called "preview", its --preview is
  // given or of --delete, --enable and --disable none is, or `is_elsewhere`, asked when the machine
  // is known, tells that it changes something else. Only such a one may be given several volumes or
  // users.
  void Changes(CLI::App& command, std::function<bool()> is_elsewhere = {});

  // Lets a command tell its results to other programs as well.
  void AddReport(CLI::App& command);
  // Of the command that was parsed.
  const ReportOptions& report_options() const { return report_options_; }

  // Before the machine of the command is opened.
  MachineOptions& machine_options() { return machine_options_; }
  const MachineOptions& machine_options() const { return machine_options_; }
  const ConsolePlatform& platform() const { return platform_; }
  // With all commands, once one runs.
  const CLI::App& app() const { return app_; }

  // Does the command that was parsed.
  int Run() const;

 private:
  struct Row {
    const CLI::App* command;
    std::function<int()> run;
  };

  void AddMachineOptions(CLI::App& command);
  MachineUse UseOf(const CLI::App& command) const;
  int RunOnMachine(const CLI::App& command, const Action& action);
  int RunOn(const CLI::App& command, const RunTarget& target, const Action& action);

  CLI::App& app_;
  const ConsolePlatform& platform_;
  MachineOptions machine_options_;
  TargetChoice choice_;
  ReportOptions report_options_;
  std::vector<Row> rows_;
  std::map<const CLI::App*, std::function<bool()>> changing_;
};

// Prints a sentence on standard error; returns the code.
int Fail(std::string_view sentence, ExitCode code);

// The words of a table of named values, for an option that takes one of them.
template <class Table>
CLI::IsMember OneOf(const Table& table) {
  std::vector<std::string> names;
  for (const auto& row : table) names.emplace_back(row.first);
  return CLI::IsMember(names);
}

// --method, how files are removed; and what its word means.
void AddMethod(CLI::App& command, std::string& method);
int16_t MethodOf(const std::string& method);

// Each in a file of its own.
void AddCleanCommands(ConsoleCommands& commands);      // items, clean
void AddBrowserCommands(ConsoleCommands& commands);    // browsers list, clean
void AddBackupCommands(ConsoleCommands& commands);     // backup list, restore, repair
void AddPluginCommands(ConsoleCommands& commands);     // plugins list, check, preview, process...
void AddRecipeCommands(ConsoleCommands& commands);     // recipes list, check, preview, process...
void AddCacheCommands(ConsoleCommands& commands);      // cache list, delete
void AddSearchCommand(ConsoleCommands& commands);      // search
void AddRemoveCommand(ConsoleCommands& commands);      // remove
void AddWipeFreeCommand(ConsoleCommands& commands);    // wipe-free
void AddKeepCommands(ConsoleCommands& commands);       // keep list, add, remove
void AddFavoritesCommands(ConsoleCommands& commands);  // favorites list, check
void AddUpdateCommand(ConsoleCommands& commands);      // update check
void AddWindowsCommands(ConsoleCommands& commands);    // windows list, preview, process
void AddRegistryCommand(ConsoleCommands& commands);    // registry
void AddManualCommand(ConsoleCommands& commands);      // manual
void AddCompletionCommand(ConsoleCommands& commands);  // completion
void AddVolumesCommand(ConsoleCommands& commands);     // volumes, where they are worked on

}  // namespace quellix
