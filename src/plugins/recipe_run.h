#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "plugins/recipe_list.h"
#include "run/context.h"

namespace quellix::modPlugin {

// Carries one recipe of a list out and removes what it names; false where it finds nothing to do
// here. In a preview it is noted as shown (ShownRecipes) once it is carried out to its end.
bool RunListed(CleaningContext& context, const ListedRecipe& recipe);

// The same for all that are ticked, a line in RunLog each. What is new, has changed since a person
// saw its preview, or is in no list any more is told and left out; in a preview what is new is
// shown. Where recipes.txt cannot be read that is told.
void RunTickedRecipes(CleaningContext& context);
// Whether any is ticked.
bool HasTickedRecipes(const Machine& machine);

// Names and fingerprints of what a preview found; a part of its run.
struct ShownRecipes {
  std::vector<std::pair<std::string, std::string>> all;
};

// From now on those may run: a person has been shown what the preview found. Null for none. Throws
// Error.
void KeepShown(const Machine& machine, const std::shared_ptr<ShownRecipes>& shown);

}  // namespace quellix::modPlugin
