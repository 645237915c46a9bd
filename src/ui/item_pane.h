#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "app/item_list.h"
#include "app/tips.h"
#include "ui/dialog.h"
#include "ui/entry_view.h"

namespace quellix {

// What the main window tells beside its list: of the selected row what it removes, and after a look
// its entries; of none the tip of the day.
class ItemPane {
 public:
  // All live as long as the pane.
  ItemPane(const Machine& machine, const Dialog& window, Tips& tips)
      : window_(window), tips_(tips), entries_(machine) {}

  // Called when an entry was added to the keep list.
  std::function<void()> on_kept;

  void Attach();
  void OnResolution(int dpi) { entries_.OnResolution(dpi); }
  // Another tip; without `wanted` none.
  void NextTip(bool wanted);
  bool ShowsTip() const { return !tip_.empty(); }
  void Show(const ItemList& list, std::optional<size_t> row);
  // The entries of a look, which may go on: again with those that have come since. Null for none.
  void ShowEntries(std::shared_ptr<const RunEntries> found);
  // The look is over.
  void Settle();

  bool OnCommand(int id, int code) { return found_ && entries_.OnCommand(id, code); }
  bool OnNotify(NMHDR& header, LRESULT& result) { return entries_.OnNotify(header, result); }
  bool OnContextMenu(HWND control, POINT screen) { return entries_.OnContextMenu(control, screen); }

 private:
  void Reveal(std::initializer_list<int> controls, bool shown) const;

  const Dialog& window_;
  Tips& tips_;
  EntryView entries_;
  std::string tip_;
  std::optional<EntryScope> scope_;  // of the selected row
  bool has_row_ = false;
  std::shared_ptr<const RunEntries> found_;
};

}  // namespace quellix
