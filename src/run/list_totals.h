#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/locale.h"

namespace quellix {

// What the rows of a list come to.
struct ListTotals {
  uint64_t rows = 0, ticked = 0;
  double bytes = 0, ticked_bytes = 0;
  bool has_sizes = false;  // its rows have a size
  bool has_ticks = false;  // and a box each

  void Add(bool is_ticked, std::optional<double> size);
};

// What stands below the list: "12 rows, 3.4 MB; 3 ticked, 1.0 MB"; "No rows" for none.
std::string TotalsText(const ListTotals& totals, const Locale& locale);

// What a button that acts on the ticked rows says: "&Delete ticked (3, 1.0 MB)"; without any
// ticked row the caption alone. `caption` is "&Delete".
std::string TickedCaption(const std::string& caption, const ListTotals& totals,
                          const Locale& locale);

}  // namespace quellix
