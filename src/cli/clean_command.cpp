#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>

#include "app/run_table.h"
#include "cli/commands.h"
#include "cli/console_run.h"
#include "cli/nearest.h"
#include "platform/text.h"

namespace quellix {
namespace {

struct CleanOptions {
  std::vector<std::string> items, groups;
  bool all = false, ticked = false;
  std::string method;
  int older_than = -1;  // days; -1: as the settings say
  bool preview = false, at_next_start = false;
};

// As they are named on the console.
const std::map<std::string, Group> kGroups = {{"files", Group::kFolderFiles},
                                              {"miscellaneous", Group::kMiscellaneous},
                                              {"internet", Group::kInternet},
                                              {"firefox", Group::kFirefox}};

const std::map<std::string, int16_t> kMethods = {
    {"backup", kBackUp}, {"delete", kDelete}, {"recycle", kRecycle}, {"wipe", kWipe}};

std::string NameOf(Group group) {
  return std::ranges::find(kGroups, group, [](const auto& row) { return row.second; })->first;
}

int ListItems(const ReportOptions& options) {
  Report report(options);
  for (const Item& item : AllItems()) {
    report.text() << std::left << std::setw(24) << item.key << std::setw(20)
                  << GroupTitle(item.group) << ReplaceNoCase(item.Label(), "&&", "&")
                  << (item.cleaner != nullptr ? "" : " (not available yet)") << "\n";
  }
  const auto row = [](size_t i) -> std::vector<ReportCell> {
    const Item& item = AllItems()[i];
    return {item.key, NameOf(item.group), ReplaceNoCase(item.Label(), "&&", "&")};
  };
  return report.Finish({.command = "items",
                        .columns = {"item", "group", "label"},
                        .count = AllItems().size(),
                        .row = row,
                        .summary = {}},
                       kDone);
}

std::string NoSuchItem(const std::string& name) {
  std::vector<std::string> keys;
  for (const Item& item : AllItems()) keys.emplace_back(item.key);
  const std::string nearest = Nearest(name, keys);
  return "there is no item \"" + name + "\"; " +
         (nearest.empty() ? "" : "did you mean \"" + nearest + "\"? ") +
         "\"quellixctl items\" lists them.";
}

// Ticks what the options name; a sentence when one cannot be cleaned, else "". By --all and --group
// goes what the window's boxes would tick, which leaves out what is under protection.
std::string SelectItems(const CleanOptions& options, Selection& selection) {
  if (!options.ticked) {
    for (const Item& item : AllItems()) selection.SetChecked(item, false);
    selection.browsers().Clear();
    selection.cleaners().Clear();
    selection.recipes().Clear();
  }
  if (options.all) selection.SelectAll(true);
  for (const std::string& group : options.groups) selection.CheckGroup(kGroups.at(group));
  for (const std::string& name : options.items) {
    const Item* const item = FindItem(name);
    if (item == nullptr) return NoSuchItem(name);
    if (item->cleaner == nullptr) return "the item \"" + name + "\" is not available yet.";
    selection.SetChecked(*item, true);
  }
  const bool is_empty = selection.CountChecked() == 0 && selection.browsers().empty() &&
                        selection.cleaners().empty() && selection.recipes().empty();
  return is_empty ? "nothing is chosen." : "";
}

int Clean(const CleanOptions& options, const ReportOptions& report_options,
          const Machine& machine) {
  Report report(report_options);
  ConsoleRun run(machine, options.preview ? RunKind::kPreview : RunKind::kReal, report.text());
  Engine& engine = run.engine();
  if (options.ticked && !engine.is_loaded())
    return Fail("it cannot be read what is ticked in the window.", kFailed);
  const std::string problem = SelectItems(options, engine.selection());
  if (!problem.empty()) return Fail(problem, kWrongUsage);
  if (!options.method.empty()) engine.state().FixedRemovalMode = kMethods.at(options.method);
  if (options.older_than >= 0)
    engine.state().FixedOlderThanDays = static_cast<int16_t>(options.older_than);
  const int16_t method =
      options.method.empty() ? engine.preferences().RemovalMode : engine.state().FixedRemovalMode;
  if (options.at_next_start && method != kDelete)
    return Fail("--at-next-start goes with --method delete alone.", kWrongUsage);
  engine.state().LeavesToStart = options.at_next_start;
  engine.RunCleaning();
  if (options.preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return report.Finish(TableOfRun("clean", engine.state(), options.preview), run.Outcome());
}

void AddChoice(CLI::App& clean, CleanOptions& options) {
  CLI::Option_group& choice = *clean.add_option_group("What to clean");
  choice.add_option("--item", options.items, "Keys of the items, as \"items\" lists them")
      ->type_name("KEY");
  choice.add_option("--group", options.groups, "All items of a group")->check(OneOf(kGroups));
  choice.add_flag("--all", options.all, "All items");
  choice.add_flag("--ticked", options.ticked, "The items that are ticked in the window");
  choice.require_option(1, 0);
}

}  // namespace

void AddCleanCommands(ConsoleCommands& commands) {
  CLI::App& items = commands.AddPlain("items", "List the items that can be cleaned",
                                      [&commands] { return ListItems(commands.report_options()); });
  commands.AddReport(items);
  const auto options = std::make_shared<CleanOptions>();
  CLI::App& clean =
      commands.Add("clean", "Clean the named items", [options, &commands](const Machine& machine) {
        return Clean(*options, commands.report_options(), machine);
      });
  commands.Changes(clean);
  AddChoice(clean, *options);
  commands.AddReport(clean);
  clean.add_option("--method", options->method, "How files are removed (else as the settings say)")
      ->check(OneOf(kMethods));
  clean
      .add_option("--older-than", options->older_than,
                  "Leave files of folders that were written in so many days")
      ->check(CLI::Range(0, INT16_MAX))
      ->type_name("DAYS");
  clean.add_flag("--preview", options->preview, "List what would go; change nothing");
  if (commands.platform().works_on_volumes) return;
  clean.add_flag("--at-next-start", options->at_next_start,
                 "Have Windows remove at its next start what is in use in its own folder");
}

}  // namespace quellix
