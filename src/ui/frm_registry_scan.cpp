#include "ui/frm_registry_scan.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/dpi.h"
#include "ui/resource.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr UINT_PTR kTimer1 = 1;
constexpr UINT kUntilSeen = 50;  // milliseconds

// By RowMark. A cross and a tick, so that color is not needed; what is not judged stays as well.
constexpr int kIcons[] = {icoCross, icoTick, icoTick};

// What waits while the registry is read or changed.
constexpr int kIdle[] = {cmdDelete, cmdEdit, cmdEnable, cmdDisable, cmdUninstall,
                         cmdChoose, cmdUndo, chkDelete, chkThorough};

constexpr Anchor kAnchors[] = {
    {lstvOrphanedDLL, 0, 0, 1, 1}, {lstvInvalid, 0, 0, 1, 1}, {pgKeys, 0, 1, 1, 1},
    {lblStatus, 0, 1, 1, 1},       {chkDelete, 0, 1, 0, 1},   {chkThorough, 0, 1, 0, 1},
    {fmResize, 0, 1, 1, 1},        {lblKey, 0, 1, 0, 1},      {lblValue, 0, 1, 0, 1},
    {lblPath, 0, 1, 0, 1},         {txtKey, 0, 1, 1, 1},      {txtValue, 0, 1, 1, 1},
    {txtPath, 0, 1, 1, 1},         {cmdDelete, 0, 1, 0, 1},   {cmdEdit, 0, 1, 0, 1},
    {cmdEnable, 0, 1, 0, 1},       {cmdDisable, 0, 1, 0, 1},  {cmdUninstall, 0, 1, 0, 1},
    {cmdChoose, 0, 1, 0, 1},       {cmdStop, 0, 1, 0, 1},     {cmdUndo, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

// Buttons and entries of the context menu alike.
constexpr std::pair<int, ScanAction> kActions[] = {{cmdEnable, ScanAction::kEnable},
                                                   {cmdDisable, ScanAction::kDisable},
                                                   {cmdUninstall, ScanAction::kStart},
                                                   {cmdChoose, ScanAction::kChoose}};

}  // namespace

FrmRegistryScan::Parts FrmRegistryScan::PartsOf(ScanTool tool) {
  switch (tool) {
    case ScanTool::kSharedDlls:
      return {"OrphanedDLL", frmOrphanedDLL, lstvOrphanedDLL, {120, 450}, 1};
    case ScanTool::kFileReferences:
      return {"InvalidFile", frmInvalidFile, lstvInvalid, {280, 120, 200}, 2};
    case ScanTool::kAppPaths:
      return {"InvalidAppPath", frmInvalidAppPath, lstvInvalid, {180, 400}, 1};
    case ScanTool::kHelpFiles:
      return {"InvalidHelp", frmInvalidHelp, lstvInvalid, {180, 400}, 1};
    case ScanTool::kComponents:
      return {"InvalidActivex", frmInvalidActivex, lstvInvalid, {160, 85, 95, 250}, 2};
    case ScanTool::kStartup:
      return {"Startup", frmStartup, lstvInvalid, {120, 230, 90, 100, 80, 120, 112}, 1, mnuStartup};
    case ScanTool::kUninstall:
      return {"Uninstall", frmUninstall, lstvInvalid, {160, 60, 100, 75, 70, 120, 230},
              6,           mnuUninstall};
    case ScanTool::kAssociations:
      break;
  }
  return {"Associations", frmAssociations, lstvInvalid, {155, 110, 260, 100}, 2, mnuAssociations};
}

void FrmRegistryScan::Show(ScanTool tool, HWND owner) {
  if (work_.working()) return;
  Close();
  scan_ = MakeScan(tool, machine_, *this);
  parts_ = PartsOf(tool);
  Open(parts_.window, owner);
  ArmTimer();
}

void FrmRegistryScan::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, std::string("frm") + parts_.name, {&list_});
  columns_.clear();
  const auto columns = scan_->traits().columns;
  for (size_t i = 0; i < columns.size(); ++i) {
    // The first column stands at the left whatever it holds.
    columns_.push_back({columns[i].title, parts_.widths[i], i > 0 && columns[i].number});
  }
  list_ = {};
  list_.Attach(list_window(), columns_, [this](int row, int column) {
    if (!HasRow(row)) return Cell{};  // what is in work is ahead of the list
    const ScanRow& shown = scan_->row(static_cast<size_t>(row));
    return Cell{Wide(shown.texts[static_cast<size_t>(column)]), static_cast<int>(shown.mark) - 1};
  });
  list_.SetEraser([this] {
    const std::vector<size_t> rows = list_.SelectedRows();
    if (!work_.working()) Delete(rows);
  });
  if (scan_->traits().sorts) list_.SetSorter([this](int column) { SortBy(column); });
  const auto is_checked = [this](int row) {
    return HasRow(row) && scan_->row(static_cast<size_t>(row)).checked;
  };
  list_.SetCheckBoxes(is_checked, [this, is_checked](int row) {
    if (HasRow(row)) scan_->SetChecked(static_cast<size_t>(row), !is_checked(row));
  });
  list_.SetTotals(machine_.system.UserLocale(), {}, [this](int row) { return HasRow(row); });
  list_.SetEmpty([this]() -> std::string {
    if (work_.working()) return Tr("Looking through the registry...");
    return Tr("There is nothing here to put in order.");
  });
  list_.SetTickedButton(Control(cmdDelete), [this] { return !work_.working(); });
}

// A tool that marks no row leaves no room for icons.
void FrmRegistryScan::OnResolution() {
  const bool marks = !scan_->traits().sorts;
  list_.SetResolution(dpi(), columns_,
                      marks ? std::span<const int>(kIcons) : std::span<const int>());
}

void FrmRegistryScan::OnSized() {
  list_.FillWith(static_cast<int>(parts_.widest), Scale(parts_.widths[parts_.widest] / 2, dpi()));
}

void FrmRegistryScan::ArmTimer() {
  if (scan_->timer_enabled()) SetTimer(window(), kTimer1, kUntilSeen, nullptr);
}

void FrmRegistryScan::OnTimer(UINT_PTR id) {
  if (id != kTimer1 || edit_.IsOpen()) return;
  KillTimer(window(), kTimer1);
  if (!work_.working()) StartScan();
}

void FrmRegistryScan::StartScan() {
  list_.SetRows(0);
  ShowDetails();
  if (scan_->traits().freezes) LockWindowUpdate(list_window());
  if (!Work([this](const Pause& pause) { scan_->StartScan(pause); })) return;
  const auto order = list_.chosen_order();
  if (order && scan_->traits().sorts) list_.Order(order->column, order->descending);
}

// The window may be closed meanwhile, even with the program: false then.
bool FrmRegistryScan::Work(const LongWork::Work& work) {
  const LongWork::End end = work_.Run({.idle = kIdle,
                                       .stop = cmdStop,
                                       .rest = parts_.list,
                                       .bar = pgKeys,
                                       .show = [this](const Progress&) { ShowStatus(); }},
                                      work);
  LockWindowUpdate(nullptr);
  if (end == LongWork::End::kCloses) OwnedWindow::OnClose();
  if (end != LongWork::End::kDone) return false;
  ShowStatus();
  ShowRows();
  return true;
}

void FrmRegistryScan::ShowStatus() {
  SetText(lblStatus, scan_->status());
  if (scan_->is_scanning() && !scan_->is_frozen()) {
    list_.GrowTo(static_cast<int>(scan_->RowCount()));
  }
}

void FrmRegistryScan::ShowProblem(std::string_view sentence) {
  if (!window()) return;
  ShowBox(window(), sentence, MB_OK | MB_ICONERROR, Tr(scan_->traits().title));
}

void FrmRegistryScan::ShowRows() {
  list_.SetRows(static_cast<int>(scan_->RowCount()));
  ShowOrder();
  ShowDetails();
  EnableControl(cmdUndo, !scan_->undo_path().empty(), parts_.list);
  OnSized();
}

void FrmRegistryScan::ShowOrder() {
  const auto column = scan_->sorted_by();
  if (column) list_.ShowOrder(static_cast<int>(*column), scan_->descending());
}

// The row that is highlighted, in full.
void FrmRegistryScan::ShowDetails() {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (!work_.working()) EnableControl(cmdEdit, rows.size() == 1, parts_.list);
  if (!Control(fmResize)) return;
  const bool has_row = !rows.empty() && rows[0] < scan_->RowCount();
  constexpr int kTexts[] = {txtKey, txtValue, txtPath};
  for (size_t i = 0; i < std::size(kTexts); ++i) {
    SetText(kTexts[i], has_row ? scan_->row(rows[0]).texts[i] : "");
  }
}

void FrmRegistryScan::OnCommand(int id, int code) {
  if (id == IDCANCEL) return OnClose();
  if (id == cmdStop) return work_.Stop();
  if (work_.working() || code != BN_CLICKED) return;
  for (const auto& [button, action] : kActions) {
    if (id == button) return Act(action);
  }
  switch (id) {
    case cmdDelete:
      return Delete(scan_->CheckedRows());
    case cmdEdit:
      return EditReference();
    case cmdUndo:
      return Undo();
    case chkThorough:
      scan_->SetThorough(IsTicked(window(), chkThorough));
      scan_->EndEdit();
      return ArmTimer();
  }
}

void FrmRegistryScan::Delete(const std::vector<size_t>& rows) {
  const bool files_also = Control(chkDelete) && IsTicked(window(), chkDelete);
  if (!MayGo(window(), scan_->QuestionFor(rows.size(), files_also))) return;
  const auto work = [&](const Pause& pause) { scan_->DeleteRows(rows, files_also, pause); };
  if (Work(work)) ArmTimer();
}

// What has come back is listed anew.
void FrmRegistryScan::Undo() {
  RestoreResult result;
  const size_t files_gone = scan_->files_gone();
  const auto work = [&](const Pause& pause) {
    try {
      result = scan_->Undo(prompts_, pause);
    } catch (const Error& error) {
      result.problems.push_back(Shown(error));
    }
  };
  if (!Work(work)) return;
  TellUndone(result, files_gone);
  if (window()) ArmTimer();
}

void FrmRegistryScan::TellUndone(const RestoreResult& result, size_t files_gone) {
  constexpr size_t kMostTold = 10;
  std::string problems;
  for (size_t i = 0; i < std::min(result.problems.size(), kMostTold); ++i)
    problems += "\n" + result.problems[i];
  if (!problems.empty())
    return prompts_.Inform(
        Tr("Not all of what this window deleted could be put back. The rest is "
           "in the Backups window.\n%1",
           problems));
  if (files_gone == 0 || result.cancelled || result.skipped > 0) return;
  prompts_.Inform(TrN("The registry is as it was. %1 file that went with it is not back.",
                      "The registry is as it was. %1 files that went with it are not back.",
                      files_gone, FormatCount(files_gone, machine_.system.UserLocale())));
}

bool FrmRegistryScan::IsOffered(ScanAction action) const {
  const std::vector<size_t> rows = list_.SelectedRows();
  return std::ranges::any_of(
      rows, [&](size_t row) { return row < scan_->RowCount() && scan_->Offers(action, row); });
}

void FrmRegistryScan::Act(ScanAction action) {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (rows.empty()) return prompts_.Inform(Tr("Select the entries first."));
  if (!IsOffered(action))
    return prompts_.Inform(Tr("None of the selected entries can be changed so."));
  const bool is_of_one = action == ScanAction::kStart || action == ScanAction::kChoose;
  if (is_of_one && rows.size() > 1) return prompts_.Inform(Tr("Select one entry alone."));
  if (action == ScanAction::kChoose) return Choose(rows[0]);
  const std::string question = scan_->QuestionForAction(action, rows[0]);
  if (!question.empty() && !prompts_.AskYesNo(question)) return;
  if (!Work([&](const Pause& pause) { scan_->Act(action, rows, pause); })) return;
  for (const size_t row : rows) list_.Select(row);
}

// What stands there then is seen by a new scan.
void FrmRegistryScan::Choose(size_t row) {
  const std::vector<std::string> choices = scan_->ChoicesFor(row);
  const UniqueMenu menu(CreatePopupMenu());
  for (size_t i = 0; i < choices.size(); ++i)
    AppendMenuW(menu.Get(), MF_STRING, i + 1, Wide(choices[i]).c_str());
  RECT place{};
  GetWindowRect(Control(cmdChoose), &place);
  const int chosen = TrackPopupMenu(menu.Get(), TPM_RETURNCMD | TPM_BOTTOMALIGN, place.left,
                                    place.top, 0, window(), nullptr);
  if (chosen <= 0) return;
  try {
    scan_->Choose(row, choices[static_cast<size_t>(chosen) - 1]);
  } catch (const Error& error) {
    return ShowProblem(Shown(error));
  }
  StartScan();
}

void FrmRegistryScan::EditReference() {
  if (scan_->RowCount() == 0) return;
  const std::vector<size_t> rows = list_.SelectedRows();
  if (rows.size() != 1) return prompts_.Inform(Tr("Select the one reference to edit first."));
  const int dialog = parts_.window == frmInvalidHelp ? frmEditHelp : frmEditAppPath;
  edit_.Show(dialog, *scan_, rows[0], window(), [this] { ArmTimer(); });
}

LRESULT FrmRegistryScan::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (!scan_ || list_.OnNotify(header, result)) return result;
  if (header.idFrom != static_cast<UINT_PTR>(parts_.list)) return 0;
  switch (header.code) {
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      ShowDetails();
      return 0;
    case LVN_BEGINLABELEDITW:
      return TRUE;  // a row's text is not changed in place
    case NM_DBLCLK:
      if (scan_->traits().edits && !work_.working()) EditReference();
      return 0;
    default:
      return 0;
  }
}

void FrmRegistryScan::SortBy(int column) {
  if (work_.working() || column < 0) return;
  scan_->SortBy(static_cast<size_t>(column));
  ShowRows();
}

void FrmRegistryScan::OnContextMenu(HWND control, POINT screen) {
  if (control != list_window() || work_.working()) return;
  const auto place_of = [this](size_t row) {
    if (row >= scan_->RowCount()) return RowPlace{};
    const ScanRow& shown = scan_->row(row);
    return RowPlace{.path = shown.file, .key = shown.key.empty() ? "" : scan_->KeyOfRow(row)};
  };
  const auto is_enabled = [this](int id) {
    return std::ranges::any_of(
        kActions, [this, id](const auto& row) { return row.first == id && IsOffered(row.second); });
  };
  const RowMenu menu{list_, machine_.shell, place_of, parts_.menu, is_enabled};
  if (const int chosen = menu.Show(window(), screen)) OnCommand(chosen, BN_CLICKED);
}

void FrmRegistryScan::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

void FrmRegistryScan::OnDestroyed() {
  LockWindowUpdate(nullptr);
  OwnedWindow::OnDestroyed();
}

}  // namespace quellix
