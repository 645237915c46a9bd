#include "ui/item_pane.h"

#include "platform/words.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr int kPlaceWidth = 190;  // 96-DPI units

}  // namespace

void ItemPane::Attach() {
  entries_.on_kept = [this] { on_kept(); };
  entries_.Attach(window_.window(), kPlaceWidth);
}

void ItemPane::Reveal(std::initializer_list<int> controls, bool shown) const {
  for (const int control : controls) {
    const HWND handle = window_.Control(control);
    if (!shown && GetFocus() == handle) window_.FocusOn(window_.Control(lstvItems));
    ShowWindow(handle, shown ? SW_SHOWNA : SW_HIDE);
  }
}

void ItemPane::NextTip(bool wanted) {
  tip_ = wanted ? Tr(tips_.Next()) : "";
  window_.SetText(txtTip, tip_);
  Reveal({lblTip, txtTip, cmdNextTip}, !has_row_ && !tip_.empty());
}

void ItemPane::Show(const ItemList& list, std::optional<size_t> row) {
  has_row_ = row.has_value();
  std::optional<EntryScope> scope;
  if (row) scope = list.ScopeOf(*row);
  const bool is_other = scope != scope_;
  scope_ = std::move(scope);
  if (row) {
    window_.SetText(lblItem, list.Text(*row, ItemColumn::kName));
    window_.SetText(txtItem, list.Details(*row));
    InvalidateRect(window_.Control(lblItem), nullptr, TRUE);
  }
  Reveal({lblItem, txtItem}, has_row_);
  Reveal({lblTip, txtTip, cmdNextTip}, !has_row_ && !tip_.empty());
  if (found_ && is_other) entries_.ShowScope(scope_);
}

void ItemPane::ShowEntries(std::shared_ptr<const RunEntries> found) {
  if (found != nullptr && found == found_) return entries_.Grow();
  found_ = std::move(found);
  if (found_) {
    entries_.Show(found_, EntryView::Kind::kFound);
    entries_.ShowScope(scope_);
  }
  Reveal({lblRunSummary, lstvRun}, found_ != nullptr);
}

void ItemPane::Settle() {
  if (found_) entries_.Settle();
}

}  // namespace quellix
