#include "ui/frm_ie_cache.h"

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Column kColumns[kCacheColumns] = {
    {Mark("Source"), 220},        {Mark("Local filename"), 110}, {Mark("Local file path"), 150},
    {Mark("Size"), 65, true},     {Mark("Hit rate"), 60, true},  {Mark("Last accessed"), 145},
    {Mark("Last modified"), 145}, {Mark("Expires"), 145}};

constexpr Anchor kAnchors[] = {
    {lstvCache, 0, 0, 1, 0.6},       {lblStatus, 0, 0.6, 1, 0.6},  {fmDisplay, 0, 0.6, 1, 1},
    {lblDisplaying, 0, 0.6, 1, 0.6}, {wbCache, 0, 0.6, 1, 1},      {txtCache, 0, 0.6, 1, 1},
    {cmdSelectAll, 0, 1, 0, 1},      {cmdDeselectAll, 0, 1, 0, 1}, {cmdView, 0, 1, 0, 1},
    {cmdRefresh, 0, 1, 0, 1},        {cmdDelete, 0, 1, 0, 1},      {cmdClear, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

// What waits while entries are read or deleted.
constexpr int kCommands[] = {optAll,         optCookies, optHistory, optURL,    cmdSelectAll,
                             cmdDeselectAll, cmdView,    cmdRefresh, cmdDelete, cmdClear};

constexpr int kUnsorted = -1;

// The button that does the same as an entry of the menu.
int ButtonOf(int entry) {
  switch (entry) {
    case mnuSelectAll:
      return cmdSelectAll;
    case mnuDeselectAll:
      return cmdDeselectAll;
    case mnuDeleteSelected:
      return cmdDelete;
    case mnuDeleteAll:
      return cmdClear;
    default:
      return 0;
  }
}

}  // namespace

void FrmIECache::Show(HWND owner) {
  if (work_.working()) return;
  Open(frmIECache, owner);
  Load();
}

void FrmIECache::OnInit() {
  layout().Add(kAnchors);
  Remember(machine_, "frmIECache", {&list_});
  cache_.emplace(machine_);
  display_.emplace(Control(wbCache), Control(txtCache));
  list_.Attach(Control(lstvCache), kColumns,
               [this](int row, int column) { return CellAt(row, column); });
  list_.SetCheckBoxes(
      [this](int row) { return IsListed(row) && cache_->Row(static_cast<size_t>(row)).checked; },
      [this](int row) { Toggle(row); });
  list_.SetSorter([this](int column) { work_.working() ? void() : Sort(column); });
  list_.SetEraser([this] { work_.working() ? void() : Delete(Which::kSelected); });
  list_.SetTotals(machine_.system.UserLocale(), [this](int row) {
    return IsListed(row) ? std::optional(static_cast<double>(
                               cache_->Row(static_cast<size_t>(row)).entry.size))
                         : std::nullopt;
  });
  list_.SetEmpty([this]() -> std::string {
    if (work_.working()) return Tr("Reading the cache...");
    return Tr(
        "The Internet cache of Windows holds no entry of this kind. Today's browsers keep their "
        "own caches: they are items of the main window.");
  });
  list_.SetTickedButton(Control(cmdDelete), [this] { return !work_.working(); });
  CheckRadioButton(window(), optAll, optURL, optAll);
}

void FrmIECache::OnResolution() { list_.SetResolution(dpi(), kColumns, {}); }

void FrmIECache::OnSized() {
  if (display_) display_->Resize();
  InvalidateRect(Control(wbCache), nullptr, FALSE);
}

CacheKind FrmIECache::Kind() const {
  if (IsDlgButtonChecked(window(), optAll)) return CacheKind::kAll;
  if (IsDlgButtonChecked(window(), optCookies)) return CacheKind::kCookies;
  if (IsDlgButtonChecked(window(), optHistory)) return CacheKind::kHistory;
  return CacheKind::kUrls;
}

// What is in work is ahead of the list.
bool FrmIECache::IsListed(int row) const {
  return cache_ && static_cast<size_t>(row) < cache_->RowCount();
}

Cell FrmIECache::CellAt(int row, int column) const {
  if (!IsListed(row)) return {};
  return {Wide(cache_->Text(static_cast<size_t>(row), CacheColumn(column)))};
}

void FrmIECache::Load() {
  SetText(lblStatus, Tr("Obtaining information, please wait"));
  UpdateWindow(window());
  list_.SetRows(0);
  ShowNothing();
  const CacheKind kind = Kind();
  if (Work([&](const Pause& pause) { cache_->LoadCacheEntries(kind, pause); })) ShowRows();
}

void FrmIECache::ShowRows() {
  list_.SetRows(static_cast<int>(cache_->RowCount()));
  const std::optional<CacheColumn> column = cache_->sorted_by();
  list_.ShowOrder(column ? static_cast<int>(*column) : kUnsorted, cache_->descending());
  const std::string& problem = cache_->problem();
  SetText(lblStatus, problem.empty() ? cache_->Status() : Tr("%1. %2", cache_->Status(), problem));
  EnableCommands();
}

void FrmIECache::EnableCommands() const {
  if (work_.working()) return;
  const bool any = cache_->RowCount() > 0;
  for (const int id : {cmdSelectAll, cmdDeselectAll, cmdClear}) EnableControl(id, any, lstvCache);
  EnableControl(cmdView, list_.CountSelected() > 0, lstvCache);
}

void FrmIECache::ShowNothing() {
  display_->Clear();
  SetText(lblDisplaying, Tr("Displaying: None"));
}

void FrmIECache::ShowCacheEntry(size_t row) {
  const UrlCacheEntry& entry = cache_->Row(row).entry;
  SetText(lblDisplaying, Tr("Displaying: %1", entry.source));
  display_->Show(machine_, entry);
}

void FrmIECache::OnCommand(int id, int code) {
  if (id == IDCANCEL) return work_.working() ? work_.Stop() : OnClose();
  if (work_.working() || code != BN_CLICKED) return;
  switch (id) {
    case optAll:
    case optCookies:
    case optHistory:
    case optURL:
    case cmdRefresh:
      return Load();
    case cmdSelectAll:
    case cmdDeselectAll:
      return CheckAll(id == cmdSelectAll);
    case cmdView:
      return View();
    case cmdDelete:
    case cmdClear:
      return Delete(id == cmdClear ? Which::kAll : Which::kTicked);
  }
}

LRESULT FrmIECache::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (list_.OnNotify(header, result)) return result;
  if (work_.working() || header.idFrom != lstvCache) return 0;
  const auto& item = reinterpret_cast<const NMLISTVIEW&>(header);
  if (header.code == LVN_ITEMCHANGED || header.code == LVN_ODSTATECHANGED) EnableCommands();
  if (header.code == NM_DBLCLK && item.iItem >= 0) View();
  if (header.code == LVN_ITEMCHANGED && item.iItem >= 0 && (item.uNewState & LVIS_SELECTED)) {
    ShowCacheEntry(static_cast<size_t>(item.iItem));
  }
  return 0;
}

void FrmIECache::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvCache) || work_.working()) return;
  const auto place_of = [this](size_t row) {
    const bool is_there = row < cache_->RowCount();
    const std::string name = is_there ? cache_->Row(row).file_name : "";
    return name.empty() ? RowPlace{} : RowPlace{.path = cache_->Row(row).folder + name};
  };
  const RowMenu menu{list_, machine_.shell, place_of, mnuOptions,
                     [this](int id) { return IsWindowEnabled(Control(ButtonOf(id))) != FALSE; }};
  OnCommand(ButtonOf(menu.Show(window(), screen)), BN_CLICKED);
}

void FrmIECache::CheckAll(bool checked) {
  cache_->CheckAll(checked);
  list_.Refresh();
}

void FrmIECache::Toggle(int row) {
  if (work_.working()) return;
  const size_t index = static_cast<size_t>(row);
  cache_->SetChecked(index, !cache_->Row(index).checked);
}

void FrmIECache::View() {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (rows.empty()) return;
  ShowCacheEntry(rows.front());
  display_->TakeFocus();
}

void FrmIECache::Sort(int column) {
  cache_->Sort(CacheColumn(column));
  ShowNothing();
  ShowRows();
}

void FrmIECache::Delete(Which which) {
  const std::vector<size_t> rows = list_.SelectedRows();
  const size_t count = which == Which::kAll      ? cache_->RowCount()
                       : which == Which::kTicked ? cache_->CheckedCount()
                                                 : rows.size();
  if (!MayGo(window(), cache_->QuestionFor(count))) return;
  ShowNothing();  // what is shown is in use
  SetText(lblStatus, Tr("Deleting, please wait"));
  const auto work = [&](const Pause& pause) {
    if (which == Which::kAll) cache_->DeleteAllListed(pause);
    if (which == Which::kTicked) cache_->DeleteSelected(pause);
    if (which == Which::kSelected) cache_->DeleteRows(rows, pause);
  };
  if (Work(work)) ShowRows();
}

// The list stays: it takes the keyboard meanwhile. False when the window has gone or goes.
bool FrmIECache::Work(const LongWork::Work& work) {
  const LongWork::End end =
      work_.Run({.idle = kCommands, .rest = lstvCache, .often_short = true}, work);
  if (end == LongWork::End::kGone) cache_.reset();
  if (end == LongWork::End::kCloses) OnClose();
  return end == LongWork::End::kDone;
}

void FrmIECache::OnDrawItem(const DRAWITEMSTRUCT& item) {
  if (item.CtlID == wbCache && display_) display_->Draw(item);
}

// What is in work ends first.
void FrmIECache::OnClose() {
  if (work_.working()) return work_.StopAndClose();
  display_.reset();  // pages want their window to be there when they go
  OwnedWindow::OnClose();
}

void FrmIECache::OnDestroyed() {
  OwnedWindow::OnDestroyed();
  display_.reset();
  if (!work_.working()) cache_.reset();
}

}  // namespace quellix
