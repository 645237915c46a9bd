#include "cli/commands.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "cli/console_view.h"
#include "platform/error.h"
#include "settings/removal_options.h"

namespace quellix {
namespace {

// Headings in the help.
constexpr const char* kMachine = "The machine";
constexpr const char* kOutput = "The output";

// Changes that are not meant for each of several users or volumes.
const std::set<std::string> kOnOneAlone = {"remove", "repair", "restore", "wipe-free"};

const std::map<std::string, int16_t> kMethods = {
    {"backup", kBackUp}, {"delete", kDelete}, {"recycle", kRecycle}, {"wipe", kWipe}};

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
  const bool looks = has("--delete", false) && !has("--enable", true) && !has("--disable", true);
  const bool is_preview = command.get_name() == "preview" || has("--preview", true) || looks;
  return is_preview ? MachineUse::kPreview : MachineUse::kChange;
}

int ConsoleCommands::RunOnMachine(const CLI::App& command, const Action& action) {
  const std::vector<RunTarget> targets = TargetsOf(choice_, platform_, machine_options_);
  if (targets.empty()) return Fail("--volume is required.", kWrongUsage);
  if (targets.size() == 1) return RunOn(command, targets[0], action);
  const bool is_one_volume = std::ranges::all_of(
      targets, [&](const RunTarget& target) { return target.volume == targets[0].volume; });
  if (!changing_.contains(&command) || kOnOneAlone.contains(command.get_name()))
    return Fail("this command works on one volume and one user at a time.", kWrongUsage);
  if (!is_one_volume && !machine_options_.drives.empty())
    return Fail("--drive belongs to one volume.", kWrongUsage);
  return RunOnAll(targets, choice_, platform_, report_options_,
                  [&](const RunTarget& target) { return RunOn(command, target, action); });
}

int ConsoleCommands::RunOn(const CLI::App& command, const RunTarget& target, const Action& action) {
  if (!target.problem.empty()) throw Error(Error::Kind::kOther, target.problem);
  machine_options_.volume = target.volume;
  machine_options_.user = target.user;
  if (!target.settings.empty()) machine_options_.settings = target.settings;
  machine_options_.use = UseOf(command);
  const std::unique_ptr<OpenMachine> open = platform_.open(machine_options_);
  if (machine_options_.use == MachineUse::kPreview) {
    for (const std::string& hindrance : open->Hindrances())
      std::cerr << "A run would be refused: " << hindrance << std::endl;
  }
  if (machine_options_.use != MachineUse::kLook) {
    for (const std::string& unknown : open->Unknowns()) std::cerr << unknown << std::endl;
  }
  ConsoleView::WorksForAnother(open->IsForAnother());
  const int code = action(open->machine());
  for (const std::string& why : open->machine().registry.TakeOutdated())
    std::cerr << why << std::endl;
  return open->Store() ? code : kFailed;
}

CLI::App& ConsoleCommands::AddPlainTo(CLI::App& group, const char* name, const char* what,
                                      std::function<int()> action) {
  CLI::App& command = *group.add_subcommand(name, what);
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
  TargetChoice& choice = choice_;
  const auto add = [&command](const char* name, auto& target, const char* what) {
    return command.add_option(name, target, what)->group(kMachine)->allow_extra_args(false);
  };
  add("--user", choice.users, "Whose traces to clean; several, one after another")
      ->type_name("NAME");
  command.add_flag("--all-users", choice.all_users, "Those of each person who has a profile")
      ->group(kMachine);
  if (!platform_.works_on_volumes) return;
  add("--volume", choice.volumes,
      "Folder a Windows volume is mounted in; several, one after another")
      ->type_name("DIR");
  add("--volumes-from", choice.volumes_from, "A file with such a folder in each line")
      ->type_name("FILE");
  add("--jobs", choice.jobs, "How many volumes to work on at a time")
      ->check(CLI::Range(1, 1000))
      ->type_name("N");
  add("--drive", options.drives, "A further drive of that Windows")
      ->allow_extra_args()
      ->type_name("D:=DIR");
  command
      .add_flag("--keep-hives", options.keep_hives,
                "Leave the originals of changed registry hives beside them, as NAME.quellix-old")
      ->group(kMachine);
}

void AddMethod(CLI::App& command, std::string& method) {
  command.add_option("--method", method, "How files are removed (else as the settings say)")
      ->check(OneOf(kMethods));
}

int16_t MethodOf(const std::string& method) { return kMethods.at(method); }

int Fail(std::string_view sentence, ExitCode code) {
  std::cerr << "quellixctl: " << sentence << std::endl;
  return code;
}

}  // namespace quellix
