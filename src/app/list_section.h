#pragma once

#include <string>
#include <vector>

#include "browsers/browser_catalogue.h"
#include "platform/machine.h"
#include "platform/system_cleaners.h"

namespace quellix {

// What can be cleaned beside the items, as the main window lists it: a heading with its rows.
struct ListSection {
  enum class Kind { kBrowser, kCleaners };
  struct Row {
    std::string name;  // it is ticked by
    std::string rule;  // that its entries carry
    std::string label;
    std::string cost;       // what its user loses besides traces; "" for nothing
    std::string details;    // a sentence or more
    bool is_risky = false;  // what it takes cannot be had again by any means
  };

  Kind kind = Kind::kBrowser;
  std::string title;
  std::vector<Row> rows = {};
};

ListSection SectionOf(const FoundBrowser& browser);
ListSection SectionOf(const std::vector<SystemCleaner>& cleaners);

// Those of this machine: the browsers found, without Firefox, which has its items, and Windows' own
// cleaners. Changes nothing and never throws Error.
std::vector<ListSection> FindSections(const Machine& machine);

}  // namespace quellix
