#include <algorithm>
#include <cctype>
#include <iostream>

#include "app/free_space_drives.h"
#include "cli/commands.h"
#include "cli/console_run.h"
#include "run/removal.h"

namespace quellix {
namespace {

constexpr uint64_t kMegabyte = 1 << 20;

struct WipeOptions {
  std::vector<std::string> drives;
  bool zeros = false;
  uint64_t reserve = 64;  // megabytes
};

struct WipedDrive {
  std::string root;
  FreeSpaceWiped wiped;
};

std::string WhyNoDrive(const std::string& name) {
  const bool is_letter = !name.empty() && std::isalpha(static_cast<unsigned char>(name[0]));
  if (is_letter && (name.substr(1) == ":" || name.substr(1) == ":\\")) return {};
  return "\"" + name + "\" is no drive; write C:";
}

std::string RootOf(const std::string& name) {
  return {static_cast<char>(std::toupper(static_cast<unsigned char>(name[0]))), ':', '\\'};
}

// What a folder lies on is for others, too.
void RequireLocal(const ConsoleCommands& commands, const Machine& machine,
                  const std::string& root) {
  const std::string why = WhyNotWiped(machine, root[0]);
  if (!why.empty()) throw Error(Error::Kind::kDenied, why);
  const bool is_whole = !commands.platform().is_whole_disk ||
                        commands.platform().is_whole_disk(commands.machine_options(), root[0]);
  if (!is_whole) throw Error(Error::Kind::kDenied, root + " is a folder, no mounted disk.");
}

WipedDrive WipeOne(const WipeOptions& options, const std::string& root, const Machine& machine,
                   ConsoleView& view) {
  view.SetStatus("Wiping what is free on " + root);
  const auto pause = [&view](const Progress& progress) {
    constexpr int32_t kSteps = 10'000;
    if (progress.total > 0)
      view.SetProgress(
          {true, kSteps, static_cast<int32_t>(progress.done * kSteps / progress.total)});
    return view.Breathe();
  };
  return {root,
          WipeFreeSpace(machine, root,
                        {.zeros = options.zeros, .reserve = options.reserve * kMegabyte}, pause)};
}

ExitCode Tell(const WipedDrive& drive, const Machine& machine, std::ostream& out) {
  const FreeSpaceWiped& wiped = drive.wiped;
  out << drive.root << " "
      << FormatSize(static_cast<double>(wiped.bytes), 2, true, machine.system.UserLocale())
      << " overwritten, " << wiped.records << " small files made and removed." << std::endl;
  if (!wiped.problem.empty()) std::cerr << wiped.problem << std::endl;
  if (wiped.is_stopped) std::cerr << "Aborted by user" << std::endl;
  return wiped.is_stopped || !wiped.problem.empty() ? kFailed : kDone;
}

int WipeFree(const WipeOptions& options, const ConsoleCommands& commands, const Machine& machine) {
  std::vector<std::string> roots;
  for (const std::string& name : options.drives) {
    const std::string root = RootOf(name);
    RequireLocal(commands, machine, root);
    if (std::ranges::find(roots, root) == roots.end()) roots.push_back(root);
  }
  Report report(commands.report_options());
  ConsoleRun run(machine, RunKind::kReal, report.text());
  report.text() << kBeyondWiping << " " << options.reserve << " MB stay free." << std::endl;
  std::vector<WipedDrive> drives;
  ExitCode code = kDone;
  for (const std::string& root : roots) {
    drives.push_back(WipeOne(options, root, machine, run.view()));
    code = std::max(code, Tell(drives.back(), machine, report.text()));
    if (drives.back().wiped.is_stopped) break;
  }
  const auto row = [&drives](size_t i) -> std::vector<ReportCell> {
    const FreeSpaceWiped& wiped = drives[i].wiped;
    return {drives[i].root, wiped.bytes, wiped.records, TextCell(wiped.problem)};
  };
  return report.Finish({.command = "wipe-free",
                        .columns = {"drive", "bytes", "records", "note"},
                        .count = drives.size(),
                        .row = row,
                        .summary = {{"stopped", drives.back().wiped.is_stopped}}},
                       code);
}

}  // namespace

void AddWipeFreeCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<WipeOptions>();
  CLI::App& wipe = commands.Add("wipe-free", "Overwrite what is free on drives",
                                [options, &commands](const Machine& machine) {
                                  return WipeFree(*options, commands, machine);
                                });
  commands.Changes(wipe);
  wipe.add_option("drives", options->drives, "Drives, as C:")
      ->required()
      ->type_name("DRIVE")
      ->check(WhyNoDrive);
  wipe.add_flag("--zeros", options->zeros, "Zeros, which make a virtual disk small (else random)");
  wipe.add_option("--reserve", options->reserve, "Megabytes that stay free meanwhile")
      ->check(CLI::Range(1, 1'000'000))
      ->type_name("MB");
  commands.AddReport(wipe);
}

}  // namespace quellix
