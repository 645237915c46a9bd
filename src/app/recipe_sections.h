#pragma once

#include <string>
#include <vector>

#include "app/list_section.h"
#include "platform/machine.h"
#include "platform/pause.h"
#include "plugins/recipe_list.h"

namespace quellix {

// Recipes of the user's own lists as the main window lists them: behind a heading that tells how
// many find something here, or why none does, those that do below a heading for each of their
// groups. Without a list there is nothing.
struct FoundRecipes {
  std::vector<ListSection> sections;
  bool is_whole = true;  // it was not stopped
};
FoundRecipes FindRecipeSections(const Machine& machine, const Pause& pause = {});

// A row, as it is ticked, seen and told. Names that others have chosen may be of any length and
// hold any character; the label is short.
ListSection::Row RowOf(const Machine& machine, const modPlugin::ListedRecipe& recipe);

}  // namespace quellix
