#include "ui/frm_log.h"

#include "app/run_report.h"
#include "engine.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{L"Category", 118}, {L"Result", 172}};
constexpr int kTick = 0, kCross = 1;
constexpr int kIcons[] = {icoTick, icoCross};

constexpr Anchor kAnchors[] = {
    {txtLog, 0, 0, 1, 1},   {lstvCategories, 1, 0, 1, 1},  {lblFilesCaption, 1, 1, 1, 1},
    {lblFiles, 1, 1, 1, 1}, {lblSpaceCaption, 1, 1, 1, 1}, {lblSpace, 1, 1, 1, 1},
    {cmdSave, 1, 1, 1, 1},  {IDCANCEL, 1, 1, 1, 1},
};

}  // namespace

void FrmLog::Show(HWND owner, const RunReport& report) {
  report_ = report;
  Create(frmLog, owner);
  ShowWindow(window(), SW_SHOW);
}

void FrmLog::OnInit() {
  layout().Add(kAnchors);
  SetText(txtLog, report_.log);
  SetText(lblFiles, report_.files);
  SetText(lblSpace, report_.space_gained);
  categories_.Attach(Control(lstvCategories), kColumns,
                     [this](int row, int column) { return CategoryCell(row, column); });
  categories_.SetRows(static_cast<int>(kCategories));
}

void FrmLog::OnResolution() { categories_.SetResolution(dpi(), kColumns, kIcons); }

Cell FrmLog::CategoryCell(int row, int column) const {
  const Outcome outcome = report_.outcomes[static_cast<size_t>(row)];
  if (column == 1) return {Wide(OutcomeText(outcome))};
  return {Wide(CategoryTitle(static_cast<Category>(row))),
          outcome == Outcome::kCleaned ? kTick : kCross};
}

void FrmLog::OnCommand(int id, int /*code*/) {
  if (id == cmdSave) Save();
  if (id == IDCANCEL) Close();
}

LRESULT FrmLog::OnNotify(NMHDR& header) {
  categories_.OnNotify(header);
  return 0;
}

HBRUSH FrmLog::OnControlColor(HDC target, HWND control) {
  return control == Control(txtLog) ? Paper(target) : nullptr;
}

// No run may begin meanwhile: it would close this window and the question with it.
void FrmLog::Save() const {
  const HWND owner = GetWindow(window(), GW_OWNER);
  EnableWindow(owner, FALSE);
  const std::optional<std::string> path =
      AskWhereToSave(window(), {"Log Files ( *.log )", "*.log"}, "cleanup", "log");
  EnableWindow(owner, TRUE);
  if (!path) return;
  try {
    files_.WriteWholeFile(*path, report_.full_log);
  } catch (const Error& error) {
    const std::string text = std::string("The log could not be saved. ") + error.what();
    MessageBoxW(window(), Wide(text).c_str(), Wide(kApplicationTitle).c_str(),
                MB_OK | MB_ICONERROR);
  }
}

}  // namespace quellix
