#pragma once

#include <string>
#include <vector>

#include "app/selection.h"
#include "browsers/browser_catalogue.h"
#include "platform/system_cleaners.h"
#include "plugins/recipe_ticks.h"
#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Runs the cleaners of all checked items in run order, appends the summary to RunLog and shows the
// report (not in a hidden run).
void RunCleaning(CleaningContext& context, const Selection& selection);

// Keeps a run that is over for later reading, as the settings say. RunCleaning and RunOneItem do
// that themselves.
void KeepRun(CleaningContext& context);

// Runs one item, whatever the state of its box, with the same log and report.
void RunOneItem(CleaningContext& context, const Item& item);

// What is cleaned beside the items.
struct OtherChoices {
  std::vector<BrowserChoice> browsers = {};
  std::vector<modPlugin::RecipeChoice> recipes = {};
  std::vector<SystemCleaner> cleaners = {};
  std::vector<std::string> paths = {};     // of files and folders that somebody named
  std::vector<const Item*> searches = {};  // that have no box among the items
  int Count() const {
    return static_cast<int>(browsers.size() + recipes.size() + cleaners.size() + paths.size() +
                            searches.size());
  }
};
// Cleans that alone, likewise.
void RunOthers(CleaningContext& context, const OtherChoices& choices);

}  // namespace quellix
