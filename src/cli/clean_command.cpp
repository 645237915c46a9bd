#include <iomanip>
#include <iostream>
#include <map>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "platform/text.h"

namespace quellix {
namespace {

struct CleanOptions {
  std::vector<std::string> items;
  std::string method;
  int older_than = -1;  // days; -1: as the settings say
  bool preview = false;
};

const std::map<std::string, int16_t> kMethods = {
    {"backup", kBackUp}, {"delete", kDelete}, {"recycle", kRecycle}, {"wipe", kWipe}};

int ListItems() {
  for (const Item& item : AllItems()) {
    std::cout << std::left << std::setw(24) << item.key << std::setw(20) << GroupTitle(item.group)
              << ReplaceNoCase(item.Label(), "&&", "&")
              << (item.cleaner != nullptr ? "" : " (not available yet)") << "\n";
  }
  std::cout << std::flush;
  return kDone;
}

// Ticks the named items; a sentence when one cannot be cleaned, else "".
std::string SelectItems(const std::vector<std::string>& names, Selection& selection) {
  for (const Item& item : AllItems()) selection.SetChecked(item, false);
  for (const std::string& name : names) {
    const Item* const item = FindItem(name);
    if (item == nullptr) {
      return "there is no item \"" + name + "\"; \"quellixctl items\" lists them.";
    }
    if (item->cleaner == nullptr) return "the item \"" + name + "\" is not available yet.";
    selection.SetChecked(*item, true);
  }
  return {};
}

int Clean(const CleanOptions& options, const Machine& machine) {
  ConsoleRun run(machine, options.preview ? RunKind::kPreview : RunKind::kReal);
  Engine& engine = run.engine();
  const std::string problem = SelectItems(options.items, engine.selection());
  if (!problem.empty()) return Fail(problem, kWrongUsage);
  if (!options.method.empty()) engine.state().FixedRemovalMode = kMethods.at(options.method);
  if (options.older_than >= 0)
    engine.state().FixedOlderThanDays = static_cast<int16_t>(options.older_than);
  engine.RunCleaning();
  if (options.preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return run.Outcome();
}

}  // namespace

void AddCleanCommands(ConsoleCommands& commands) {
  commands.AddPlain("items", "List the items that can be cleaned", ListItems);
  const auto options = std::make_shared<CleanOptions>();
  CLI::App& clean =
      commands.Add("clean", "Clean the named items",
                   [options](const Machine& machine) { return Clean(*options, machine); });
  clean.add_option("--item", options->items, "Keys of the items, as \"items\" lists them")
      ->required()
      ->type_name("KEY");
  clean.add_option("--method", options->method, "How files are removed (else as the settings say)")
      ->check(OneOf(kMethods));
  clean
      .add_option("--older-than", options->older_than,
                  "Leave files of folders that were written in so many days")
      ->check(CLI::Range(0, INT16_MAX))
      ->type_name("DAYS");
  clean.add_flag("--preview", options->preview, "List what would go; change nothing");
}

}  // namespace quellix
