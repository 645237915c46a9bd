#pragma once

#include <vector>

#include "platform/machine.h"
#include "platform/pause.h"
#include "plugins/recipe_list.h"

namespace quellix::modPlugin {

// Which of many recipes have something to do here (IsFound), in their order. Each folder on the way
// to what they look for is read once, and each variable asked for once, so that thousands take no
// longer than a look. After a stop the rest counts as not found.
std::vector<bool> FindRecipes(const Machine& machine, const std::vector<ListedRecipe>& recipes,
                              const Pause& pause = {});

}  // namespace quellix::modPlugin
