#include "plugins/recipe_run.h"

#include "platform/error.h"
#include "plugins/mod_plugin.h"
#include "plugins/recipe_ticks.h"
#include "run/removal.h"
#include "run/run_steps.h"

namespace quellix::modPlugin {
namespace {

void Log(CleaningContext& context, std::string_view sentence) {
  context.state.RunLog.append(sentence).append("\r\n");
}

void LogCount(CleaningContext& context, const std::string& name, int files, double bytes) {
  Log(context, name + ": Files Deleted: " + std::to_string(files) + " Space Gained: " +
                   FormatSize(bytes, 2, true, context.machine.system.UserLocale()));
}

void RunTicked(CleaningContext& context, const ListedRecipe& recipe, const RecipeTicks& ticks) {
  if (!context.state.IsPreview && !ticks.IsSeen(recipe)) {
    context.state.SomeErrors = true;
    return Log(
        context,
        recipe.name + " is not cleaned: it is new or has changed; look at its preview first.");
  }
  const int files = context.state.FilesDeleted;
  const double bytes = context.state.SpaceGained;
  if (!RunListed(context, recipe)) return;
  NotePlace(context.state);
  LogCount(context, recipe.name, context.state.FilesDeleted - files,
           context.state.SpaceGained - bytes);
}

}  // namespace

bool RunListed(CleaningContext& context, const ListedRecipe& recipe) {
  context.state.Entries->BeginRule(recipe.name);
  Collected collected = ProcessRecords(context, recipe.plugin);
  const bool is_found = collected.is_found, is_carried_out = collected.is_carried_out;
  RemoveCollected(context, std::move(collected));
  if (is_carried_out && context.state.IsPreview && !context.state.AbortRequested) {
    context.state.Parts.Get<ShownRecipes>().all.emplace_back(recipe.name, FingerprintOf(recipe));
  }
  return is_found;
}

void RunTickedRecipes(CleaningContext& context) {
  RecipeTicks ticks;
  try {
    ticks.Load(context.machine);
  } catch (const Error& error) {
    context.state.SomeErrors = true;
    return Log(context, std::string("The ticked recipes cannot be read. ") + error.what());
  }
  if (ticks.Ticked().empty()) return;
  const RecipeLists lists = LoadRecipeLists(context.machine);
  for (const std::string& problem : lists.problems) Log(context, problem);
  context.state.SomeErrors = context.state.SomeErrors || !lists.problems.empty();
  for (const std::string& name : ticks.Ticked()) {
    if (const ListedRecipe* recipe = lists.Find(name)) {
      RunTicked(context, *recipe, ticks);
    } else if (lists.problems.empty()) {
      Log(context, name + " is in no list of recipes any more.");
    }
    if (context.state.AbortRequested) return;
  }
}

bool HasTickedRecipes(const Machine& machine) {
  try {
    RecipeTicks ticks;
    ticks.Load(machine);
    return !ticks.Ticked().empty();
  } catch (const Error&) {
    return true;
  }
}

void KeepShown(const Machine& machine, const std::shared_ptr<ShownRecipes>& shown) {
  if (!shown) return;
  RecipeTicks ticks;
  ticks.Load(machine);
  for (const auto& [name, fingerprint] : shown->all) ticks.SetSeen(name, fingerprint);
  ticks.Save(machine);
}

}  // namespace quellix::modPlugin
