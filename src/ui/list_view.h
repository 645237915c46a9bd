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

// The box before a row, in the order of MakeBoxImages.
enum class Box { kNone, kOff, kOn, kSome, kDimmedOff, kDimmedOn };

enum class RowLook { kPlain, kMarked, kDimmed, kHeading };

// For the owner of a list with more boxes than ticked and not.
UniqueImages MakeBoxImages(HWND window, int dpi);

inline constexpr COLORREF kMarkedRow = RGB(255, 0, 0);

// A list in report form whose rows live elsewhere and are asked for when they are shown.
class ListView {
 public:
  using Provider = std::function<Cell(int row, int column)>;
  // Whether a row is ticked, and what a click on its box or the space bar does.
  using IsTicked = std::function<bool(int row)>;
  using BoxOf = std::function<Box(int row)>;
  using Toggle = std::function<void(int row)>;
  using IsMarked = std::function<bool(int row)>;
  using LookOf = std::function<RowLook(int row)>;
  // The row that a typed beginning means, from a row on; -1 for none.
  using Finder = std::function<int(const wchar_t* begins, int from)>;
  using Tip = std::function<std::wstring(int row)>;

  // `list` is an owner-data list view and outlives its use here.
  void Attach(HWND list, std::span<const Column> columns, Provider provider);
  // Each row gets a check box. The space bar toggles those of the selected rows that are as the
  // focused one is.
  void SetCheckBoxes(IsTicked is_ticked, Toggle toggle);
  // Boxes of all kinds, likewise.
  void SetBoxes(BoxOf box_of, Toggle toggle);
  // Rows whose text is painted in kMarkedRow.
  void SetMarks(IsMarked is_marked);
  void SetLooks(LookOf look_of) { look_of_ = std::move(look_of); }
  // Typing selects the row that begins so.
  void SetFinder(Finder finder) { finder_ = std::move(finder); }
  // A text shown while the mouse rests on a row; "" for none.
  void SetTips(Tip tip);

  // Images and column widths for a resolution. `icons` are resources of the program.
  void SetResolution(int dpi, std::span<const Column> columns, std::span<const int> icons);
  // Images for a resolution that are not the program's; without any, rows have no room for one.
  void SetImages(UniqueImages images);
  // Selects nothing.
  void SetRows(int count);
  // More rows behind those that are shown; selection and place are kept.
  void GrowTo(int count);
  // Paints again what is seen.
  void Refresh() const { InvalidateRect(list_, nullptr, FALSE); }
  std::vector<size_t> SelectedRows() const;
  int CountSelected() const { return ListView_GetSelectedCount(list_); }
  // The row with the focus, -1 for none.
  int FocusedRow() const { return ListView_GetNextItem(list_, -1, LVNI_FOCUSED); }
  // Selects one row, with the focus, and brings it into view unless it is told otherwise.
  void Select(size_t row, bool is_shown = true);
  void SelectAll() { ListView_SetItemState(list_, -1, LVIS_SELECTED, LVIS_SELECTED); }
  void SelectNone() { ListView_SetItemState(list_, -1, 0, LVIS_SELECTED); }
  // Gives a column, of at least that many pixels, the room that the others leave.
  void FillWith(int column, int minimum);
  // The arrow on the heading of the column that sorts.
  void ShowOrder(int column, bool descending);
  // A menu of the columns at `screen`, for the keyboard (there -1, -1) what the headings are for
  // the mouse; the chosen column, or -1.
  int AskForOrder(HWND window, POINT screen) const;
  // Widths of the columns in 96-DPI units, and how the user left them.
  std::vector<int> Widths(int dpi) const;
  void SetWidths(std::span<const int> widths, int dpi);
  // The place of a context menu: `screen`, or for the keyboard the focused row.
  POINT MenuPlace(POINT screen) const;
  // True when the notification was this list's and is answered; `result` is then what to return.
  bool OnNotify(NMHDR& header, LRESULT* result = nullptr);

 private:
  void ShowBoxes(BoxOf box_of, Toggle toggle);
  void Answer(LVITEMW& item) const;
  LRESULT Paint(NMLVCUSTOMDRAW& draw);
  bool OnClick(const NMITEMACTIVATE& click);
  void ToggleRow(int row);
  void ToggleSelected();

  HWND list_ = nullptr;
  Provider provider_;
  BoxOf box_of_;  // null for a list without boxes
  Toggle toggle_;
  bool has_own_boxes_ = false;  // of all kinds, not of the list's own images
  LookOf look_of_;
  Finder finder_;
  Tip tip_;
  UniqueImages images_, boxes_;
  UniqueFont heading_font_;
  ULONGLONG typed_at_ = 0;  // milliseconds, of the tick count
};

}  // namespace quellix
