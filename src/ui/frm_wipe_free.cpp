#include "ui/frm_wipe_free.h"

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "run/removal.h"
#include "ui/control_text.h"
#include "ui/dpi.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("Drive"), 70},
                               {Mark("Kind"), 120},
                               {Mark("Free"), 80, true},
                               {Mark("Size"), 80, true},
                               {Mark("Result"), 180}};
constexpr int kResult = 4;

constexpr Anchor kAnchors[] = {
    {lblWipeFree, 0, 0, 1, 0},   {lstvWipeFree, 0, 0, 1, 1}, {lblWipeWith, 0, 1, 0, 1},
    {optWipeRandom, 0, 1, 0, 1}, {optWipeZeros, 0, 1, 1, 1}, {lblBeyondWiping, 0, 1, 1, 1},
    {lblStatus, 0, 1, 1, 1},     {pgWipeFree, 0, 1, 1, 1},   {cmdWipeFree, 0, 1, 0, 1},
    {cmdStop, 0, 1, 0, 1},       {IDCANCEL, 1, 1, 1, 1},
};

constexpr int kIdle[] = {lstvWipeFree, optWipeRandom, optWipeZeros, cmdWipeFree};

}  // namespace

void FrmWipeFree::Show(HWND owner) {
  drives_.List();
  Open(frmWipeFree, owner);
}

void FrmWipeFree::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmWipeFree", {&list_});
  list_.Attach(Control(lstvWipeFree), kColumns,
               [this](int row, int column) { return CellOf(row, column); });
  list_.SetCheckBoxes([this](int row) { return drives_.row(static_cast<size_t>(row)).is_ticked; },
                      [this](int row) { drives_.Toggle(static_cast<size_t>(row)); });
  list_.SetTotals(machine_.system.UserLocale());
  list_.SetEmpty([] { return Tr("There is no disk whose free space can be wiped."); });
  list_.SetTickedButton(Control(cmdWipeFree), [this] { return !work_.working(); });
  CheckDlgButton(window(), optWipeRandom, BST_CHECKED);
  SetText(lblBeyondWiping, Tr(kBeyondWiping));
  list_.SetRows(static_cast<int>(drives_.count()));
  if (drives_.count() > 0) list_.Select(0);
  SetText(lblStatus, Tr("Nothing was overwritten yet."));
}

Cell FrmWipeFree::CellOf(int row, int column) const {
  const FreeSpaceDrives::Row& drive = drives_.row(static_cast<size_t>(row));
  const auto size = [this](uint64_t bytes) {
    return FormatSize(static_cast<double>(bytes), 2, true, machine_.system.UserLocale());
  };
  const std::string texts[] = {drive.root, drive.kind, size(drive.free), size(drive.size),
                               drive.result};
  return Cell{Wide(texts[column])};
}

void FrmWipeFree::OnResolution() { list_.SetResolution(dpi(), kColumns, {}); }

void FrmWipeFree::OnSized() { list_.FillWith(kResult, Scale(120, dpi())); }

// "Wiping C:\\, about 3 minutes left".
void FrmWipeFree::ShowProgress(const Progress& progress) {
  if (progress.path.empty()) return;
  const std::string path(progress.path), left = work_.TimeLeft();
  if (progress.work == kClearingAway)
    return SetText(lblStatus, Tr("Removing what was written to %1", path));
  SetText(lblStatus, left.empty() ? Tr("Wiping %1", path)
                                  // TRANSLATORS: %2 is "about 3 minutes left".
                                  : Tr("Wiping %1, %2", path, left));
}

void FrmWipeFree::Wipe() {
  const bool zeros = IsTicked(window(), optWipeZeros);
  if (!drives_.HasTicks()) return prompts_.Inform(Tr("Tick the drives first."));
  if (!prompts_.AskYesNo(drives_.Question(zeros))) return;
  const LongWork::End end =
      work_.Run({.idle = kIdle,
                 .stop = cmdStop,
                 .rest = lstvWipeFree,
                 .bar = pgWipeFree,
                 .show = [this](const Progress& progress) { ShowProgress(progress); }},
                [&](const Pause& pause) { drives_.Wipe(zeros, pause); });
  if (end == LongWork::End::kCloses) OwnedWindow::OnClose();
  if (end != LongWork::End::kDone) return;
  SetText(lblStatus, drives_.summary());
  list_.Refresh();
  list_.Recount();
}

void FrmWipeFree::OnCommand(int id, int /*code*/) {
  if (id == cmdStop) return work_.Stop();
  if (id == IDCANCEL) return OnClose();
  if (id == cmdWipeFree && !work_.working()) Wipe();
}

LRESULT FrmWipeFree::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  list_.OnNotify(header, result);
  return result;
}

// While it works, closing stops it first: nothing is left lying about.
void FrmWipeFree::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

}  // namespace quellix
