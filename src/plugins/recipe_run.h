#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "plugins/recipe_list.h"
#include "plugins/recipe_ticks.h"
#include "run/context.h"

namespace quellix::modPlugin {

// The rule that a recipe's entries carry: "recipe:Name".
std::string RuleOf(std::string_view name);

// Carries one recipe of a list out and removes what it names; false where it finds nothing to do
// here. Without administrator rights what needs them is left, which is told. In a preview it is
// noted as shown (ShownRecipes) once it is carried out to its end.
bool RunListed(CleaningContext& context, const ListedRecipe& recipe);

// Of a recipe: all of it, and what is left of it here where administrator rights lack. Who has seen
// either has seen what it does here.
struct Fingerprints {
  std::string whole, here;
  bool Has(std::string_view seen) const { return seen == whole || seen == here; }
};
Fingerprints FingerprintsOf(const Machine& machine, const ListedRecipe& recipe);

// Carries out the chosen ones within a run that is begun, a line in RunLog each. What is new, has
// changed since a person saw its preview, or is in no list any more is told and left out; in a
// preview what is new is shown. Never throws Error.
void RunRecipes(CleaningContext& context, std::span<const RecipeChoice> choices);

// What a preview carried out; a part of its run.
struct ShownRecipe {
  std::string name;
  Fingerprints fingerprints;
  std::string loses;  // what cannot be had again, clauses; "" for nothing
};
struct ShownRecipes {
  std::vector<ShownRecipe> all;
};

// From now on those may run: a person has been shown what the preview found. Null for none.
void NoteShown(RecipeTicks& ticks, const std::shared_ptr<ShownRecipes>& shown);
// The same in the file. Throws Error.
void KeepShown(const Machine& machine, const std::shared_ptr<ShownRecipes>& shown);

}  // namespace quellix::modPlugin
