#include "ui/frm_backups.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr Column kOfArchives[kArchiveColumns] = {{Mark("Drive"), 130},
                                                 {Mark("Date"), 190},
                                                 {Mark("Files"), 110, true},
                                                 {Mark("Size (bytes)"), 140, true},
                                                 {Mark("State"), 150}};
constexpr Column kOfEntries[kEntryColumns] = {{Mark("Path"), 200},
                                              {Mark("Size (bytes)"), 90, true},
                                              {Mark("Date"), 145},
                                              {Mark("Attributes"), 75},
                                              {Mark("State"), 80}};

constexpr Anchor kAnchors[] = {
    {lstvArchives, 0, 0, 1, 0.3},   {lblEntries, 0, 0.3, 1, 0.3}, {lstvEntries, 0, 0.3, 1, 1},
    {lblOverwrite, 0, 1, 0, 1},     {cboOverwrite, 0, 1, 0, 1},   {lblOutcome, 0, 1, 0, 1},
    {txtOutcome, 0, 1, 1, 1},       {cmdView, 0, 1, 0, 1},        {cmdRestoreSelected, 0, 1, 0, 1},
    {cmdRestoreAll, 0, 1, 0, 1},    {cmdRestoreInto, 0, 1, 0, 1}, {cmdDeleteArchive, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},         {pgRestore, 0, 1, 1, 1},      {cmdStopRestore, 1, 1, 1, 1},
    {cmdRepairArchive, 1, 1, 1, 1},
};

struct ModeText {
  OverwriteMode mode;
  const char* text;
};
constexpr ModeText kModeTexts[] = {{OverwriteMode::kAsk, Mark("Ask")},
                                   {OverwriteMode::kAlways, Mark("Replace it always")},
                                   {OverwriteMode::kNewer, Mark("Replace it when older")},
                                   {OverwriteMode::kNever, Mark("Leave it always")}};

// What can be used while nothing is in work.
constexpr int kIdleControls[] = {lstvArchives,   lstvEntries,        cboOverwrite,
                                 cmdView,        cmdRestoreSelected, cmdRestoreAll,
                                 cmdRestoreInto, cmdRepairArchive,   cmdDeleteArchive};

// An edit control wants both characters at a line's end.
std::string WithCarriageReturns(const std::string& lines) {
  return ReplaceNoCase(lines, "\n", "\r\n");
}

}  // namespace

void FrmBackups::Show(HWND owner) {
  if (work_.working()) return;
  browser_.emplace(machine_);
  Open(frmBackups, owner);
  if (!Work([this](const Pause& pause) { browser_->Refresh(pause); })) return;
  ShowArchives();
  ShowEntries();
}

void FrmBackups::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmBackups", {&archives_, &entries_});
  archives_.Attach(Control(lstvArchives), kOfArchives, [this](int row, int column) {
    return Cell{Wide(browser_->ArchiveText(static_cast<size_t>(row), ArchiveColumn(column)))};
  });
  entries_.Attach(Control(lstvEntries), kOfEntries, [this](int row, int column) {
    return Cell{Wide(browser_->EntryText(static_cast<size_t>(row), EntryColumn(column)))};
  });
  const Locale locale = machine_.system.UserLocale();
  archives_.SetTotals(locale, [this](int row) { return browser_->ArchiveSize(At(row)); });
  archives_.SetEmpty([this] { return browser_->WhyNoArchives(); });
  entries_.SetTotals(locale, [this](int row) { return browser_->EntrySize(At(row)); });
  entries_.SetEmpty([this] { return browser_->WhyNoEntries(); });
  const auto idle = [this] { return !filling_ && !work_.working(); };
  archives_.SetSorter([this, idle](int column) { idle() ? SortArchives(column) : void(); });
  archives_.SetEraser([this, idle] { idle() ? DeleteArchive() : void(); });
  entries_.SetSorter([this, idle](int column) { idle() ? SortEntries(column) : void(); });
  for (const ModeText& row : kModeTexts) {
    SendDlgItemMessageW(window(), cboOverwrite, CB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(Wide(Tr(row.text)).c_str()));
  }
  const auto mode = std::ranges::find(kModeTexts, browser_->mode(), &ModeText::mode);
  SendDlgItemMessageW(window(), cboOverwrite, CB_SETCURSEL,
                      static_cast<WPARAM>(mode - std::begin(kModeTexts)), 0);
  EnableCommands();
}

void FrmBackups::OnResolution() {
  archives_.SetResolution(dpi(), kOfArchives, {});
  entries_.SetResolution(dpi(), kOfEntries, {});
}

void FrmBackups::OnSized() {
  archives_.FillWith(static_cast<int>(ArchiveColumn::kState), Scale(100, dpi()));
  entries_.FillWith(static_cast<int>(EntryColumn::kPath), Scale(kOfEntries[0].width, dpi()));
}

void FrmBackups::ShowArchives() {
  filling_ = true;
  archives_.SetRows(static_cast<int>(browser_->ArchiveCount()));
  if (browser_->Chosen()) archives_.Select(browser_->ChosenRow());
  archives_.ShowOrder(static_cast<int>(browser_->archive_order().column),
                      browser_->archive_order().descending);
  filling_ = false;
}

void FrmBackups::ShowEntries() {
  filling_ = true;
  entries_.SetRows(static_cast<int>(browser_->EntryCount()));
  SetText(lblEntries, "&" + ReplaceNoCase(browser_->EntriesTitle(), "&", "&&"));
  entries_.ShowOrder(static_cast<int>(browser_->entry_order().column),
                     browser_->entry_order().descending);
  filling_ = false;
  EnableCommands();
  ShowOutcome();
}

void FrmBackups::ShowOutcome() { SetText(txtOutcome, WithCarriageReturns(browser_->outcome())); }

void FrmBackups::EnableCommands() {
  const BackupBrowser::Commands can =
      browser_->Available(static_cast<size_t>(entries_.CountSelected()));
  const std::pair<int, bool> kCommands[] = {{cmdView, can.view},
                                            {cmdRestoreSelected, can.restore_selected},
                                            {cmdRestoreAll, can.restore_all},
                                            {cmdRestoreInto, can.restore_into},
                                            {cmdRepairArchive, can.repair},
                                            {cmdDeleteArchive, can.delete_archive}};
  for (const auto& [id, enabled] : kCommands) EnableControl(id, enabled, lstvArchives);
}

void FrmBackups::OnCommand(int id, int code) {
  if (work_.working()) return id == cmdStopRestore || id == IDCANCEL ? work_.Stop() : void();
  switch (id) {
    case cboOverwrite:
      if (code == CBN_SELCHANGE) ChangeMode();
      return;
    case cmdView:
      return View();
    case cmdRestoreSelected:
    case cmdRestoreAll:
    case cmdRestoreInto:
      return Restore(id);
    case cmdRepairArchive:
      return RepairArchive();
    case cmdDeleteArchive:
      return DeleteArchive();
    case IDCANCEL:
      return OnClose();
  }
}

LRESULT FrmBackups::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (archives_.OnNotify(header, result) || entries_.OnNotify(header, result)) return result;
  if (filling_ || work_.working()) return 0;
  if (header.idFrom == lstvArchives) OnArchivesNotify(header);
  if (header.idFrom == lstvEntries) OnEntriesNotify(header);
  return 0;
}

void FrmBackups::OnArchivesNotify(const NMHDR& header) {
  const auto& item = reinterpret_cast<const NMLISTVIEW&>(header);
  if (header.code != LVN_ITEMCHANGED || item.iItem < 0 || !(item.uNewState & LVIS_SELECTED)) return;
  const auto row = static_cast<size_t>(item.iItem);
  if (Work([&](const Pause& pause) { browser_->ChooseArchive(row, pause); })) ShowEntries();
}

void FrmBackups::OnEntriesNotify(const NMHDR& header) {
  switch (header.code) {
    case NM_DBLCLK:
      if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) View();
      return;
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      return EnableCommands();
  }
}

void FrmBackups::SortArchives(int column) {
  browser_->SortArchives(ArchiveColumn(column));
  ShowArchives();
}

void FrmBackups::SortEntries(int column) {
  browser_->SortEntries(EntryColumn(column));
  ShowEntries();
}

void FrmBackups::OnContextMenu(HWND control, POINT screen) {
  const bool archives = control == Control(lstvArchives);
  if (work_.working() || (!archives && control != Control(lstvEntries))) return;
  const auto place_of = [this, archives](size_t row) {
    return PlaceNamedBy(archives ? browser_->ArchivePath(row) : browser_->EntryPlace(row));
  };
  RowMenu{archives ? archives_ : entries_, machine_.shell, place_of}.Show(window(), screen);
}

void FrmBackups::ChangeMode() {
  const LRESULT row = SendDlgItemMessageW(window(), cboOverwrite, CB_GETCURSEL, 0, 0);
  browser_->SetMode(kModeTexts[row].mode);
  ShowOutcome();
}

void FrmBackups::View() {
  const std::vector<size_t> rows = entries_.SelectedRows();
  if (rows.size() != 1) return;
  std::string path;
  if (!Work([&](const Pause& pause) { path = browser_->View(rows[0], pause); })) return;
  if (!path.empty() && !OpenByShell(window(), path)) {
    browser_->Tell(Tr("Windows has no program to open %1.", path));
  }
  ShowOutcome();
}

void FrmBackups::Restore(int command) {
  const std::vector<size_t> rows = entries_.SelectedRows();
  std::optional<std::string> folder;
  if (command == cmdRestoreInto &&
      !(folder = prompts_.AskFolder(Tr("Restore into this folder:")))) {
    return;
  }
  Work([&](const Pause& pause) {
    if (command == cmdRestoreAll) browser_->RestoreAll(prompts_, pause);
    if (command == cmdRestoreSelected) browser_->RestoreSelected(rows, prompts_, pause);
    if (command == cmdRestoreInto) browser_->RestoreInto(rows, *folder, prompts_, pause);
  });
}

// Nothing can be chosen meanwhile; Stop, Esc and closing the window all stop it, so that its
// outcome can be read. False when the window has gone.
bool FrmBackups::Work(const LongWork::Work& work) {
  const LongWork::End end =
      work_.Run({.idle = kIdleControls,
                 .stop = cmdStopRestore,
                 .rest = lstvArchives,
                 .bar = pgRestore,
                 .show = [this](const Progress& progress) { ShowProgress(progress); },
                 .often_short = true},
                work);
  if (end == LongWork::End::kGone) {
    browser_.reset();
    return false;
  }
  EnableCommands();
  ShowOutcome();
  return true;
}

void FrmBackups::ShowProgress(const Progress& progress) {
  const std::string left = work_.TimeLeft();
  // TRANSLATORS: What is done ("Restoring"), and with which file.
  const std::string now = Tr("%1 %2", Tr(progress.work), progress.path);
  SetText(txtOutcome, now + (left.empty() ? "" : "\r\n" + left));
}

void FrmBackups::RepairArchive() {
  const BackupInfo* const chosen = browser_->Chosen();
  if (!chosen) return;
  const std::string question =
      // TRANSLATORS: %2 is a sentence: what is wrong with it.
      Tr("Repair %1? %2 What is not whole goes; the archive needs its space twice meanwhile.",
         chosen->name, chosen->incomplete);
  if (!prompts_.AskYesNo(question)) return;
  if (!Work([this](const Pause& pause) { browser_->RepairArchive(pause); })) return;
  ShowArchives();
  ShowEntries();
}

void FrmBackups::DeleteArchive() {
  const BackupInfo* const chosen = browser_->Chosen();
  if (!chosen) return;
  const std::string question =
      Tr("Delete the archive %1? The files in it cannot be restored afterwards.", chosen->name);
  if (!prompts_.AskYesNo(question)) return;
  if (!Work([this](const Pause& pause) { browser_->DeleteArchive(pause); })) return;
  ShowArchives();
  ShowEntries();
}

void FrmBackups::OnClose() { work_.working() ? work_.Stop() : OwnedWindow::OnClose(); }

void FrmBackups::OnDestroyed() {
  OwnedWindow::OnDestroyed();
  if (!work_.working()) browser_.reset();
}

HBRUSH FrmBackups::OnControlColor(HDC target, HWND control) {
  return control == Control(txtOutcome) ? Paper(target) : nullptr;
}

}  // namespace quellix
