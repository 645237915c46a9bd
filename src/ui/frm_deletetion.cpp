#include "ui/frm_deletetion.h"

#include "engine.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "run/time_left.h"
#include "ui/control_text.h"
#include "ui/looks.h"
#include "ui/resource.h"
#include "ui/row_menu.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kMillisecondsPerLook = 100;

constexpr Column kColumns[kResultColumns] = {{Mark("Name"), 150},      {Mark("Bytes"), 75, true},
                                             {Mark("Date/Time"), 145}, {Mark("Attribute"), 62},
                                             {Mark("Path"), 190},      {Mark("File Type"), 62},
                                             {Mark("Category"), 112}};
constexpr int kIcons[] = {icoCross};

constexpr Anchor kAnchors[] = {
    {lblTotalFiles, 0, 0, 0, 0},     {lblFilter, 1, 0, 1, 0},    {txtFilter, 1, 0, 1, 0},
    {lstvDeletion, 0, 0, 1, 1},      {lblRed, 0, 1, 1, 1},       {lblDeletionState, 0, 1, 1, 1},
    {pgDeletion, 0, 1, 1, 1},        {cmdSelectAll, 0, 1, 0, 1}, {cmdDeselectAll, 0, 1, 0, 1},
    {cmdDeleteSelected, 0, 1, 0, 1}, {cmdAbort, 1, 1, 1, 1},     {cmdExit, 1, 1, 1, 1},
};

}  // namespace

void FrmDeletetion::Show(HWND owner, SearchResults& results) {
  results_ = &results;
  Open(frmDeletetion, owner);
}

void FrmDeletetion::OnInit() {
  layout().Add(kAnchors);
  Remember(machine_, "frmDeletetion", {&list_});
  list_.Attach(Control(lstvDeletion), kColumns,
               [this](int row, int column) { return CellText(row, column); });
  list_.SetCheckBoxes([this](int row) { return Shows(row) && results_->IsTicked(Index(row)); },
                      [this](int row) {
                        if (Shows(row))
                          results_->SetTicked(Index(row), !results_->IsTicked(Index(row)));
                      });
  list_.SetSorter([this](int column) { Sort(column); });
  list_.SetEraser([this] { Delete(Which::kSelected); });
  list_.SetMarks([this](int row) { return Shows(row) && results_->HasFailed(Index(row)); });
  list_.SetTips([this](int row) { return Wide(ReasonOf(row)); });
  list_.SetTotals(machine_.system.UserLocale(), [this](int row) {
    return Shows(row) ? std::optional(static_cast<double>(results_->SizeOf(Index(row))))
                      : std::nullopt;
  });
  list_.SetEmpty([this] { return results_->WhyEmpty(); });
  list_.SetTickedButton(Control(cmdDeleteSelected), [this] { return !IsWorking(); });
  SetTimer(window(), kTimer, kMillisecondsPerLook, nullptr);
  Refresh();
}

HWND FrmDeletetion::FirstFocus() { return Control(lstvDeletion); }

void FrmDeletetion::OnResolution() { list_.SetResolution(dpi(), kColumns, kIcons); }

std::string FrmDeletetion::ReasonOf(int row) const {
  return Shows(row) ? results_->FailureReason(Index(row)) : std::string();
}

// A failed row carries a mark beside its colour.
Cell FrmDeletetion::CellText(int row, int column) const {
  if (!Shows(row)) return {};
  Cell cell{Wide(results_->Text(Index(row), ResultColumn(column)))};
  if (column == 0 && results_->HasFailed(Index(row))) cell.image = 0;
  return cell;
}

void FrmDeletetion::Refresh() {
  ShowRows();
  ShowTexts();
  EnableCommands();
}

void FrmDeletetion::ShowRows() {
  list_.SetRows(static_cast<int>(results_->RowCount()));
  if (const auto& order = results_->order()) {
    list_.ShowOrder(static_cast<int>(order->column), order->descending);
  }
}

void FrmDeletetion::ShowTexts() {
  ShowText(lblTotalFiles, results_->CountLine());
  ShowText(lblDeletionState, StateText());
  ShowWindow(Control(lblRed), results_->SomeFailed() ? SW_SHOWNA : SW_HIDE);
}

void FrmDeletetion::ShowText(int id, const std::string& text) {
  ShowControlText(Control(id), text);
}

std::string FrmDeletetion::StateText() const {
  if (results_->searching())
    return Tr("Searching... Abort ends the search and keeps what was found.");
  if (results_->deleting()) {
    const std::string text = ProgressText(results_->progress(), machine_.system.UserLocale(),
                                          GetTickCount64() - deleting_since_);
    return text.empty() ? Tr("Deleting...") : text;
  }
  const std::string reason = ReasonOf(list_.FocusedRow());
  return reason.empty() ? results_->stopped() : reason;
}

void FrmDeletetion::EnableCommands() {
  const bool working = IsWorking();
  const bool any = results_->RowCount() > 0;
  Enable(cmdSelectAll, mnuSelectAll, any);
  Enable(cmdDeselectAll, mnuDeselectAll, any);
  Enable(0, mnuDeleteSelected, IsWindowEnabled(Control(cmdDeleteSelected)) != FALSE);
  Enable(0, mnuDeleteAll, any && !working);
  Enable(cmdAbort, mnuAbort, working);
  const bool focused = !FocusedPath().empty();
  Enable(0, mnuProperties, focused);
  Enable(0, mnuOpenFolder, focused);
}

void FrmDeletetion::Enable(int button, int entry, bool enabled) {
  EnableMenuItem(GetMenu(window()), static_cast<UINT>(entry),
                 MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
  if (button != 0) EnableControl(button, enabled, lstvDeletion);
}

// New rows of a list that is not sorted stand behind the others, so nothing that is seen changes.
void FrmDeletetion::OnTimer(UINT_PTR) {
  if (results_->TakeNew()) {
    list_.GrowTo(static_cast<int>(results_->RowCount()));
    if (results_->order()) list_.Refresh();
  }
  ShowTexts();
  ShowBar();
  EnableCommands();
}

void FrmDeletetion::ShowBar() const {
  const Progress steps = StepsOf(results_->progress());
  const HWND bar = Control(pgDeletion);
  if (steps.total != 0) ShowSteps(bar, steps);
  ShowWindow(bar, results_->deleting() && steps.total != 0 ? SW_SHOWNA : SW_HIDE);
}

void FrmDeletetion::OnCommand(int id, int code) {
  if (id >= mnuSortResults && id < mnuSortResults + static_cast<int>(kResultColumns)) {
    return Sort(id - mnuSortResults);
  }
  switch (id) {
    case txtFilter:
      return code == EN_CHANGE ? Filter() : void();
    case cmdSelectAll:
    case mnuSelectAll:
    case cmdDeselectAll:
    case mnuDeselectAll:
      results_->TickAll(id == cmdSelectAll || id == mnuSelectAll);
      list_.Refresh();
      return ShowTexts();
    case cmdDeleteSelected:
    case mnuDeleteSelected:
    case mnuDeleteAll:
      return Delete(id == mnuDeleteAll ? Which::kAll : Which::kTicked);
    case cmdAbort:
    case mnuAbort:
      return results_->Abort();
    case mnuProperties:
      return AskShell(&Shell::ShowProperties);
    case mnuOpenFolder:
      return AskShell(&Shell::OpenFolderOf);
    case IDOK:
    case IDCANCEL:
      return PressKey(id == IDOK ? VK_RETURN : VK_ESCAPE);
    case cmdExit:
    case mnuExit:
      return OnClose();
  }
}

// Enter takes a filter over into the list and shows what a row is; Esc ends what is in work before
// it closes the window.
void FrmDeletetion::PressKey(WORD key) {
  if (key == VK_ESCAPE) {
    return IsWorking() ? results_->Abort() : OnClose();
  }
  if (GetFocus() == Control(txtFilter)) {
    FocusOn(Control(lstvDeletion));
  } else if (GetFocus() == Control(lstvDeletion)) {
    AskShell(&Shell::ShowProperties);
  }
}

LRESULT FrmDeletetion::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (!results_) return 0;
  const bool answered = list_.OnNotify(header, result);
  if (header.hwndFrom != Control(lstvDeletion)) return result;
  switch (header.code) {
    case NM_CLICK:
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      ShowTexts();
      EnableCommands();
      break;
    case NM_DBLCLK:
      if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) {
        AskShell(&Shell::ShowProperties);
      }
      break;
    case LVN_KEYDOWN:
      ShowTexts();  // boxes may differ
      break;
  }
  return answered ? result : 0;
}

void FrmDeletetion::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvDeletion)) return;
  const RowMenu menu{list_, machine_.shell,
                     [this](size_t row) {
                       const bool is_there = row < results_->RowCount();
                       return RowPlace{.path = is_there ? results_->PathOf(row) : ""};
                     },
                     mnuResultRow,
                     [this](int id) {
                       const UINT state =
                           GetMenuState(GetMenu(window()), static_cast<UINT>(id), MF_BYCOMMAND);
                       return (state & MF_GRAYED) == 0;
                     }};
  const int chosen = menu.Show(window(), screen);
  if (chosen != 0) OnCommand(chosen, 0);
}

void FrmDeletetion::Sort(int column) {
  results_->Sort(ResultColumn(column));
  ShowRows();
}

void FrmDeletetion::Filter() {
  results_->SetFilter(ControlText(Control(txtFilter)));
  Refresh();
}

// The window stays alive meanwhile: the deletion pauses for it.
void FrmDeletetion::Delete(Which which) {
  if (IsWorking()) return;
  const std::vector<size_t> rows = list_.SelectedRows();
  const std::string question = which == Which::kAll      ? results_->QuestionForAll()
                               : which == Which::kTicked ? results_->QuestionForTicked()
                                                         : results_->QuestionForRows(rows);
  if (!MayGo(window(), question)) return;
  Enable(cmdAbort, mnuAbort, true);
  deleting_since_ = GetTickCount64();
  const LongWork::End end = work_.Run({}, [&](const Pause&) {
    if (which == Which::kAll) results_->DeleteAll();
    if (which == Which::kTicked) results_->DeleteTicked();
    if (which == Which::kSelected) results_->DeleteRows(rows);
  });
  if (end == LongWork::End::kGone) return;
  if (end == LongWork::End::kCloses) return OnClose();
  Refresh();
  ShowBar();
}

std::string FrmDeletetion::FocusedPath() const {
  const int row = list_.FocusedRow();
  return Shows(row) ? results_->PathOf(Index(row)) : std::string();
}

void FrmDeletetion::AskShell(void (Shell::*show)(std::string_view)) const {
  const std::string path = FocusedPath();
  if (path.empty()) return;
  try {
    (machine_.shell.*show)(path);
  } catch (const Error& error) {
    ShowBox(window(), Shown(error), MB_OK | MB_ICONERROR);
  }
}

HBRUSH FrmDeletetion::OnControlColor(HDC target, HWND control) {
  if (control != Control(lblRed)) return nullptr;
  const HBRUSH brush = PaintOn(target, Paint::kFace);
  SetTextColor(target, ColorOf(Paint::kMarked));
  return brush;
}

// Closing ends what is in work; a deletion ends first, between two files.
void FrmDeletetion::OnClose() {
  results_->Abort();
  if (work_.working()) return work_.StopAndClose();
  OwnedWindow::OnClose();
}

}  // namespace quellix
