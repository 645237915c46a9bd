#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/words.h"
#include "run/row_order.h"
#include "ui/handles.h"
#include "ui/list_footer.h"
#include "ui/windows_api.h"

namespace quellix {

struct Column {
  const char* title;    // in English
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

// A list in report form whose rows live elsewhere and are asked for when they are shown. Every list
// behaves alike: a click on a heading sorts by it, again turns it around; typing selects the row
// that begins so; Ctrl+A selects all, Ctrl+C copies the selected rows, Space ticks them, Del
// deletes them where that can be; headings are dragged to where their column is wanted. A row is
// one of its owner's, wherever it is shown.
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
  using Sorter = std::function<void(int column)>;

  // `list` is an owner-data list view and outlives its use here.
  void Attach(HWND list, std::span<const Column> columns, Provider provider);
  // Each row gets a check box. The space bar toggles those of the selected rows that are as the
  // focused one is.
  void SetCheckBoxes(IsTicked is_ticked, Toggle toggle);
  // Boxes of all kinds, likewise.
  void SetBoxes(BoxOf box_of, Toggle toggle);
  // Rows whose text is painted as marked.
  void SetMarks(IsMarked is_marked);
  void SetLooks(LookOf look_of) { look_of_ = std::move(look_of); }
  // For an owner that sorts its rows by itself; else the list does, by the texts that it shows.
  void SetSorter(Sorter sorter) { sorter_ = std::move(sorter); }
  // What Del does with the selected rows.
  void SetEraser(std::function<void()> erase) { erase_ = std::move(erase); }
  // Below the list stands what its rows come to, and how large where `size_of` tells their size, in
  // bytes; false of `counts` leaves out a row that is none, such as a heading.
  using SizeOf = std::function<std::optional<double>(int row)>;
  using Counts = std::function<bool(int row)>;
  void SetTotals(const Locale& locale, SizeOf size_of = {}, Counts counts = {});
  // For lists with totals: why there are no rows and what to do; a button that acts on the ticked
  // rows, whose caption then tells how many, and which can be used where there are some and `may`
  // says nothing else.
  void SetEmpty(std::function<std::string()> why);
  void SetTickedButton(HWND button, std::function<bool()> may = {});
  // Ticks, sizes or what may be done have changed.
  void Recount() const;
  // For an owner that knows better what is typed.
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
  void Refresh() const;
  // From the lowest on.
  std::vector<size_t> SelectedRows() const;
  int CountSelected() const { return ListView_GetSelectedCount(list_); }
  // The row with the focus, -1 for none.
  int FocusedRow() const { return RowAt(ListView_GetNextItem(list_, -1, LVNI_FOCUSED)); }
  // Selects one row, with the focus, and brings it into view unless it is told otherwise.
  void Select(size_t row, bool is_shown = true);
  void SelectAll() { ListView_SetItemState(list_, -1, LVIS_SELECTED, LVIS_SELECTED); }
  void SelectNone() { ListView_SetItemState(list_, -1, 0, LVIS_SELECTED); }
  // Gives a column, of at least that many pixels, the room that the others leave.
  void FillWith(int column, int minimum);
  // The arrow on the heading of the column that sorts.
  void ShowOrder(int column, bool descending);
  // As a click on its heading.
  void SortBy(int column);
  // As clicks that lead to that order.
  void Order(int column, bool descending);
  // What SortBy led to last; none before.
  const std::optional<RowOrder<int>>& chosen_order() const { return chosen_; }
  std::vector<std::wstring> Titles() const;
  // The selected rows as text: tabs between columns, CR LF behind each row.
  void CopySelected() const;
  // Whether some selected row has a box that is not as wanted, and sets them so.
  bool CanTick(bool ticked) const;
  void TickSelected(bool ticked);
  bool CanErase() const { return erase_ && CountSelected() > 0; }
  void Erase();
  // Widths of the columns in 96-DPI units, and how the user left them.
  std::vector<int> Widths(int dpi) const;
  void SetWidths(std::span<const int> widths, int dpi);
  // The columns from left to right; one that is no such order is not taken.
  std::vector<int> ColumnOrder() const;
  void SetColumnOrder(std::vector<int> columns);
  // The place of a context menu: `screen`, or for the keyboard the focused row.
  POINT MenuPlace(POINT screen) const;
  // True when the notification was this list's and is answered; `result` is then what to return.
  bool OnNotify(NMHDR& header, LRESULT& result);

 private:
  void ShowBoxes(BoxOf box_of, Toggle toggle);
  void Answer(LVITEMW& item) const;
  ListTotals Totals() const;
  void TakeLooks() const;
  static LRESULT CALLBACK PaintHeadings(HWND list, UINT message, WPARAM wparam, LPARAM lparam,
                                        UINT_PTR id, DWORD_PTR data);
  LRESULT Paint(NMLVCUSTOMDRAW& draw);
  LRESULT PaintRow(NMLVCUSTOMDRAW& draw);
  bool OnClick(const NMITEMACTIVATE& click);
  bool OnKey(WORD key);
  int Find(const wchar_t* begins, int from) const;
  // The row that is shown at a place, and back.
  int RowAt(int place) const;
  int PlaceOf(size_t row) const;
  void OrderRows(size_t count);
  void SortItself(int column);
  bool IsDescending(int column) const;
  void ToggleRow(int row);
  void ToggleSelected();

  HWND list_ = nullptr;
  Provider provider_;
  BoxOf box_of_;  // null for a list without boxes
  Toggle toggle_;
  bool has_own_boxes_ = false;  // of all kinds, not of the list's own images
  LookOf look_of_;
  Finder finder_;
  Sorter sorter_;
  std::function<void()> erase_;
  std::optional<RowOrder<int>> chosen_;
  std::optional<RowOrder<int>> order_;   // of a list that sorts itself
  std::vector<uint32_t> rows_, places_;  // then by place its row, and the other way round
  Tip tip_;
  SizeOf size_of_;
  Counts counts_;
  ListFooter footer_;
  UniqueImages images_, boxes_;
  UniqueFont heading_font_;
  ULONGLONG typed_at_ = 0;  // milliseconds, of the tick count
};

}  // namespace quellix
