#include "ui/frm_log.h"

#include <sstream>

#include "app/run_logs.h"
#include "app/run_report.h"
#include "app/run_table.h"
#include "app/undo_run.h"
#include "engine.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "run/exit_code.h"
#include "ui/control_text.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("Category"), 118}, {Mark("Result"), 172}};
constexpr int kTick = 0, kCross = 1;
constexpr int kIcons[] = {icoTick, icoCross};

constexpr Anchor kAnchors[] = {
    {txtLog, 0, 0, 1, 0.5},
    {lstvCategories, 1, 0, 1, 0.5},
    {lblFilesCaption, 1, 0.5, 1, 0.5},
    {lblFiles, 1, 0.5, 1, 0.5},
    {lblSpaceCaption, 1, 0.5, 1, 0.5},
    {lblSpace, 1, 0.5, 1, 0.5},
    {lblRunSummary, 0, 0.5, 1, 0.5},
    {lblFilter, 1, 0.5, 1, 0.5},
    {txtFilter, 1, 0.5, 1, 0.5},
    {lstvRun, 0, 0.5, 1, 1},
    {cmdUndoRun, 0, 1, 0, 1},
    {cmdOpenFolder, 0, 1, 0, 1},
    {cmdCopy, 0, 1, 0, 1},
    {cmdSave, 1, 1, 1, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

// What a log is saved as.
constexpr FileFilter kForms[] = {{Mark("Log Files ( *.log )"), "*.log"},
                                 {Mark("Entries as text ( *.txt )"), "*.txt"},
                                 {Mark("Entries as CSV ( *.csv )"), "*.csv"},
                                 {Mark("The run as JSON ( *.json )"), "*.json"}};

}  // namespace

void FrmLog::Show(HWND owner, const RunReport& report) {
  if (work_.working()) return;
  last_ = report_ = report;
  Create(frmLog, owner);
  ShowWindow(window(), SW_SHOW);
}

HWND FrmLog::FirstFocus() { return Control(IDCANCEL); }

void FrmLog::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmLog", {&categories_, &entries_.view()});
  categories_.Attach(Control(lstvCategories), kColumns,
                     [this](int row, int column) { return CategoryCell(row, column); });
  categories_.SetTotals(machine_.system.UserLocale());
  entries_.Attach(window());
  entries_.ShowTotals();
  FillRuns();
  ShowReport();
}

void FrmLog::ShowReport() {
  SetText(txtLog, report_.log);
  SetText(lblFiles, report_.files);
  SetText(lblSpace, report_.space_gained);
  categories_.SetRows(static_cast<int>(kCategories));
  categories_.Refresh();
  entries_.Show(report_.totals->Entries, EntryView::Kind::kDone);
  EnableControl(cmdUndoRun, CanUndo(*report_.totals->Entries), IDCANCEL);
}

// The run that was shown first, and behind it those that are kept.
void FrmLog::FillRuns() {
  runs_ = RunLogs(machine_).List();
  std::vector<std::string> names = {Tr("The last run")};
  for (const std::string& run : runs_) names.push_back(RunLogs::TitleOf(run));
  FillCombo(Control(cboRuns), names);
  SendMessageW(Control(cboRuns), CB_SETCURSEL, 0, 0);
}

void FrmLog::ChooseRun() {
  const LRESULT chosen = SendMessageW(Control(cboRuns), CB_GETCURSEL, 0, 0);
  if (chosen < 0) return;
  try {
    report_ = chosen == 0
                  ? last_
                  : MakeReport(RunLogs(machine_).Read(runs_[static_cast<size_t>(chosen) - 1]),
                               machine_.system.UserLocale());
  } catch (const Error& error) {
    return Tell(Shown(error));
  }
  ShowReport();
}

void FrmLog::OnResolution() {
  categories_.SetResolution(dpi(), kColumns, kIcons);
  entries_.OnResolution(dpi());
}

Cell FrmLog::CategoryCell(int row, int column) const {
  const Outcome outcome = report_.outcomes[static_cast<size_t>(row)];
  if (column == 1) return {Wide(Tr(OutcomeText(outcome)))};
  return {Wide(Tr(CategoryTitle(static_cast<Category>(row)))),
          outcome == Outcome::kCleaned ? kTick : kCross};
}

void FrmLog::OnCommand(int id, int code) {
  if (work_.working()) return id == IDCANCEL ? work_.Stop() : void();
  if (entries_.OnCommand(id, code)) return;
  if (id == cmdUndoRun) return Undo();
  if (id == cboRuns && code == CBN_SELCHANGE) ChooseRun();
  if (id == cmdSave) Save();
  if (id == IDCANCEL) Close();
}

LRESULT FrmLog::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (!entries_.OnNotify(header, result)) categories_.OnNotify(header, result);
  return result;
}

void FrmLog::OnContextMenu(HWND control, POINT screen) {
  if (entries_.OnContextMenu(control, screen) || control != Control(lstvCategories)) return;
  RowMenu{categories_, machine_.shell, [](size_t) { return RowPlace{}; }}.Show(window(), screen);
}

HBRUSH FrmLog::OnControlColor(HDC target, HWND control) {
  return control == Control(txtLog) ? Paper(target) : nullptr;
}

std::string FrmLog::TextOf(size_t form) const {
  if (form == 0) return report_.full_log;
  if (form == 1) return EntryList(machine_.system, report_.totals->Entries, false).ToText();
  std::ostringstream text;
  const ReportTable table = TableOfRun("clean", *report_.totals, false);
  form == 2 ? WriteCsv(text, table) : WriteJson(text, table, ExitCodeOf(*report_.totals));
  return text.str();
}

// No run may begin meanwhile: it would close this window and the question with it.
void FrmLog::Save() const {
  const HWND owner = GetWindow(window(), GW_OWNER);
  const bool was_disabled = EnableWindow(owner, FALSE) != FALSE;
  const std::optional<SavePlace> place = AskWhereToSave(window(), kForms, "cleanup");
  EnableWindow(owner, !was_disabled);
  if (!place) return;
  try {
    machine_.files.WriteWholeFile(place->path, TextOf(place->filter));
  } catch (const Error& error) {
    Tell(Tr("The log could not be saved. %1", Shown(error)));
  }
}

// No run may begin meanwhile.
void FrmLog::Undo() {
  const HWND owner = GetWindow(window(), GW_OWNER);
  if (!prompts_.AskYesNo(Tr("Put back everything that this run backed up?"))) return;
  const bool was_disabled = EnableWindow(owner, FALSE) != FALSE;
  const std::shared_ptr<const RunEntries> run = report_.totals->Entries;
  RestoreResult result;
  const LongWork::End end = work_.Run(
      {.show = [this](const Progress& at) { SetText(lblRunSummary, Tr("Restoring %1", at.path)); }},
      [&](const Pause& pause) { result = UndoRun(machine_, *run, prompts_, pause); });
  EnableWindow(owner, !was_disabled);
  if (end == LongWork::End::kGone) return;
  entries_.ShowSummary();
  std::string told = Tr("%1 restored, %2 left as they were.", std::to_string(result.restored),
                        std::to_string(result.skipped));
  for (const std::string& problem : result.problems) told += "\r\n" + problem;
  prompts_.Inform(told);
  if (end == LongWork::End::kCloses) Close();
}

void FrmLog::Tell(const std::string& sentence) const {
  ShowBox(window(), sentence, MB_OK | MB_ICONERROR);
}

}  // namespace quellix
