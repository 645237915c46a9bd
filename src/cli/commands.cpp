#include "cli/commands.h"

#include <algorithm>
#include <iostream>

namespace quellix {
namespace {

// Headings in the help.
constexpr const char* kMachine = "The machine";
constexpr const char* kOutput = "The output";

}  // namespace

CLI::App& ConsoleCommands::AddGroup(const char* name, const char* what) {
  return *app_.add_subcommand(name, what)->require_subcommand(1);
}

CLI::App& ConsoleCommands::AddTo(CLI::App& group, const char* name, const char* what,
                                 Action action) {
  CLI::App& command = *group.add_subcommand(name, what);
  AddMachineOptions(command);
  rows_.push_back({&command, [this, action = std::move(action)] {
                     return action(platform_.open(machine_options_)->machine());
                   }});
  return command;
}

CLI::App& ConsoleCommands::AddPlain(const char* name, const char* what,
                                    std::function<int()> action) {
  CLI::App& command = *app_.add_subcommand(name, what);
  rows_.push_back({&command, std::move(action)});
  return command;
}

void ConsoleCommands::AddReport(CLI::App& command) {
  ReportOptions& options = report_options_;
  CLI::Option* const json = command.add_flag("--json", options.json, "Print JSON instead of text");
  CLI::Option* const csv = command.add_flag("--csv", options.csv, "Print CSV instead of text");
  CLI::Option* const file =
      command.add_option("--report", options.file, "Write JSON, or CSV to a .csv, as well")
          ->type_name("FILE");
  for (CLI::Option* const option : {json, csv, file}) option->group(kOutput);
  json->excludes(csv);
}

int ConsoleCommands::Run() const {
  return std::ranges::find_if(rows_, [](const Row& row) { return row.command->parsed(); })->run();
}

void ConsoleCommands::AddMachineOptions(CLI::App& command) {
  MachineOptions& options = machine_options_;
  command.add_option("--settings", options.settings, "Folder of Settings.ini and the lists")
      ->type_name("DIR")
      ->group(kMachine);
  if (!platform_.works_on_volumes) return;
  command.add_option("--volume", options.volume, "Folder the Windows volume is mounted in")
      ->required()
      ->type_name("DIR")
      ->group(kMachine);
  command.add_option("--drive", options.drives, "A further drive of that Windows")
      ->type_name("D:=DIR")
      ->group(kMachine);
  command.add_option("--user", options.user, "Whose traces to clean")
      ->type_name("NAME")
      ->group(kMachine);
  command
      .add_flag("--keep-hives", options.keep_hives,
                "Leave the originals of changed registry hives beside them, as NAME.quellix-old")
      ->group(kMachine);
}

int Fail(std::string_view sentence, ExitCode code) {
  std::cerr << "quellixctl: " << sentence << std::endl;
  return code;
}

}  // namespace quellix
