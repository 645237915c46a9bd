// In which order a list shows its rows, and how one is found by its beginning.
#include <algorithm>
#include <numeric>

#include <shlwapi.h>

#include "ui/list_view.h"

namespace quellix {
namespace {

// What of a text tells its order: of a number its digits, however they are grouped.
std::wstring SortKey(std::wstring text, bool is_number) {
  if (is_number) std::erase_if(text, [](wchar_t c) { return c < L'0' || c > L'9'; });
  return text;
}

}  // namespace

int ListView::RowAt(int place) const {
  const auto index = static_cast<size_t>(place);
  return place >= 0 && index < rows_.size() ? static_cast<int>(rows_[index]) : place;
}

int ListView::PlaceOf(size_t row) const {
  return row < places_.size() ? static_cast<int>(places_[row]) : static_cast<int>(row);
}

void ListView::OrderRows(size_t count) {
  rows_.clear();
  places_.clear();
  if (!order_) return;
  LVCOLUMNW column{};
  column.mask = LVCF_FMT;
  ListView_GetColumn(list_, order_->column, &column);
  const bool is_number = (column.fmt & LVCFMT_JUSTIFYMASK) == LVCFMT_RIGHT;
  std::vector<std::wstring> keys;
  for (int row = 0; row < static_cast<int>(count); ++row) {
    keys.push_back(SortKey(provider_(row, order_->column).text, is_number));
  }
  rows_.resize(count);
  places_.resize(count);
  std::iota(rows_.begin(), rows_.end(), 0u);
  SortRows(rows_, 0, order_->descending, [&keys](uint32_t a, uint32_t b) {
    return StrCmpLogicalW(keys[a].c_str(), keys[b].c_str());
  });
  for (uint32_t place = 0; place < count; ++place) places_[rows_[place]] = place;
}

bool ListView::IsDescending(int column) const {
  HDITEMW item{};
  item.mask = HDI_FORMAT;
  Header_GetItem(ListView_GetHeader(list_), column, &item);
  return (item.fmt & HDF_SORTDOWN) != 0;
}

void ListView::SortBy(int column) {
  if (column < 0 || column >= Header_GetItemCount(ListView_GetHeader(list_))) return;
  sorter_ ? sorter_(column) : SortItself(column);
  chosen_ = RowOrder<int>{column, IsDescending(column)};
}

void ListView::Order(int column, bool descending) {
  SortBy(column);
  if (IsDescending(column) != descending) SortBy(column);
}

// What is selected stays so, wherever it goes.
void ListView::SortItself(int column) {
  const std::vector<size_t> selected = SelectedRows();
  const int focused = FocusedRow();
  TurnOrder(order_, column);
  SetRows(ListView_GetItemCount(list_));
  for (const size_t row : selected) {
    ListView_SetItemState(list_, PlaceOf(row), LVIS_SELECTED, LVIS_SELECTED);
  }
  if (focused >= 0) {
    const int place = PlaceOf(static_cast<size_t>(focused));
    ListView_SetItemState(list_, place, LVIS_FOCUSED, LVIS_FOCUSED);
  }
  ShowOrder(column, order_->descending);
}

// From the place on and around, as a name is found in any list.
int ListView::Find(const wchar_t* begins, int from) const {
  if (finder_) return finder_(begins, from);
  const int count = ListView_GetItemCount(list_), size = lstrlenW(begins);
  for (int i = 0; i < count; ++i) {
    const int place = (std::max(from, 0) + i) % count;
    const std::wstring text = provider_(RowAt(place), 0).text.substr(0, static_cast<size_t>(size));
    if (CompareStringOrdinal(text.c_str(), -1, begins, size, TRUE) == CSTR_EQUAL) return place;
  }
  return -1;
}

}  // namespace quellix
