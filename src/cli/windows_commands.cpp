#include <algorithm>
#include <iomanip>
#include <iostream>

#include "app/run_table.h"
#include "app/system_cleaning.h"
#include "cli/commands.h"
#include "cli/console_run.h"
#include "cli/nearest.h"
#include "platform/error.h"
#include "platform/text.h"
#include "run/removal.h"

namespace quellix {
namespace {

struct ListOptions {
  bool sizes = false;
};

struct CleanerRow {
  SystemCleaner cleaner;
  std::optional<bool> is_usual = {};   // nothing where it was not asked, or failed
  std::optional<uint64_t> bytes = {};  // likewise
  std::string problem = {};
};

// Lets each look. A stop ends it early.
void Look(const Machine& machine, std::vector<CleanerRow>& rows) {
  ConsoleView view;
  for (CleanerRow& row : rows) {
    if (view.Breathe()) return;
    try {
      const CleanerFind find =
          machine.cleaners.Use(row.cleaner.key, CleanerUse::kLook, ConsoleView::asks(),
                               [&view](const Progress&) { return view.Breathe(); });
      row.cleaner = find.cleaner;
      row.is_usual = find.cleaner.is_usual;
      if (!find.is_stopped) row.bytes = find.bytes;
    } catch (const Error& error) {
      row.problem = error.what();
    }
  }
}

// "Update Cleanup    1.20 GB  Windows Update Cleanup: older updates cannot be gone back to"
void Print(std::ostream& out, const CleanerRow& row, const Locale& locale) {
  const std::string_view cost = CostOf(row.cleaner);
  out << std::left << std::setw(36) << row.cleaner.key;
  if (row.bytes)
    out << std::setw(12) << FormatSize(static_cast<double>(*row.bytes), 2, true, locale);
  out << row.cleaner.name << (row.is_usual.value_or(false) ? " (usual)" : "")
      << (cost.empty() ? "" : ": ") << cost << "\n";
  if (!row.cleaner.description.empty()) out << "  " << row.cleaner.description << "\n";
  if (!row.problem.empty()) out << "  " << row.problem << "\n";
}

int List(const ListOptions& options, const ReportOptions& report_options, const Machine& machine) {
  Report report(report_options);
  std::vector<CleanerRow> rows;
  for (const SystemCleaner& cleaner : machine.cleaners.List()) rows.push_back({cleaner});
  if (options.sizes) Look(machine, rows);
  for (const CleanerRow& row : rows) Print(report.text(), row, machine.system.UserLocale());
  const auto row = [&rows](size_t i) -> std::vector<ReportCell> {
    const auto& [cleaner, is_usual, bytes, problem] = rows[i];
    return {cleaner.key,
            cleaner.name,
            TextCell(cleaner.description),
            TextCell(CostOf(cleaner)),
            bytes ? ReportCell(*bytes) : ReportCell(),
            is_usual ? ReportCell(*is_usual) : ReportCell(),
            TextCell(problem)};
  };
  const bool is_well = std::ranges::all_of(rows, &std::string::empty, &CleanerRow::problem);
  return report.Finish(
      {.command = "windows list",
       .columns = {"name", "label", "description", "cost", "bytes", "isUsual", "problem"},
       .count = rows.size(),
       .row = row,
       .summary = {}},
      is_well ? kDone : kFailed);
}

// Those named; a sentence about the first that is not there, else "".
std::string Choose(const Machine& machine, const std::vector<std::string>& wanted,
                   std::vector<SystemCleaner>& chosen) {
  const std::vector<SystemCleaner> all = machine.cleaners.List();
  for (const std::string& name : wanted) {
    const auto found = std::ranges::find_if(
        all, [&](const SystemCleaner& each) { return EqualsNoCase(each.key, name); });
    if (found != all.end()) {
      chosen.push_back(*found);
      continue;
    }
    std::vector<std::string> names;
    for (const SystemCleaner& each : all) names.push_back(each.key);
    const std::string nearest = Nearest(name, names);
    return "there is no cleaner \"" + name + "\" here. " +
           (nearest.empty() ? "" : "Did you mean \"" + nearest + "\"? ") +
           "\"quellixctl windows list\" lists them.";
  }
  return {};
}

int Run(const std::vector<std::string>& names, RunKind kind, const ReportOptions& report_options,
        const Machine& machine) {
  Report report(report_options);
  OtherChoices choices;
  const std::string problem = Choose(machine, names, choices.cleaners);
  if (!problem.empty()) return Fail(problem, kWrongUsage);
  ConsoleRun run(machine, kind, report.text());
  Engine& engine = run.engine();
  RunOthers(engine.context(), choices);
  const bool is_preview = kind == RunKind::kPreview;
  if (is_preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return report.Finish(TableOfRun("windows process", engine.state(), is_preview), run.Outcome());
}

void AddRun(ConsoleCommands& commands, CLI::App& group, const char* name, const char* what,
            RunKind kind) {
  const auto names = std::make_shared<std::vector<std::string>>();
  CLI::App& command =
      commands.AddTo(group, name, what, [names, kind, &commands](const Machine& machine) {
        return Run(*names, kind, commands.report_options(), machine);
      });
  commands.Changes(command);
  command.add_option("names", *names, "Cleaners")->required()->type_name("NAME");
  commands.AddReport(command);
}

}  // namespace

void AddWindowsCommands(ConsoleCommands& commands) {
  CLI::App& windows = commands.AddGroup("windows", "Let Windows' own cleaners work");
  const auto options = std::make_shared<ListOptions>();
  CLI::App& list = commands.AddTo(windows, "list", "List Windows' own cleaners, and what they cost",
                                  [options, &commands](const Machine& machine) {
                                    return List(*options, commands.report_options(), machine);
                                  });
  list.add_flag("--sizes", options->sizes, "Let each look what it finds; that may take minutes");
  commands.AddReport(list);
  AddRun(commands, windows, "preview", "Tell what the named cleaners would free",
         RunKind::kPreview);
  AddRun(commands, windows, "process", "Let the named cleaners work", RunKind::kReal);
}

}  // namespace quellix
