#pragma once

#include <string>
#include <vector>

#include "plugins/recipe_list.h"
#include "run/protected_places.h"

namespace quellix::modPlugin {

enum class Standing {
  kWhole,         // everything that it names is carried out
  kPart,          // some of it
  kRefused,       // nothing, as all that it names is precious
  kNotUnderstood  // nothing, as nobody knows what it means
};

struct Judgement {
  Standing standing = Standing::kWhole;
  std::vector<std::string> remarks;  // what is not carried out, and why; what nobody knows
};

// How much of a list's entry is carried out on this machine. Changes nothing.
Judgement Judge(const Machine& machine, ProtectedPlaces& places, const ListedRecipe& recipe);

}  // namespace quellix::modPlugin
