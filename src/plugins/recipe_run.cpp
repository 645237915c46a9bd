#include "plugins/recipe_run.h"

#include "cleaners/skeleton.h"
#include "platform/sha256.h"
#include "platform/words.h"
#include "plugins/mod_plugin.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_rights.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/run_steps.h"

namespace quellix::modPlugin {
namespace {

bool LacksRights(const Machine& machine, const ListedRecipe& recipe) {
  return NeedsAdministrator(recipe.plugin) && !machine.session.HasAdministratorRights();
}

bool MayAnything(const Machine& machine, const ListedRecipe& recipe) {
  return !LacksRights(machine, recipe) || NamesAnything(WithoutAdministrator(recipe.plugin));
}

void LogCount(CleaningContext& context, const std::string& name) {
  const RunState& state = context.state;
  LogLine(context.state,
          Log("%1: Files Deleted: %2 Space Gained: %3", name, std::to_string(state.FilesDeleted),
              FormatSize(state.SpaceGained, 2, true, context.machine.system.UserLocale())));
}

void RunChosen(CleaningContext& context, const ListedRecipe& recipe, const RecipeChoice& choice) {
  ResetItemCounters(context.state);
  const bool is_seen = FingerprintsOf(context.machine, recipe).Has(choice.seen);
  const bool may_anything = MayAnything(context.machine, recipe);
  if (may_anything && !is_seen && !context.state.IsPreview) {
    context.state.SomeErrors = true;
    return LogLine(context.state,
                   Log("%1 is not cleaned: it is new or has changed; look at its preview first.",
                       recipe.name));
  }
  context.view.SetStatus(recipe.name + "...");
  if (RunListed(context, recipe) && may_anything) LogCount(context, recipe.name);
}

// What of it may be carried out; nothing where that is none of it.
std::optional<Plugin> AllowedPart(CleaningContext& context, const ListedRecipe& recipe) {
  if (!LacksRights(context.machine, recipe)) return recipe.plugin;
  Plugin rest = WithoutAdministrator(recipe.plugin);
  const bool is_any = NamesAnything(rest);
  LogLine(context.state, is_any
                             ? Log("%1: what needs administrator rights was left.", recipe.name)
                             : Log("%1 is skipped: it needs administrator rights.", recipe.name));
  if (!is_any) return std::nullopt;
  return rest;
}

void NoteCarriedOut(CleaningContext& context, const ListedRecipe& recipe) {
  context.state.Parts.Get<ShownRecipes>().all.push_back(
      {recipe.name, FingerprintsOf(context.machine, recipe),
       recipe.plugin.loses_data ? recipe.plugin.cost : ""});
}

}  // namespace

std::string RuleOf(std::string_view name) { return "recipe:" + std::string(name); }

bool RunListed(CleaningContext& context, const ListedRecipe& recipe) {
  if (LacksRights(context.machine, recipe) && !IsFound(context.machine, recipe.plugin))
    return false;
  const std::optional<Plugin> allowed = AllowedPart(context, recipe);
  if (!allowed) return true;
  context.state.Entries->BeginRule(RuleOf(recipe.name));
  Collected collected = ProcessRecords(context, *allowed);
  const bool is_found = collected.is_found, is_carried_out = collected.is_carried_out;
  RemoveCollected(context, std::move(collected));
  context.state.Entries->BeginRule("");
  if (is_carried_out && context.state.IsPreview && !context.state.AbortRequested)
    NoteCarriedOut(context, recipe);
  return is_found;
}

Fingerprints FingerprintsOf(const Machine& machine, const ListedRecipe& recipe) {
  const std::string whole = FingerprintOf(recipe);
  return {whole, LacksRights(machine, recipe) ? Sha256(whole + " without rights") : whole};
}

void RunRecipes(CleaningContext& context, std::span<const RecipeChoice> choices) {
  if (choices.empty()) return;
  const RecipeLists lists = LoadRecipeLists(context.machine, PauseOf(context));
  for (const Sentence& problem : lists.problems) LogLine(context.state, Logged(problem));
  context.state.SomeErrors = context.state.SomeErrors || !lists.problems.empty();
  const size_t before = context.state.Entries->all.size();
  for (const RecipeChoice& choice : choices) {
    if (StopsRun(context)) return;
    if (const ListedRecipe* recipe = lists.Find(choice.name)) {
      RunChosen(context, *recipe, choice);
    } else if (lists.problems.empty()) {
      LogLine(context.state, Log("%1 is in no list of recipes any more.", choice.name));
    }
  }
  // As items do, with the time of this cleaning stored.
  if (context.state.Entries->all.size() != before) EndRun(context, "");
}

void NoteShown(RecipeTicks& ticks, const std::shared_ptr<ShownRecipes>& shown) {
  if (!shown) return;
  for (const ShownRecipe& recipe : shown->all) {
    const auto& [whole, here] = recipe.fingerprints;
    if (ticks.ChoiceOf(recipe.name).seen != whole) ticks.SetSeen(recipe.name, here);
  }
}

void KeepShown(const Machine& machine, const std::shared_ptr<ShownRecipes>& shown) {
  RecipeTicks ticks;
  ticks.Load(machine);
  NoteShown(ticks, shown);
  ticks.Save(machine);
}

}  // namespace quellix::modPlugin
