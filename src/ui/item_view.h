#pragma once

#include <functional>
#include <optional>

#include "app/item_list.h"
#include "ui/list_view.h"

namespace quellix {

// The main window's list of all that can be cleaned: lstvItems and the box for all, Check3. It only
// shows the engine's selection: a click changes that, and it follows.
class ItemView {
 public:
  ItemView(const Machine& machine, Selection& selection)
      : machine_(machine), selection_(selection) {}

  // Whether a click may change anything now.
  std::function<bool()> may_change;
  // Called when ticks have changed, when another row is selected, and when rows have moved.
  std::function<void()> on_ticks, on_selected, on_moved;

  void Attach(HWND window);
  void OnResolution(int dpi);
  void OnSized(int dpi);
  ItemList& list() { return *list_; }
  ListView& view() { return view_; }
  // Shows ticks, settings and what was found anew; rows may have moved.
  void Refresh() {
    Change([] {});
  }
  // The same with other rows beside the items.
  void SetSections(std::vector<ListSection> sections);
  // The same while rows stay where they are.
  void Repaint() const { view_.Refresh(); }
  // The row that the pane tells of; nothing without one.
  std::optional<size_t> Selected() const;
  void BringIntoView(const Item& item) const;
  // Where an item's row stands in the window; empty for one that is not in view.
  RECT PlaceOf(const Item& item) const;

  void ToggleAll();
  bool OnNotify(NMHDR& header, LRESULT& result);
  // The row whose menu is asked for at `screen`, which is moved to it when the keyboard asks;
  // nothing for one that cleans nothing by itself, or is switched off.
  std::optional<size_t> RowForMenu(HWND control, POINT& screen) const;

 private:
  Box BoxOf(int row) const;
  RowLook LookOf(int row) const;
  void Toggle(int row);
  void OnClick(const NMITEMACTIVATE& click);
  void OnChanged(const NMLISTVIEW& change);
  void Fold(WORD key);
  // The rows in view, from above.
  std::vector<ItemList::Identity> InView() const;
  void ScrollTo(const std::vector<ItemList::Identity>& in_view) const;
  void Change(const std::function<void()>& change);

  Machine machine_;
  Selection& selection_;
  HWND window_ = nullptr, control_ = nullptr;
  std::optional<ItemList> list_;
  ListView view_;
  std::optional<ItemList::Identity> selected_;
  bool is_moving_ = false;  // rows are being listed anew
};

}  // namespace quellix
