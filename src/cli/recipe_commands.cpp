#include <algorithm>
#include <array>
#include <optional>

#include "cli/commands.h"
#include "cli/nearest.h"
#include "cli/recipe_process.h"
#include "platform/error.h"
#include "platform/profile_strings.h"
#include "plugins/mod_plugin.h"
#include "plugins/recipe_finder.h"
#include "plugins/recipe_judgement.h"
#include "plugins/recipe_run.h"
#include "plugins/recipe_ticks.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

using modPlugin::Judgement;
using modPlugin::ListedRecipe;
using modPlugin::RecipeLists;
using modPlugin::RecipeTicks;
using Names = std::vector<std::string>;

constexpr struct {
  std::string_view name, text;
} kStandings[] = {{"whole", "carried out whole"},
                  {"part", "in part"},
                  {"refused", "refused"},
                  {"notUnderstood", "not understood"}};

struct RecipeOptions {
  Names names;
  std::string file;
  bool all = false, preview = false;
};

RecipeTicks LoadTicks(const Machine& machine) {
  RecipeTicks ticks;
  ticks.Load(machine);
  return ticks;
}

bool IsSeen(const Machine& machine, const RecipeTicks& ticks, const ListedRecipe& recipe) {
  return modPlugin::FingerprintsOf(machine, recipe).Has(ticks.ChoiceOf(recipe.name).seen);
}

struct ListedRow {
  const ListedRecipe* recipe;
  bool ticked, seen, found;
};

std::vector<ListedRow> RowsOf(const RecipeLists& lists, const Machine& machine, bool all) {
  const RecipeTicks ticks = LoadTicks(machine);
  std::vector<ListedRow> rows;
  const std::vector<bool> found = modPlugin::FindRecipes(machine, lists.recipes);
  for (size_t i = 0; i < found.size(); ++i) {
    const ListedRecipe& recipe = lists.recipes[i];
    const bool ticked = ticks.IsTicked(recipe.name);
    if (all || found[i] || ticked)
      rows.push_back({&recipe, ticked, IsSeen(machine, ticks, recipe), found[i]});
  }
  return rows;
}

void Print(std::ostream& out, const ListedRow& row) {
  const modPlugin::Plugin& plugin = row.recipe->plugin;
  out << (row.ticked ? "[x] " : "[ ] ") << row.recipe->name << "; " << plugin.group
      << (plugin.cost.empty() ? "" : "; costs: " + plugin.cost)
      << (row.recipe->warning.empty() ? "" : "; its author warns: " + row.recipe->warning)
      << (row.ticked && !row.seen ? "; not seen yet" : "")
      << (row.found ? "\n" : "; not found here\n");
}

Names Vanished(const RecipeLists& lists, const Machine& machine) {
  Names names = LoadTicks(machine).Ticked();
  std::erase_if(names, [&lists](const std::string& name) { return lists.Find(name) != nullptr; });
  return names;
}

std::string JoinedLines(const Names& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return text;
}

int List(const RecipeOptions& options, const ReportOptions& report_options,
         const Machine& machine) {
  Report report(report_options);
  const RecipeLists lists = modPlugin::LoadRecipeLists(machine);
  const std::vector<ListedRow> rows = RowsOf(lists, machine, options.all);
  for (const ListedRow& row : rows) Print(report.text(), row);
  for (const Sentence& problem : lists.problems) report.text() << problem.english << "\n";
  const Names vanished = Vanished(lists, machine);
  for (const std::string& name : vanished) {
    report.text() << name << " is ticked and in no list any more.\n";
  }
  if (lists.paths.empty() && lists.problems.empty()) report.text() << "There is no list.\n";
  const auto cells = [&](size_t i) -> std::vector<ReportCell> {
    const ListedRow& row = rows[i];
    const modPlugin::Plugin& plugin = row.recipe->plugin;
    return {row.recipe->name,
            plugin.group,
            row.ticked,
            row.seen,
            row.found,
            TextCell(plugin.cost),
            plugin.loses_data,
            TextCell(row.recipe->warning),
            lists.paths[row.recipe->list]};
  };
  return report.Finish({.command = "recipes list",
                        .columns = {"name", "group", "ticked", "seen", "found", "cost", "losesData",
                                    "warning", "list"},
                        .count = rows.size(),
                        .row = cells,
                        .summary = {{"entries", uint64_t{lists.recipes.size()}},
                                    {"vanished", TextCell(JoinedLines(vanished))}}},
                       lists.problems.empty() ? kDone : kFailed);
}

std::vector<ListedRecipe> RecipesToCheck(const std::string& file, const Machine& machine) {
  if (!file.empty()) {
    const std::string bytes = ReadOwnFile(file, "list");
    return modPlugin::ParseRecipeLists({DecodeIni(bytes, machine.system)});
  }
  RecipeLists lists = modPlugin::LoadRecipeLists(machine);
  if (!lists.problems.empty()) throw Error(Error::Kind::kOther, lists.problems[0]);
  if (lists.paths.empty()) {
    throw Error(Error::Kind::kMissing,
                "there is no list; name a file, or put Winapp2.ini beside "
                "Settings.ini.");
  }
  return std::move(lists.recipes);
}

int Check(const RecipeOptions& options, const ReportOptions& report_options,
          const Machine& machine) {
  Report report(report_options);
  const std::vector<ListedRecipe> recipes = RecipesToCheck(options.file, machine);
  ProtectedPlaces places = LoadPlaces(machine);
  std::vector<Judgement> judgements;
  std::array<uint64_t, std::size(kStandings)> counts{};
  for (const ListedRecipe& recipe : recipes) {
    const Judgement& judged = judgements.emplace_back(modPlugin::Judge(machine, places, recipe));
    const auto standing = static_cast<size_t>(judged.standing);
    ++counts[standing];
    if (judged.remarks.empty()) continue;
    report.text() << "line " << recipe.line << ": " << recipe.name << ": "
                  << kStandings[standing].text << "\n";
    for (const std::string& remark : judged.remarks) report.text() << "  " << remark << "\n";
  }
  report.text() << recipes.size() << (recipes.size() == 1 ? " entry" : " entries");
  std::vector<std::pair<std::string_view, ReportCell>> summary;
  for (size_t i = 0; i < counts.size(); ++i) {
    report.text() << (i == 0 ? ": " : ", ") << counts[i] << " " << kStandings[i].text;
    summary.emplace_back(kStandings[i].name, counts[i]);
  }
  report.text() << ".\n";
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    return {recipes[i].name, uint64_t{recipes[i].line},
            std::string(kStandings[static_cast<size_t>(judgements[i].standing)].name),
            TextCell(JoinedLines(judgements[i].remarks))};
  };
  return report.Finish({.command = "recipes check",
                        .columns = {"name", "line", "standing", "remarks"},
                        .count = recipes.size(),
                        .row = row,
                        .summary = summary},
                       counts[0] == recipes.size() ? kDone : kFailed);
}

std::string WhyUnknown(const RecipeLists& lists, const std::string& name) {
  Names names;
  for (const ListedRecipe& recipe : lists.recipes) names.push_back(recipe.name);
  const std::string nearest = Nearest(name, names);
  if (!lists.problems.empty()) return lists.problems[0].english;
  return "no list has a recipe \"" + name + "\"." +
         (nearest.empty() ? "" : " Did you mean \"" + nearest + "\"?");
}

std::string WhyUnseen(const ListedRecipe& recipe) {
  return recipe.name + " is carried out once its preview was seen: quellixctl recipes preview \"" +
         recipe.name + "\"";
}

int Process(const Names& names, const ReportOptions& options, const Machine& machine,
            RunKind kind) {
  const RecipeLists lists = modPlugin::LoadRecipeLists(machine);
  const RecipeTicks ticks = LoadTicks(machine);
  std::vector<NamedRecipe> recipes;
  for (const std::string& name : names) {
    const ListedRecipe* recipe = lists.Find(name);
    if (recipe == nullptr) return Fail(WhyUnknown(lists, name), kWrongUsage);
    if (kind == RunKind::kReal && !IsSeen(machine, ticks, *recipe))
      return Fail(WhyUnseen(*recipe), kFailed);
    recipes.push_back({recipe->name, [recipe](CleaningContext& context) {
                         if (modPlugin::RunListed(context, *recipe)) return;
                         modPlugin::LogNotFound(context);
                       }});
  }
  return ProcessRecipes("recipes process", recipes, options, machine, kind);
}

void Tell(const ListedRecipe& recipe, bool is_seen) {
  const modPlugin::Plugin& plugin = recipe.plugin;
  if (!plugin.cost.empty()) {
    std::cout << recipe.name << (plugin.loses_data ? ": this cannot be had again: " : ": costs: ")
              << plugin.cost << "\n";
  }
  if (!recipe.warning.empty()) {
    std::cout << recipe.name << ": its author warns: " << recipe.warning << "\n";
  }
  if (!is_seen) std::cout << WhyUnseen(recipe) << "\n";
}

int Switch(const Names& names, const Machine& machine, bool on) {
  const RecipeLists lists = modPlugin::LoadRecipeLists(machine);
  RecipeTicks ticks = LoadTicks(machine);
  for (const std::string& name : names) {
    const ListedRecipe* recipe = lists.Find(name);
    const bool is_known = recipe != nullptr || (!on && ticks.IsTicked(name));
    if (!is_known) return Fail(WhyUnknown(lists, name), kWrongUsage);
    ticks.SetTicked(recipe != nullptr ? recipe->name : name, on);
    if (on) Tell(*recipe, IsSeen(machine, ticks, *recipe));
  }
  ticks.Save(machine);
  return kDone;
}

// What only reads the lists.
void AddReaders(ConsoleCommands& commands, CLI::App& recipes,
                const std::shared_ptr<RecipeOptions>& options) {
  CLI::App& list = commands.AddTo(recipes, "list",
                                  "List the recipes that find something here, and the ticked ones",
                                  [options, &commands](const Machine& machine) {
                                    return List(*options, commands.report_options(), machine);
                                  });
  list.add_flag("--all", options->all, "List those too that find nothing here");
  commands.AddReport(list);
  CLI::App& check = commands.AddTo(
      recipes, "check", "Tell which entries of a list are carried out whole, and why not",
      [options, &commands](const Machine& machine) {
        return Check(*options, commands.report_options(), machine);
      });
  check.add_option("file", options->file, "A list, of the console's own files")->type_name("FILE");
  commands.AddReport(check);
}

}  // namespace

void AddRecipeCommands(ConsoleCommands& commands) {
  CLI::App& recipes =
      commands.AddGroup("recipes", "Work with the entries of a recipe list that you keep");
  const auto options = std::make_shared<RecipeOptions>();
  AddReaders(commands, recipes, options);
  const auto add = [&](const char* name, const char* what,
                       const std::function<int(const Machine&)>& action) -> CLI::App& {
    CLI::App& command = commands.AddTo(recipes, name, what, action);
    command.add_option("names", options->names, "Entries")->required()->type_name("NAME");
    return command;
  };
  const auto process = [options, &commands](const Machine& machine, RunKind kind) {
    return Process(options->names, commands.report_options(), machine, kind);
  };
  CLI::App& preview_run =
      add("preview", "List what the named recipes would remove",
          [process](const Machine& machine) { return process(machine, RunKind::kPreview); });
  commands.Changes(preview_run);
  commands.AddReport(preview_run);
  CLI::App& run =
      add("process", "Clean by the named recipes", [process, options](const Machine& machine) {
        return process(machine, options->preview ? RunKind::kPreview : RunKind::kReal);
      });
  commands.Changes(run);
  run.add_flag("--preview", options->preview, "List what would go; change nothing");
  commands.AddReport(run);
  add("enable", "Tick a recipe, as the window does: runs carry it out",
      [options](const Machine& machine) { return Switch(options->names, machine, true); });
  add("disable", "Take its tick away",
      [options](const Machine& machine) { return Switch(options->names, machine, false); });
}

}  // namespace quellix
