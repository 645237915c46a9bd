#include "ui/entry_view.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "settings/keep_file.h"
#include "ui/clipboard.h"
#include "ui/control_text.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Column kOthers[] = {{Mark("What"), 80},      {Mark("Size"), 75, true},
                              {Mark("Modified"), 145}, {Mark("Cleaned as"), 120},
                              {Mark("Fate"), 150},     {Mark("Note"), 220}};

std::array<Column, kRunColumns> Columns(int place_width) {
  std::array<Column, kRunColumns> columns{{{Mark("Place"), place_width}}};
  std::ranges::copy(kOthers, columns.begin() + 1);
  return columns;
}

// More rows than any window shows at once.
constexpr size_t kScreenful = 200;

bool IsOnDisk(const RunEntry& entry) {
  return entry.kind == EntryKind::kFile || entry.kind == EntryKind::kFolder ||
         entry.kind == EntryKind::kIniKey || entry.kind == EntryKind::kIniSection;
}

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

}  // namespace

void EntryView::Attach(HWND window, int place_width) {
  window_ = window;
  place_width_ = place_width;
  list_.reset();
  view_ = ListView();
  view_.Attach(GetDlgItem(window, lstvRun), Columns(place_width),
               [this](int row, int column) { return CellAt(row, column); });
  view_.SetSorter([this](int column) {
    if (list_) Sort(column);
  });
  view_.SetLooks([this](int row) {
    const auto index = static_cast<size_t>(row);
    if (!Has(row)) return RowLook::kPlain;
    if (list_->IsHeading(index)) return RowLook::kHeading;
    return list_->At(index).fate == Fate::kStayed ? RowLook::kMarked : RowLook::kPlain;
  });
}

// What a run would do or did as a whole stands in its summary; this is of the rows.
void EntryView::ShowTotals() {
  view_.SetTotals(
      machine_.system.UserLocale(),
      [this](int row) {
        return Has(row)
                   ? std::optional(static_cast<double>(list_->At(static_cast<size_t>(row)).bytes))
                   : std::nullopt;
      },
      [this](int row) { return !Has(row) || !list_->IsHeading(static_cast<size_t>(row)); });
  view_.SetEmpty([this]() -> std::string {
    if (list_ && !list_->entries().all.empty())
      return Tr("No entry has this in it. Empty the filter to see them all.");
    return Tr("This run came by nothing that could go: what was ticked was clean.");
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
  if (const auto order = view_.chosen_order()) view_.Order(order->column, order->descending);
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
  EnableCommands();
}

void EntryView::EnableCommands() const {
  const int row = view_.FocusedRow();
  const bool is_there = Has(row) && view_.CountSelected() > 0;
  const bool is_on_disk = is_there && IsOnDisk(list_->At(static_cast<size_t>(row)));
  const std::pair<int, bool> kCommands[] = {
      {cmdOpenFolder, is_on_disk}, {cmdKeepEntry, is_there}, {cmdCopy, list_->RowCount() > 0}};
  for (const auto& [id, can] : kCommands) {
    EnableWithFocus(GetDlgItem(window_, id), can, GetDlgItem(window_, lstvRun));
  }
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
  ShowBox(window_, sentence, MB_OK | MB_ICONINFORMATION);
}

void EntryView::OpenFolder() const {
  const int row = view_.FocusedRow();
  if (!Has(row)) return Tell(Tr("Select an entry first."));
  const RunEntry& entry = list_->At(static_cast<size_t>(row));
  if (!IsOnDisk(entry)) return Tell(Tr("This entry lies in no folder."));
  try {
    machine_.shell.OpenFolderOf(entry.place);
  } catch (const Error& error) {
    Tell(Shown(error));
  }
}

// The selected rows; without any, all that are shown.
void EntryView::Copy() const {
  if (!list_) return;
  view_.CountSelected() > 0 ? view_.CopySelected()
                            : PutIntoClipboard(window_, Wide(list_->ToText()));
}

// What is never to go is not to go now either.
void EntryView::KeepSelected() {
  const std::vector<size_t> rows = view_.SelectedRows();
  if (rows.empty()) return Tell(Tr("Select the entries that are never to be removed first."));
  std::string told;
  try {
    for (const size_t row : rows) {
      const std::string line = KeepLineFor(list_->At(row));
      const std::string refusal =
          line.empty() ? Tr("This has no name of its own.") : AddToKeepFile(machine_, line);
      if (!refusal.empty()) told += list_->Text(row, RunColumn::kPlace) + ": " + refusal + "\r\n";
      list_->SetTicked(row, false);
    }
  } catch (const Error& error) {
    told += Tr("The keep list could not be written. %1", Shown(error));
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
  const bool is_answered = view_.OnNotify(header, result);
  if (!list_) return true;
  const bool is_click = header.code == NM_CLICK || header.code == NM_DBLCLK;
  if (is_click || header.code == LVN_KEYDOWN) ShowSummary();  // a box may differ
  if (header.code == LVN_ITEMCHANGED || header.code == LVN_ODSTATECHANGED) EnableCommands();
  if (header.code == NM_DBLCLK && !is_answered) OpenFolder();
  return true;
}

RowPlace EntryView::PlaceOf(size_t row) const {
  if (row >= list_->RowCount()) return {};
  const RunEntry& entry = list_->At(row);
  if (IsOnDisk(entry)) return {.path = entry.place};
  const bool is_key =
      entry.kind == EntryKind::kRegistryKey || entry.kind == EntryKind::kRegistryValue;
  return is_key ? RowPlace{.key = entry.place} : RowPlace{};
}

bool EntryView::OnContextMenu(HWND control, POINT screen) {
  if (control != GetDlgItem(window_, lstvRun) || !list_) return false;
  const RowMenu menu{view_, machine_.shell, [this](size_t row) { return PlaceOf(row); }, mnuEntry};
  const int chosen = menu.Show(window_, screen);
  ShowSummary();  // boxes may differ
  if (chosen != 0) OnCommand(chosen, 0);
  return true;
}

}  // namespace quellix
