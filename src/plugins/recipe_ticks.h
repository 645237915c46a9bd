#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/recipe_list.h"

namespace quellix::modPlugin {

// Which recipes of the lists are ticked (recipes.txt), by name in any case, and as what each was
// seen: its fingerprint when a person was last shown what it would remove. One that is not seen, or
// has changed since, is not to run.
class RecipeTicks {
 public:
  // A missing file is none. Saving writes only what has changed. Both throw Error; a file that
  // could not be read or written stays.
  void Load(const Machine& machine);
  void Save(const Machine& machine);

  bool IsTicked(std::string_view name) const;
  void SetTicked(std::string_view name, bool ticked);
  std::vector<std::string> Ticked() const;  // by name

  bool IsSeen(const ListedRecipe& recipe) const;
  void SetSeen(std::string_view name, std::string fingerprint);

 private:
  struct Row {
    std::string name;
    bool ticked = false;
    std::string seen = {};
    bool operator==(const Row&) const = default;
  };
  using Rows = std::map<std::string, Row>;  // by name in upper case

  Row& RowOf(std::string_view name);

  Rows rows_, stored_;
};

}  // namespace quellix::modPlugin
