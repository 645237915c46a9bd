#include "ui/item_view.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "ui/dpi.h"
#include "ui/resource.h"
#include "ui/shield.h"

namespace quellix {
namespace {

constexpr Column kColumns[kItemColumns] = {
    {Mark("Item"), 196}, {Mark("Size"), 72, true}, {Mark("Files"), 48, true}, {Mark("Note"), 86}};
constexpr int kNote = static_cast<int>(ItemColumn::kNote);

}  // namespace

void ItemView::Attach(HWND window) {
  window_ = window;
  control_ = GetDlgItem(window, lstvItems);
  list_.emplace(machine_, selection_);
  view_.Attach(control_, kColumns, [this](int row, int column) {
    const auto index = static_cast<size_t>(row);
    const bool has_shield = column == 0 && list_->NeedsRights(index);
    return Cell{Wide(list_->Text(index, ItemColumn(column))),
                has_shield ? kShieldImage : kNoShieldImage};
  });
  view_.SetBoxes([this](int row) { return BoxOf(row); }, [this](int row) { Toggle(row); });
  view_.SetSorter([this](int column) {
    list_->Sort(ItemColumn(column));
    Refresh();
    view_.ShowOrder(column, list_->is_descending());
  });
  view_.SetLooks([this](int row) { return LookOf(row); });
  view_.SetFinder([this](const wchar_t* begins, int from) {
    const std::optional<size_t> row = list_->Find(Narrow(begins), static_cast<size_t>(from));
    return row ? static_cast<int>(*row) : -1;
  });
  view_.SetTips(
      [this](int row) { return Wide(list_->Text(static_cast<size_t>(row), ItemColumn::kNote)); });
  view_.SetRows(static_cast<int>(list_->RowCount()));
}

void ItemView::OnResolution(int dpi) {
  view_.SetResolution(dpi, kColumns, {});
  if (list_->may_need_rights()) view_.SetImages(MakeShieldImages(Scale(16, dpi)));
}

void ItemView::OnSized(int dpi) { view_.FillWith(kNote, Scale(kColumns[kNote].width, dpi)); }

Box ItemView::BoxOf(int row) const {
  const auto index = static_cast<size_t>(row);
  const std::optional<Ticks> ticks = list_->TicksOf(index);
  if (!ticks) return Box::kNone;
  const Item* const item = list_->At(index).item;
  if (item != nullptr && !selection_.IsEnabled(*item)) {
    return *ticks == Ticks::kAll ? Box::kDimmedOn : Box::kDimmedOff;
  }
  return *ticks == Ticks::kAll ? Box::kOn : *ticks == Ticks::kSome ? Box::kSome : Box::kOff;
}

RowLook ItemView::LookOf(int row) const {
  const auto index = static_cast<size_t>(row);
  if (list_->At(index).IsHeading()) return RowLook::kHeading;
  return list_->IsDimmed(index) ? RowLook::kDimmed : RowLook::kPlain;
}

std::vector<ItemList::Identity> ItemView::InView() const {
  std::vector<ItemList::Identity> rows;
  const auto top = static_cast<size_t>(ListView_GetTopIndex(control_)),
             count = static_cast<size_t>(ListView_GetCountPerPage(control_));
  for (size_t row = top; row < std::min(top + count, list_->RowCount()); ++row) {
    rows.push_back(list_->IdentityOf(row));
  }
  return rows;
}

// The first of them that is still listed stands where it stood.
void ItemView::ScrollTo(const std::vector<ItemList::Identity>& in_view) const {
  for (size_t i = 0; i < in_view.size(); ++i) {
    const std::optional<size_t> row = list_->RowOf(in_view[i]);
    if (!row) continue;
    RECT place{};
    ListView_GetItemRect(control_, static_cast<int>(*row), &place, LVIR_BOUNDS);
    const int rows = static_cast<int>(*row) - static_cast<int>(i) - ListView_GetTopIndex(control_);
    ListView_Scroll(control_, 0, rows * (place.bottom - place.top));
    return;
  }
}

// The row that was selected stays so wherever it goes, and is still seen when it was.
void ItemView::Change(const std::function<void()>& change) {
  const std::vector<ItemList::Identity> in_view = InView();
  const bool was_seen = selected_ && std::ranges::count(in_view, *selected_) > 0;
  is_moving_ = true;
  change();
  list_->Refresh();
  view_.SetRows(static_cast<int>(list_->RowCount()));
  ScrollTo(in_view);
  if (const auto row = selected_ ? list_->RowOf(*selected_) : std::nullopt) {
    view_.Select(*row, was_seen);
  }
  is_moving_ = false;
  if (!Selected()) selected_.reset();
  on_selected();
  on_moved();
}

void ItemView::SetSections(std::vector<ListSection> sections) {
  Change([&] { list_->SetSections(std::move(sections)); });
}

std::optional<size_t> ItemView::Selected() const {
  const int row = ListView_GetNextItem(control_, -1, LVNI_SELECTED);
  if (row < 0 || static_cast<size_t>(row) >= list_->RowCount()) return std::nullopt;
  return static_cast<size_t>(row);
}

void ItemView::BringIntoView(const Item& item) const {
  const std::optional<size_t> row = list_->RowOf(item);
  if (row) ListView_EnsureVisible(control_, static_cast<int>(*row), FALSE);
}

RECT ItemView::PlaceOf(const Item& item) const {
  const std::optional<size_t> row = list_->RowOf(item);
  RECT place{}, client{}, head{};
  if (!row) return place;
  ListView_GetItemRect(control_, static_cast<int>(*row), &place, LVIR_BOUNDS);
  GetClientRect(control_, &client);
  GetClientRect(ListView_GetHeader(control_), &head);
  if (place.top < head.bottom || place.bottom > client.bottom) return {};
  MapWindowPoints(control_, window_, reinterpret_cast<POINT*>(&place), 2);
  return place;
}

void ItemView::Toggle(int row) {
  if (!may_change()) return;
  Change([&] { list_->Toggle(static_cast<size_t>(row)); });
  on_ticks();
}

void ItemView::ToggleAll() {
  const bool checked = IsDlgButtonChecked(window_, Check3) != BST_CHECKED;
  CheckDlgButton(window_, Check3, checked ? BST_CHECKED : BST_UNCHECKED);
  Change([&] { list_->TickAll(checked); });
  on_ticks();
}

// The name of a group toggles it, and a fold opens wherever it is clicked.
void ItemView::OnClick(const NMITEMACTIVATE& click) {
  if (click.iItem < 0) return;
  const ItemList::Row& row = list_->At(static_cast<size_t>(click.iItem));
  const bool is_name = click.iSubItem == 0;
  if (row.folded > 0 || (row.IsHeading() && is_name)) Toggle(click.iItem);
}

// As in a tree: to the right what is folded away appears, to the left it goes.
void ItemView::Fold(WORD key) {
  const int row = view_.FocusedRow();
  if (row < 0 || list_->At(static_cast<size_t>(row)).section >= 0) return;
  const Group group = list_->At(static_cast<size_t>(row)).group;
  Change([&] { list_->SetFolded(group, key == VK_LEFT); });
}

void ItemView::OnChanged(const NMLISTVIEW& change) {
  if (is_moving_ || ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) == 0) return;
  const std::optional<size_t> row = Selected();
  selected_ = row ? std::optional(list_->IdentityOf(*row)) : std::nullopt;
  on_selected();
}

bool ItemView::OnNotify(NMHDR& header, LRESULT& result) {
  if (header.idFrom != lstvItems || !list_) return false;
  const bool is_answered = view_.OnNotify(header, result);
  switch (header.code) {
    case NM_CLICK:
    case NM_DBLCLK:
      if (!is_answered) OnClick(reinterpret_cast<const NMITEMACTIVATE&>(header));
      return true;
    case LVN_KEYDOWN: {
      const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
      if (key == VK_LEFT || key == VK_RIGHT) Fold(key);
      return true;
    }
    case LVN_ITEMCHANGED:
      OnChanged(reinterpret_cast<const NMLISTVIEW&>(header));
      return true;
    case LVN_ENDSCROLL:
      on_moved();
      return true;
    default:
      return true;
  }
}

std::optional<size_t> ItemView::RowForMenu(HWND control, POINT& screen) const {
  if (control != control_) return std::nullopt;
  const std::optional<size_t> row = Selected();
  screen = view_.MenuPlace(screen);
  if (!row || list_->CommandAt(*row).empty()) return std::nullopt;
  const Item* const item = list_->At(*row).item;
  return item == nullptr || selection_.IsEnabled(*item) ? row : std::nullopt;
}

}  // namespace quellix
