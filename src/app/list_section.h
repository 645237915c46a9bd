#pragma once

#include <string>
#include <vector>

#include "browsers/browser_catalogue.h"
#include "platform/machine.h"
#include "platform/system_cleaners.h"
#include "plugins/recipe_run.h"

namespace quellix {

// What can be cleaned beside the items, as the main window lists it: a heading with its rows.
struct ListSection {
  enum class Kind { kBrowser, kCleaners, kRecipes };
  struct Row {
    std::string name;  // it is ticked by
    std::string rule;  // that its entries carry
    std::string label;
    std::string cost;        // what its user loses besides traces; "" for nothing
    std::string details;     // a sentence or more
    bool is_risky = false;   // what it takes cannot be had again by any means
    bool goes_along = true;  // is ticked together with others, unless it is risky
    bool needs_administrator = false;
    modPlugin::Fingerprints fingerprints = {};  // of a recipe: it runs only as it was seen
  };

  Kind kind = Kind::kBrowser;
  std::string title;
  std::vector<Row> rows = {};
  std::string told = {};  // of one without rows: why, a sentence
};

ListSection SectionOf(const FoundBrowser& browser);
ListSection SectionOf(const std::vector<SystemCleaner>& cleaners);

// Those of this machine but for recipes: the browsers found, without Firefox, which has its items,
// and Windows' own cleaners. Changes nothing and never throws Error.
std::vector<ListSection> FindSections(const Machine& machine);

}  // namespace quellix
