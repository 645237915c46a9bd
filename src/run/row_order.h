#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quellix {

// By what a list is sorted, and which way.
template <typename Column>
struct RowOrder {
  Column column;
  bool descending = false;
};

// Sorts by a column; by the same again turns it around.
template <typename Column>
void TurnOrder(std::optional<RowOrder<Column>>& order, Column column) {
  const bool again = order && order->column == column;
  order = RowOrder<Column>{column, again && !order->descending};
}

// Sorts the indexes of rows, of which the first `sorted` are so already, by what `compare(a, b)`
// says of two: below, above or 0. Rows that are equal stay in their order.
template <typename Compare>
void SortRows(std::vector<uint32_t>& rows, size_t sorted, bool descending, Compare compare) {
  const auto precedes = [&](uint32_t a, uint32_t b) {
    return descending ? compare(a, b) > 0 : compare(a, b) < 0;
  };
  const auto middle = rows.begin() + static_cast<std::ptrdiff_t>(sorted);
  std::stable_sort(middle, rows.end(), precedes);
  std::inplace_merge(rows.begin(), middle, rows.end(), precedes);
}

template <typename Number>
int CompareNumbers(Number a, Number b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

}  // namespace quellix
