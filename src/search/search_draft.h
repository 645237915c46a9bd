#pragma once

#include <string>
#include <vector>

#include "search/search_options.h"

namespace quellix {

struct DriveRow {
  std::string entry;  // "C: Hard drive"
  bool ticked = false;
};

// The options of searches while they are edited.
struct SearchDraft {
  // The drives of the machine and those that srch.txt names besides, by letter.
  std::vector<DriveRow> drives;
  SearchOptions options;  // but its drives; both dates are set
  std::string size_kb;    // as typed
};

SearchDraft MakeSearchDraft(const Machine& machine, const SearchOptions& options);

// Whether the dates, if they are asked for, leave a day between them to find files of.
bool HasSensibleDates(const SearchDraft& draft);
// Whether the size, if it is asked for, is a whole number of at most 32 bits.
bool HasSensibleSize(const SearchDraft& draft);

// Replaces srch.txt. A size that is not asked for and makes no sense stays what it was. Throws
// Error; the old file then stays.
void SaveSearchDraft(const Machine& machine, const SearchDraft& draft);

}  // namespace quellix
