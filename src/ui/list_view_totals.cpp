// What a list tells of all its rows together, and how its user left its columns.
#include <algorithm>

#include "ui/dpi.h"
#include "ui/list_view.h"

namespace quellix {

void ListView::SetTotals(const Locale& locale, SizeOf size_of, Counts counts) {
  size_of_ = std::move(size_of);
  counts_ = std::move(counts);
  footer_.Attach(list_, locale);
}

void ListView::SetEmpty(std::function<std::string()> why) { footer_.SetEmpty(std::move(why)); }

void ListView::SetTickedButton(HWND button, std::function<bool()> may) {
  footer_.SetButton(button, std::move(may));
}

ListTotals ListView::Totals() const {
  ListTotals totals;
  totals.has_ticks = box_of_ != nullptr;
  const int rows = ListView_GetItemCount(list_);
  for (int row = 0; row < rows; ++row) {
    if (counts_ && !counts_(row)) continue;
    const Box box = box_of_ ? box_of_(row) : Box::kNone;
    totals.Add(box == Box::kOn || box == Box::kDimmedOn,
               size_of_ ? size_of_(row) : std::optional<double>());
  }
  return totals;
}

void ListView::Recount() const {
  if (footer_.is_attached()) footer_.Show(Totals());
}

void ListView::Refresh() const {
  InvalidateRect(list_, nullptr, FALSE);
  Recount();
}

std::vector<int> ListView::Widths(int dpi) const {
  std::vector<int> widths;
  for (int i = 0; i < Header_GetItemCount(ListView_GetHeader(list_)); ++i) {
    widths.push_back(MulDiv(ListView_GetColumnWidth(list_, i), kDesignDpi, dpi));
  }
  return widths;
}

void ListView::SetWidths(std::span<const int> widths, int dpi) {
  for (int i = 0; i < static_cast<int>(widths.size()); ++i) {
    ListView_SetColumnWidth(list_, i, Scale(widths[i], dpi));
  }
}

std::vector<int> ListView::ColumnOrder() const {
  std::vector<int> columns(static_cast<size_t>(Header_GetItemCount(ListView_GetHeader(list_))));
  ListView_GetColumnOrderArray(list_, static_cast<int>(columns.size()), columns.data());
  return columns;
}

void ListView::SetColumnOrder(std::vector<int> columns) {
  std::vector<int> present = ColumnOrder();
  if (columns == present || !std::ranges::is_permutation(columns, present)) return;
  ListView_SetColumnOrderArray(list_, static_cast<int>(columns.size()), columns.data());
  Refresh();
}

}  // namespace quellix
