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
  rows_.push_back({&command, [this, &command, action = std::move(action)] {
                     return RunOnMachine(command, action);
                   }});
  return command;
}

void ConsoleCommands::Changes(CLI::App& command, std::function<bool()> is_elsewhere) {
  changing_[&command] = std::move(is_elsewhere);
}

MachineUse ConsoleCommands::UseOf(const CLI::App& command) const {
  const auto known = changing_.find(&command);
  if (known == changing_.end() || (known->second && known->second())) return MachineUse::kLook;
  const auto has = [&command](const char* name, bool given) {
    const CLI::Option* const option = command.get_option_no_throw(name);
    return option != nullptr && (option->count() > 0) == given;
  };
  const bool is_preview =
      command.get_name() == "preview" || has("--preview", true) || has("--delete", false);
  return is_preview ? MachineUse::kPreview : MachineUse::kChange;
}

int ConsoleCommands::RunOnMachine(const CLI::App& command, const Action& action) {
  machine_options_.use = UseOf(command);
  const std::unique_ptr<OpenMachine> open = platform_.open(machine_options_);
  if (machine_options_.use == MachineUse::kPreview) {
    for (const std::string& hindrance : open->Hindrances())
      std::cerr << "A run would be refused: " << hindrance << std::endl;
  }
  return action(open->machine());
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
