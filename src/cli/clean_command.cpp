#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>

#include "app/mod_shut_down.h"
#include "app/run_table.h"
#include "cleaners/volume_items.h"
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
  std::string then;
};

// As they are named on the console.
const std::map<std::string, Group> kGroups = {{"files", Group::kFolderFiles},
                                              {"miscellaneous", Group::kMiscellaneous},
                                              {"internet", Group::kInternet},
                                              {"firefox", Group::kFirefox}};

std::string NameOf(Group group) {
  return std::ranges::find(kGroups, group, [](const auto& row) { return row.second; })->first;
}

bool IsVolumeItem(const Item& item) { return FindVolumeItem(item.key) != nullptr; }

// All that `clean --item` takes here.
std::vector<const Item*> ItemsHere(const ConsolePlatform& platform) {
  std::vector<const Item*> items;
  for (const Item& item : AllItems()) items.push_back(&item);
  if (!platform.works_on_volumes) return items;
  for (const Item& item : VolumeItems()) items.push_back(&item);
  return items;
}

int ListItems(const ReportOptions& options, const ConsolePlatform& platform) {
  Report report(options);
  const std::vector<const Item*> items = ItemsHere(platform);
  for (const Item* const item : items) {
    const std::string_view group = IsVolumeItem(*item) ? "Volume" : GroupTitle(item->group);
    report.text() << std::left << std::setw(24) << item->key << std::setw(20) << group
                  << ReplaceNoCase(item->label, "&&", "&")
                  << (item->cleaner != nullptr ? "" : " (not available yet)") << "\n";
  }
  const auto row = [&items](size_t i) -> std::vector<ReportCell> {
    const Item& item = *items[i];
    const ReportCell cost = *item.guide.cost ? ReportCell(item.guide.cost) : ReportCell();
    return {item.key, IsVolumeItem(item) ? "volume" : NameOf(item.group),
            ReplaceNoCase(item.label, "&&", "&"), item.guide.removes, cost};
  };
  return report.Finish({.command = "items",
                        .columns = {"item", "group", "label", "removes", "cost"},
                        .count = items.size(),
                        .row = row,
                        .summary = {}},
                       kDone);
}

std::string NoSuchItem(const std::string& name, const ConsolePlatform& platform) {
  if (FindVolumeItem(name)) {
    return "the item \"" + name + "\" is cleaned on a volume, of a Windows that does not run.";
  }
  std::vector<std::string> keys;
  for (const Item* const item : ItemsHere(platform)) keys.emplace_back(item->key);
  const std::string nearest = Nearest(name, keys);
  return "there is no item \"" + name + "\"; " +
         (nearest.empty() ? "" : "did you mean \"" + nearest + "\"? ") +
         "\"quellixctl items\" lists them.";
}

// Takes each item by its name; a sentence when one cannot be cleaned, else "".
std::string SelectByName(const std::vector<std::string>& names, const ConsolePlatform& platform,
                         Selection& selection) {
  std::vector<const Item*>& volume_items = selection.volume_items();
  for (const std::string& name : names) {
    const Item* const of_volume = platform.works_on_volumes ? FindVolumeItem(name) : nullptr;
    const Item* const item = of_volume ? of_volume : FindItem(name);
    if (item == nullptr) return NoSuchItem(name, platform);
    if (item->cleaner == nullptr) return "the item \"" + name + "\" is not available yet.";
    if (!of_volume) {
      selection.SetChecked(*item, true);
    } else if (std::ranges::find(volume_items, item) == volume_items.end()) {
      volume_items.push_back(item);
    }
  }
  return "";
}

// Ticks what the options name; a sentence when one cannot be cleaned, else "". By --all and --group
// goes what the window's boxes would tick, which leaves out what is under protection.
std::string SelectItems(const CleanOptions& options, const ConsolePlatform& platform,
                        Selection& selection) {
  if (!options.ticked) {
    for (const Item& item : AllItems()) selection.SetChecked(item, false);
    selection.browsers().Clear();
    selection.cleaners().Clear();
    selection.recipes().Clear();
  }
  if (options.all) selection.SelectAll(true);
  for (const std::string& group : options.groups) selection.CheckGroup(kGroups.at(group));
  std::string problem = SelectByName(options.items, platform, selection);
  if (!problem.empty()) return problem;
  const bool is_empty = selection.CountChecked() == 0 && selection.browsers().empty() &&
                        selection.cleaners().empty() && selection.recipes().empty() &&
                        selection.volume_items().empty();
  return is_empty ? "nothing is chosen." : "";
}

modShutDown::Ending EndingOf(const CleanOptions& options) {
  return modShutDown::EndingNamed(options.then).value_or(modShutDown::Ending::kNone);
}

int Clean(const CleanOptions& options, const ReportOptions& report_options,
          const ConsolePlatform& platform, const Machine& machine) {
  if (options.preview && !options.then.empty())
    return Fail("--then goes with a cleaning, not with --preview.", kWrongUsage);
  Report report(report_options);
  ConsoleRun run(machine, options.preview ? RunKind::kPreview : RunKind::kReal, report.text());
  Engine& engine = run.engine();
  if (options.ticked && !engine.is_loaded())
    return Fail("it cannot be read what is ticked in the window.", kFailed);
  const std::string problem = SelectItems(options, platform, engine.selection());
  if (!problem.empty()) return Fail(problem, kWrongUsage);
  if (!options.method.empty()) engine.state().FixedRemovalMode = MethodOf(options.method);
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
  const int code =
      report.Finish(TableOfRun("clean", engine.state(), options.preview), run.Outcome());
  const bool is_over = code == kDone || code == kSomeFilesStayed;
  if (is_over) modShutDown::End(machine.session, EndingOf(options));
  return code;
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
  CLI::App& items = commands.AddPlain("items", "List the items that can be cleaned", [&commands] {
    return ListItems(commands.report_options(), commands.platform());
  });
  commands.AddReport(items);
  const auto options = std::make_shared<CleanOptions>();
  CLI::App& clean =
      commands.Add("clean", "Clean the named items", [options, &commands](const Machine& machine) {
        return Clean(*options, commands.report_options(), commands.platform(), machine);
      });
  commands.Changes(clean);
  AddChoice(clean, *options);
  commands.AddReport(clean);
  AddMethod(clean, options->method);
  clean
      .add_option("--older-than", options->older_than,
                  "Leave files of folders that were written in so many days")
      ->check(CLI::Range(0, INT16_MAX))
      ->type_name("DAYS");
  clean.add_flag("--preview", options->preview, "List what would go; change nothing");
  if (commands.platform().works_on_volumes) return;
  clean.add_flag("--at-next-start", options->at_next_start,
                 "Have Windows remove at its next start what is in use in its own folder");
  clean.add_option("--then", options->then, "End the session when the cleaning has ended well")
      ->check(CLI::IsMember({"shutdown", "restart", "logoff"}));
}

}  // namespace quellix
