#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "ui/handles.h"
#include "ui/windows_api.h"

namespace quellix {

struct Column {
  const wchar_t* title;
  int width;            // 96-DPI units
  bool number = false;  // stands at the right; not for the first column
};

struct Cell {
  std::wstring text;
  int image = -1;  // of the images given, from 0; only the first column shows one
};

// A list in report form whose rows live elsewhere and are asked for when they are shown.
class ListView {
 public:
  using Provider = std::function<Cell(int row, int column)>;

  // `list` is an owner-data list view and outlives its use here.
  void Attach(HWND list, std::span<const Column> columns, Provider provider);
  // Images and column widths for a resolution. `icons` are resources of the program.
  void SetResolution(int dpi, std::span<const Column> columns, std::span<const int> icons);
  // Selects nothing.
  void SetRows(int count);
  std::vector<size_t> SelectedRows() const;
  int CountSelected() const { return ListView_GetSelectedCount(list_); }
  // Selects one row, with the focus, and brings it into view.
  void Select(size_t row);
  void SelectAll() { ListView_SetItemState(list_, -1, LVIS_SELECTED, LVIS_SELECTED); }
  // Gives a column, of at least that many pixels, the room that the others leave.
  void FillWith(int column, int minimum);
  // The arrow on the heading of the column that sorts.
  void ShowOrder(int column, bool descending);
  // True when the notification was this list's and is answered.
  bool OnNotify(NMHDR& header);

 private:
  HWND list_ = nullptr;
  Provider provider_;
  UniqueImages images_;
};

}  // namespace quellix
