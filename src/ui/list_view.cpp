#include "ui/list_view.h"

#include <algorithm>

#include "ui/dpi.h"

namespace quellix {

void ListView::Attach(HWND list, std::span<const Column> columns, Provider provider) {
  list_ = list;
  provider_ = std::move(provider);
  ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_SUBITEM | LVCF_FMT;
    column.fmt = columns[i].number ? LVCFMT_RIGHT : LVCFMT_LEFT;
    column.pszText = const_cast<wchar_t*>(columns[i].title);
    column.iSubItem = i;
    ListView_InsertColumn(list, i, &column);
  }
}

void ListView::SetResolution(int dpi, std::span<const Column> columns, std::span<const int> icons) {
  for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
    ListView_SetColumnWidth(list_, i, Scale(columns[i].width, dpi));
  }
  if (icons.empty()) return;
  const int side = Scale(16, dpi);
  UniqueImages images(
      ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, static_cast<int>(icons.size()), 0));
  for (const int id : icons) {
    ImageList_AddIcon(images.Get(), LoadProgramIcon(id, side, side).Get());
  }
  ListView_SetImageList(list_, images.Get(), LVSIL_SMALL);
  images_ = std::move(images);
}

void ListView::SetRows(int count) {
  ListView_SetItemCountEx(list_, count, LVSICF_NOSCROLL);
  ListView_SetItemState(list_, -1, 0, LVIS_SELECTED);
  InvalidateRect(list_, nullptr, TRUE);
}

std::vector<size_t> ListView::SelectedRows() const {
  std::vector<size_t> rows;
  for (int row = -1; (row = ListView_GetNextItem(list_, row, LVNI_SELECTED)) >= 0;) {
    rows.push_back(static_cast<size_t>(row));
  }
  return rows;
}

void ListView::Select(size_t row) {
  const int index = static_cast<int>(row);
  ListView_SetItemState(list_, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(list_, index, FALSE);
}

void ListView::FillWith(int column, int minimum) {
  RECT client;
  GetClientRect(list_, &client);
  // Room for a scroll bar is kept whether it shows or not, so that it brings no second one.
  const bool scrolls = (GetWindowLongW(list_, GWL_STYLE) & WS_VSCROLL) != 0;
  int width = client.right - (scrolls ? 0 : GetSystemMetrics(SM_CXVSCROLL));
  for (int i = Header_GetItemCount(ListView_GetHeader(list_)); i-- > 0;) {
    if (i != column) width -= ListView_GetColumnWidth(list_, i);
  }
  ListView_SetColumnWidth(list_, column, std::max(width, minimum));
}

void ListView::ShowOrder(int column, bool descending) {
  const HWND header = ListView_GetHeader(list_);
  for (int i = Header_GetItemCount(header); i-- > 0;) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    Header_GetItem(header, i, &item);
    item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
    if (i == column) item.fmt |= descending ? HDF_SORTDOWN : HDF_SORTUP;
    Header_SetItem(header, i, &item);
  }
}

bool ListView::OnNotify(NMHDR& header) {
  if (header.hwndFrom != list_ || header.code != LVN_GETDISPINFOW) return false;
  LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
  const Cell cell = provider_(item.iItem, item.iSubItem);
  if (item.mask & LVIF_TEXT) lstrcpynW(item.pszText, cell.text.c_str(), item.cchTextMax);
  if (item.mask & LVIF_IMAGE) item.iImage = cell.image;
  return true;
}

}  // namespace quellix
