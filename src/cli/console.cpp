#include "cli/console.h"

#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <map>

#include "cli/backup_commands.h"
#include "cli/cache_command.h"
#include "cli/console_plugins.h"
#include "cli/console_run.h"
#include "cli/registry_command.h"
#include "cli/search_command.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

struct CleanOptions {
  std::vector<std::string> items;
  std::string method;
  bool preview = false;
  MachineOptions machine;
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

int Clean(const CleanOptions& options, const ConsolePlatform& platform) {
  const std::unique_ptr<OpenMachine> opened = platform.open(options.machine);
  ConsoleRun run(opened->machine(), options.preview ? RunKind::kPreview : RunKind::kReal);
  Engine& engine = run.engine();
  const std::string problem = SelectItems(options.items, engine.selection());
  if (!problem.empty()) return Fail(problem, kWrongUsage);
  if (!options.method.empty()) engine.state().FixedRemovalMode = kMethods.at(options.method);
  engine.RunCleaning();
  if (options.preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return run.Outcome();
}

CLI::App* AddSearch(CLI::App& app, SearchCommand& options, const ConsolePlatform& platform) {
  CLI::App* const search = app.add_subcommand("search", "Search whole drives for junk files");
  search->add_option("kind", options.kind, "What to search for")
      ->required()
      ->check(CLI::IsMember(SearchKinds()));
  search->add_flag("--delete", options.remove, "Delete what is found (else nothing is changed)");
  search->add_flag("--json", options.json, "Print the finds as JSON");
  AddMachineOptions(*search, options.machine, platform);
  return search;
}

CLI::App* AddRegistry(CLI::App& app, RegistryCommand& options, const ConsolePlatform& platform) {
  CLI::App* const registry =
      app.add_subcommand("registry", "List registry references that lead nowhere");
  registry->add_option("tool", options.tool, "Which references")
      ->required()
      ->check(CLI::IsMember(ScanToolNames()));
  registry->add_flag("--thorough", options.thorough,
                     "file-references: examine every value of every key");
  registry->add_flag("--delete", options.remove,
                     "Delete those that lead nowhere, kept in a .reg backup (else nothing is "
                     "changed)");
  registry->add_flag("--json", options.json, "Print the references as JSON");
  AddMachineOptions(*registry, options.machine, platform);
  return registry;
}

void AddClean(CLI::App& app, CleanOptions& options, const ConsolePlatform& platform) {
  CLI::App* const clean = app.add_subcommand("clean", "Clean the named items");
  clean->add_option("--item", options.items, "Keys of the items, as \"items\" lists them")
      ->required()
      ->type_name("KEY");
  std::vector<std::string> methods;
  for (const auto& [name, mode] : kMethods) methods.push_back(name);
  clean->add_option("--method", options.method, "How files are removed (else as the settings say)")
      ->check(CLI::IsMember(methods));
  clean->add_flag("--preview", options.preview, "List what would go; change nothing");
  AddMachineOptions(*clean, options.machine, platform);
}

}  // namespace

int Fail(std::string_view sentence, ExitCode code) {
  std::cerr << "quellixctl: " << sentence << std::endl;
  return code;
}

void AddMachineOptions(CLI::App& command, MachineOptions& options,
                       const ConsolePlatform& platform) {
  command.add_option("--settings", options.settings, "Folder of Settings.ini and the lists")
      ->type_name("DIR");
  if (!platform.works_on_volumes) return;
  command.add_option("--volume", options.volume, "Folder the Windows volume is mounted in")
      ->required()
      ->type_name("DIR");
  command.add_option("--drive", options.drives, "A further drive of that Windows")
      ->type_name("D:=DIR");
  command.add_option("--user", options.user, "Whose traces to clean")->type_name("NAME");
}

int RunConsole(std::vector<std::string> arguments, const ConsolePlatform& platform) {
  CLI::App app("Quellix cleans a Windows machine of junk and traces of use.", "quellixctl");
  app.require_subcommand(1);
  CleanOptions options;
  const CLI::App* const items = app.add_subcommand("items", "List the items that can be cleaned");
  AddClean(app, options, platform);
  BackupCommands backup(app, [&](CLI::App& command, MachineOptions& machine) {
    AddMachineOptions(command, machine, platform);
  });
  ConsolePlugins plugins(app, platform);
  CacheCommand cache(app, platform);
  SearchCommand search_options;
  const CLI::App* const search = AddSearch(app, search_options, platform);
  RegistryCommand registry_options;
  const CLI::App* const registry = AddRegistry(app, registry_options, platform);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? kDone : kWrongUsage;
  }
  try {
    if (backup.parsed()) return backup.Run(platform);
    if (plugins.IsParsed()) return plugins.Run();
    if (registry->parsed()) return RunRegistry(registry_options, platform);
    if (cache.IsParsed()) return cache.Run();
    if (search->parsed()) return RunSearch(search_options, platform);
    return items->parsed() ? ListItems() : Clean(options, platform);
  } catch (const std::exception& error) {
    return Fail(error.what(), kFailed);
  }
}

}  // namespace quellix
