#include "ui/entry_view.h"

#include <algorithm>
#include <cstring>

#include "engine.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "settings/keep_file.h"
#include "ui/control_text.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr Column kOthers[] = {{L"What", 80},        {L"Size", 75, true}, {L"Modified", 145},
                              {L"Cleaned as", 120}, {L"Fate", 150},      {L"Note", 220}};

std::array<Column, kRunColumns> Columns(int place_width) {
  std::array<Column, kRunColumns> columns{{{L"Place", place_width}}};
  std::ranges::copy(kOthers, columns.begin() + 1);
  return columns;
}

// More rows than any window shows at once.
constexpr size_t kScreenful = 200;

// A line of the keep list for it; "" for what has no name of its own.
std::string KeepLineFor(const RunEntry& entry) {
  switch (entry.kind) {
    case EntryKind::kFile:
    case EntryKind::kFolder:
    case EntryKind::kRegistryKey:
    case EntryKind::kIniKey:
    case EntryKind::kIniSection:
      return entry.place;
    case EntryKind::kRegistryValue:
      return entry.place + "|" + entry.part;
    default:
      return {};
  }
}

void PutIntoClipboard(HWND owner, const std::wstring& text) {
  if (!OpenClipboard(owner)) return;
  EmptyClipboard();
  const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  if (const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
    std::memcpy(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    if (!SetClipboardData(CF_UNICODETEXT, memory)) GlobalFree(memory);
  }
  CloseClipboard();
}

}  // namespace

void EntryView::Attach(HWND window, int place_width) {
  window_ = window;
  place_width_ = place_width;
  list_.reset();
  view_ = ListView();
  view_.Attach(GetDlgItem(window, lstvRun), Columns(place_width),
               [this](int row, int column) { return CellAt(row, column); });
  view_.SetLooks([this](int row) {
    const auto index = static_cast<size_t>(row);
    if (!Has(row)) return RowLook::kPlain;
    if (list_->IsHeading(index)) return RowLook::kHeading;
    return list_->At(index).fate == Fate::kStayed ? RowLook::kMarked : RowLook::kPlain;
  });
}

void EntryView::OnResolution(int dpi) { view_.SetResolution(dpi, Columns(place_width_), {}); }

void EntryView::Show(std::shared_ptr<const RunEntries> entries, Kind kind) {
  list_.emplace(machine_.system, std::move(entries), kind != Kind::kDone);
  if (kind == Kind::kChoice) {
    view_.SetCheckBoxes(
        [this](int row) {
          if (!Has(row)) return false;
          const size_t index = static_cast<size_t>(row);
          const bool may_go = list_->IsHeading(index) || list_->At(index).fate == Fate::kRemoved;
          return may_go && list_->IsTicked(index);
        },
        [this](int row) { Toggle(row); });
  }
  SetDlgItemTextW(window_, txtFilter, L"");
  CheckDlgButton(window_, chkByFolder, BST_UNCHECKED);
  ListAnew();
  view_.ShowOrder(-1, false);
  ShowSummary();
}

void EntryView::ListAnew() { view_.SetRows(static_cast<int>(list_->RowCount())); }

void EntryView::ShowScope(const std::optional<EntryScope>& scope) {
  list_->ShowScope(scope);
  ListAnew();
  ShowSummary();
}

// Selection and place stay; rows may come in between.
void EntryView::Grow() {
  const size_t before = list_->RowCount();
  list_->Grow();
  if (list_->RowCount() == before) return;
  view_.GrowTo(static_cast<int>(list_->RowCount()));
  if (before < kScreenful) view_.Refresh();
  ShowSummary();
}

void EntryView::Settle() {
  list_->Settle();
  view_.Refresh();
}

void EntryView::ShowSummary() const {
  SetDlgItemTextW(window_, lblRunSummary, Wide(list_->Summary()).c_str());
}

Cell EntryView::CellAt(int row, int column) const {
  if (!Has(row)) return {};
  return {Wide(list_->Text(static_cast<size_t>(row), RunColumn(column)))};
}

void EntryView::Toggle(int row) {
  if (!Has(row)) return;
  const size_t index = static_cast<size_t>(row);
  list_->SetTicked(index, !list_->IsTicked(index));
}

void EntryView::Sort(int column) {
  list_->Sort(RunColumn(column));
  ListAnew();  // what was selected is elsewhere now
  view_.ShowOrder(column, list_->order()->descending);
}

void EntryView::Filter() {
  if (!list_) return;
  list_->SetFilter(ControlText(GetDlgItem(window_, txtFilter)));
  ListAnew();
}

void EntryView::Tell(std::string_view sentence) const {
  MessageBoxW(window_, Wide(sentence).c_str(), Wide(kApplicationTitle).c_str(),
              MB_OK | MB_ICONINFORMATION);
}

void EntryView::OpenFolder() const {
  const int row = view_.FocusedRow();
  if (!Has(row)) return Tell("Select an entry first.");
  const RunEntry& entry = list_->At(static_cast<size_t>(row));
  const bool is_on_disk = entry.kind == EntryKind::kFile || entry.kind == EntryKind::kFolder ||
                          entry.kind == EntryKind::kIniKey || entry.kind == EntryKind::kIniSection;
  if (!is_on_disk) return Tell("This entry lies in no folder.");
  try {
    machine_.shell.OpenFolderOf(entry.place);
  } catch (const Error& error) {
    Tell(error.what());
  }
}

// The selected rows; without any, all that are shown.
void EntryView::Copy() const {
  if (!list_) return;
  const std::vector<size_t> rows = view_.SelectedRows();
  std::string text = rows.empty() ? list_->ToText() : "";
  for (const size_t row : rows) {
    for (size_t column = 0; column < kRunColumns; ++column)
      text += (column == 0 ? "" : "\t") + list_->Text(row, RunColumn(column));
    text += "\r\n";
  }
  PutIntoClipboard(window_, Wide(text));
}

// What is never to go is not to go now either.
void EntryView::KeepSelected() {
  const std::vector<size_t> rows = view_.SelectedRows();
  if (rows.empty()) return Tell("Select the entries that are never to be removed first.");
  std::string told;
  try {
    for (const size_t row : rows) {
      const std::string line = KeepLineFor(list_->At(row));
      const std::string refusal =
          line.empty() ? "This has no name of its own." : AddToKeepFile(machine_, line);
      if (!refusal.empty()) told += list_->Text(row, RunColumn::kPlace) + ": " + refusal + "\r\n";
      list_->SetTicked(row, false);
    }
  } catch (const Error& error) {
    told += std::string("The keep list could not be written. ") + error.what();
  }
  Refresh();
  ShowSummary();
  if (on_kept) on_kept();
  if (!told.empty()) Tell(told);  // meanwhile the window may show another run
}

bool EntryView::OnCommand(int id, int code) {
  switch (id) {
    case txtFilter:
      if (code == EN_CHANGE) Filter();
      return true;
    case chkByFolder:
      list_->SetGrouped(IsDlgButtonChecked(window_, chkByFolder) == BST_CHECKED);
      ListAnew();
      return true;
    case cmdOpenFolder:
    case mnuOpenFolder:
      OpenFolder();
      return true;
    case cmdCopy:
    case mnuCopy:
      Copy();
      return true;
    case cmdKeepEntry:
    case mnuKeepEntry:
      KeepSelected();
      return true;
    default:
      return false;
  }
}

bool EntryView::OnNotify(NMHDR& header, LRESULT& result) {
  if (header.idFrom != lstvRun) return false;
  const bool is_answered = view_.OnNotify(header, &result);
  if (!list_) return true;
  const bool is_click = header.code == NM_CLICK || header.code == NM_DBLCLK;
  if (is_click || header.code == LVN_KEYDOWN) ShowSummary();  // a box may differ
  if (header.code == LVN_COLUMNCLICK) Sort(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem);
  if (header.code == NM_DBLCLK && !is_answered) OpenFolder();
  if (header.code == LVN_KEYDOWN && GetKeyState(VK_CONTROL) < 0) {
    const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
    if (key == 'A') view_.SelectAll();
    if (key == 'C') Copy();
  }
  return true;
}

bool EntryView::OnContextMenu(HWND control, POINT screen) {
  if (control != GetDlgItem(window_, lstvRun) || !list_) return false;
  const UniqueMenu menu(LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(mnuEntry)));
  const HMENU entries = GetSubMenu(menu.Get(), 0);
  const POINT place = view_.MenuPlace(screen);
  const int chosen = TrackPopupMenu(entries, TPM_RETURNCMD | TPM_RIGHTBUTTON, place.x, place.y, 0,
                                    window_, nullptr);
  if (chosen != mnuSortBy) {
    OnCommand(chosen, 0);
    return true;
  }
  const int column = view_.AskForOrder(window_, screen);
  if (column >= 0) Sort(column);
  return true;
}

}  // namespace quellix
