#include <iostream>

#include "cli/commands.h"
#include "settings/keep_file.h"

namespace quellix {
namespace {

using Lines = std::vector<std::string>;

// A line that keeps nothing is named on standard error.
int List(const Machine& machine, const ReportOptions& options) {
  Report report(options);
  const Lines lines = ReadKeepFile(machine);
  const auto fault = [&](size_t i) { return ParseKeepLine(machine.system, lines[i]).fault; };
  int code = kDone;
  for (size_t i = 0; i < lines.size(); ++i) {
    report.text() << lines[i] << '\n';
    if (fault(i).empty()) continue;
    std::cerr << lines[i] << ": " << fault(i) << '\n';
    code = kFailed;
  }
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    return {lines[i], TextCell(fault(i))};
  };
  return report.Finish({.command = "keep list",
                        .columns = {"line", "fault"},
                        .count = lines.size(),
                        .row = row,
                        .summary = {}},
                       code);
}

// The first line that is refused ends it; those before it hold.
int Change(const Lines& lines, const Machine& machine,
           std::string (*change)(const Machine& machine, std::string_view line)) {
  for (const std::string& line : lines) {
    const std::string refusal = change(machine, line);
    if (!refusal.empty()) return Fail("\"" + line + "\": " + refusal, kWrongUsage);
  }
  return kDone;
}

}  // namespace

void AddKeepCommands(ConsoleCommands& commands) {
  CLI::App& keep = commands.AddGroup("keep", "What nothing removes: files, keys, cookies' sites");
  commands.AddReport(commands.AddTo(
      keep, "list", "List the lines of keep.txt",
      [&commands](const Machine& machine) { return List(machine, commands.report_options()); }));
  const auto lines = std::make_shared<Lines>();
  const auto add = [&](const char* name, const char* what, auto change) {
    commands
        .AddTo(keep, name, what,
               [=](const Machine& machine) { return Change(*lines, machine, change); })
        .add_option("LINE", *lines,
                    "A path, a mask, HKEY_...\\KEY, HKEY_...\\KEY|VALUE or site:HOST")
        ->required()
        ->option_text(" ");
  };
  add("add", "Keep something", AddToKeepFile);
  add("remove", "Keep it no longer", RemoveFromKeepFile);
}

}  // namespace quellix
