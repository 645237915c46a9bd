#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>

#include "app/run_table.h"
#include "browsers/browser_catalogue.h"
#include "cli/commands.h"
#include "cli/console_run.h"
#include "cli/nearest.h"

namespace quellix {
namespace {

struct BrowserOptions {
  std::vector<std::string> names;
  bool preview = false;
};

// A row a kind of a browser.
int List(const ReportOptions& options, const Machine& machine) {
  Report report(options);
  std::vector<std::pair<FoundBrowser, BrowserKindText>> rows;
  for (const FoundBrowser& browser : FindBrowsers(machine)) {
    for (const BrowserKind kind : browser.kinds) rows.emplace_back(browser, TextOf(kind));
  }
  for (const auto& [browser, kind] : rows) {
    report.text() << std::left << std::setw(28) << NameOf({browser.key, kind.kind}) << std::setw(24)
                  << browser.label << kind.label << (kind.cost.empty() ? "" : ": ") << kind.cost
                  << "\n";
  }
  const auto row = [&rows](size_t i) -> std::vector<ReportCell> {
    const auto& [browser, kind] = rows[i];
    return {NameOf({browser.key, kind.kind}), std::string(browser.label), std::string(kind.label),
            uint64_t{browser.profiles},       TextCell(kind.cost),        kind.is_risky};
  };
  return report.Finish({.command = "browsers list",
                        .columns = {"name", "browser", "kind", "profiles", "cost", "isRisky"},
                        .count = rows.size(),
                        .row = row,
                        .summary = {}},
                       kDone);
}

std::string NearestOf(const std::vector<FoundBrowser>& browsers, const std::string& name) {
  std::vector<std::string> names;
  for (const FoundBrowser& browser : browsers) {
    names.emplace_back(browser.key);
    for (const BrowserKind kind : browser.kinds) names.push_back(NameOf({browser.key, kind}));
  }
  const std::string nearest = Nearest(name, names);
  return nearest.empty() ? "" : " Did you mean \"" + nearest + "\"?";
}

int Clean(const BrowserOptions& options, const ReportOptions& report_options,
          const Machine& machine) {
  Report report(report_options);
  const std::vector<FoundBrowser> browsers = FindBrowsers(machine);
  std::vector<BrowserChoice> choices;
  for (const std::string& name : options.names) {
    std::string problem;
    for (const BrowserChoice& choice : ParseBrowserChoice(browsers, name, problem)) {
      choices.push_back(choice);
    }
    if (!problem.empty()) {
      return Fail(problem + NearestOf(browsers, name) + " \"quellixctl browsers list\" lists them.",
                  kWrongUsage);
    }
  }
  ConsoleRun run(machine, options.preview ? RunKind::kPreview : RunKind::kReal, report.text());
  Engine& engine = run.engine();
  RunOthers(engine.context(), {.browsers = choices});
  if (options.preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return report.Finish(TableOfRun("browsers clean", engine.state(), options.preview),
                       run.Outcome());
}

}  // namespace

void AddBrowserCommands(ConsoleCommands& commands) {
  CLI::App& browsers =
      commands.AddGroup("browsers", "Clean Firefox and the browsers built on Chromium");
  commands.AddReport(commands.AddTo(
      browsers, "list", "List the browsers found, what can be cleaned, and what that costs",
      [&commands](const Machine& machine) { return List(commands.report_options(), machine); }));
  const auto options = std::make_shared<BrowserOptions>();
  CLI::App& clean = commands.AddTo(
      browsers, "clean", "Clean the named kinds; a browser alone means what costs nothing",
      [options, &commands](const Machine& machine) {
        return Clean(*options, commands.report_options(), machine);
      });
  commands.Changes(clean);
  clean.add_option("names", options->names, "Browsers and kinds")
      ->required()
      ->type_name("NAME[:KIND]");
  clean.add_flag("--preview", options->preview, "List what would go; change nothing");
  commands.AddReport(clean);
}

}  // namespace quellix
