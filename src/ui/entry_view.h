#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/entry_list.h"
#include "platform/machine.h"
#include "ui/list_view.h"
#include "ui/row_menu.h"

namespace quellix {

// The list of a run's entries in a window, with its filter and its summary: the controls lstvRun,
// txtFilter and lblRunSummary.
class EntryView {
 public:
  // What is shown: what a run did, what one would do, or that in boxes to choose from.
  enum class Kind { kDone, kFound, kChoice };

  explicit EntryView(const Machine& machine) : machine_(machine) {}

  // Called when entries were added to the keep list.
  std::function<void()> on_kept;

  // `place_width`: of the first column, in 96-DPI units.
  void Attach(HWND window, int place_width = kPlaceWidth);
  // The totals of its rows stand below the list.
  void ShowTotals();
  void OnResolution(int dpi);
  void Show(std::shared_ptr<const RunEntries> entries, Kind kind);
  // See EntryList.
  void ShowScope(const std::optional<EntryScope>& scope);
  // Takes in what the run has come by since; in the chosen order when it is over.
  void Grow();
  void Settle();
  ListView& view() { return view_; }
  // Null before the first Show.
  EntryList* list() { return list_ ? &*list_ : nullptr; }
  void ShowSummary() const;
  void Refresh() const { view_.Refresh(); }

  // The filter, the buttons that act on rows, and the entries of their menu; false for any other.
  bool OnCommand(int id, int code);
  // True when the notification was the list's; `result` is then what to return.
  bool OnNotify(NMHDR& header, LRESULT& result);
  // True when the menu was opened.
  bool OnContextMenu(HWND control, POINT screen);

 private:
  static constexpr int kPlaceWidth = 300;

  void ListAnew();
  void EnableCommands() const;
  RowPlace PlaceOf(size_t row) const;
  bool Has(int row) const { return list_ && static_cast<size_t>(row) < list_->RowCount(); }
  Cell CellAt(int row, int column) const;
  void Toggle(int row);
  void Sort(int column);
  void Filter();
  void OpenFolder() const;
  void Copy() const;
  void KeepSelected();
  void Tell(std::string_view sentence) const;

  Machine machine_;
  HWND window_ = nullptr;
  int place_width_ = kPlaceWidth;
  ListView view_;
  std::optional<EntryList> list_;
};

}  // namespace quellix
