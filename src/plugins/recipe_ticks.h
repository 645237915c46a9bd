#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/recipe_list.h"

namespace quellix::modPlugin {

// A recipe that is to run, as what a person has seen it.
struct RecipeChoice {
  std::string name;
  std::string seen;  // fingerprint; "" for never
};

// Which recipes of the lists are ticked (recipes.txt), by name in any case, and as what each was
// seen: its fingerprint when a person was last shown what it would remove. One that is not seen, or
// has changed since, is not to run.
class RecipeTicks {
 public:
  // A missing file is none. Saving writes only what has changed since, beside what others have
  // changed in the file meanwhile. Both throw Error; a file that could not be read or written
  // stays.
  void Load(const Machine& machine);
  void Save(const Machine& machine);

  bool IsTicked(std::string_view name) const;
  void SetTicked(std::string_view name, bool ticked);
  void Clear();  // the ticks; what was seen stays
  bool empty() const { return Ticked().empty(); }
  std::vector<std::string> Ticked() const;    // by name
  std::vector<RecipeChoice> Choices() const;  // those, likewise
  RecipeChoice ChoiceOf(std::string_view name) const;

  void SetSeen(std::string_view name, std::string fingerprint);

 private:
  struct Row {
    std::string name;
    bool ticked = false;
    std::string seen = {};
    bool operator==(const Row&) const = default;
  };
  using Rows = std::map<std::string, Row>;  // by name in upper case

  static Rows Read(const Machine& machine);
  Row& RowOf(std::string_view name);

  Rows rows_, stored_;
};

}  // namespace quellix::modPlugin
