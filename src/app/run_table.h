#pragma once

#include "app/report_table.h"
#include "run/run_state.h"

namespace quellix {

// What the stable names in a table mean; the first of its kind for a word that is none.
EntryKind KindOf(std::string_view name);
Fate FateOf(std::string_view name);
Way WayOf(std::string_view name);
Outcome OutcomeOf(std::string_view name);

// A row an entry of a run or a preview, which the table keeps, and its totals. How each item ended
// is in fields by its key.
ReportTable TableOfRun(std::string_view command, const RunTotals& totals, bool preview);

}  // namespace quellix
