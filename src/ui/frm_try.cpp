#include "ui/frm_try.h"

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("What"), 110}, {Mark("Where"), 400}};

constexpr Anchor kAnchors[] = {
    {lstvTry, 0, 0, 1, 1}, {txtTry, 0, 1, 1, 1},   {lblStatus, 0, 1, 1, 1},
    {cmdStop, 1, 1, 1, 1}, {IDCANCEL, 1, 1, 1, 1},
};

}  // namespace

void FrmTry::Show(HWND owner, const modPlugin::Plugin& plugin) {
  trial_.emplace(machine_);
  Open(frmTry, owner);
  const LongWork::End end = work_.Run(
      {.stop = cmdStop, .rest = lstvTry, .show = [this](const Progress&) { display_.Flush(); }},
      [&](const Pause& pause) {
        display_.BreatheBy(pause);
        display_.SetStatus(Tr("Looking..."));
        display_.Flush();
        trial_->Run(plugin, display_);
      });
  if (end == LongWork::End::kGone) return;
  if (end == LongWork::End::kCloses) return OwnedWindow::OnClose();
  display_.SetStatus(trial_->Summary());
  display_.Flush();
  SetText(txtTry, trial_->notes().empty() ? Tr("Everything the plug-in names may be cleaned.")
                                          : trial_->notes());
  list_.SetRows(static_cast<int>(trial_->count()));
  SetFocus(Control(lstvTry));
}

void FrmTry::OnInit() {
  layout().Add(kAnchors);
  Remember(machine_, "frmTry", {&list_});
  display_.Attach(window());
  list_.Attach(Control(lstvTry), kColumns, [this](int row, int column) {
    const auto index = static_cast<size_t>(row);
    return Cell{Wide(column == 0 ? Tr(trial_->What(index)) : trial_->Where(index))};
  });
  list_.SetTotals(machine_.system.UserLocale());
  list_.SetEmpty([this]() -> std::string {
    return work_.working() ? Tr("Looking...") : Tr("Nothing that this plug-in names is here now.");
  });
  list_.SetRows(0);
}

void FrmTry::OnResolution() { list_.SetResolution(dpi(), kColumns, {}); }

void FrmTry::OnSized() { list_.FillWith(1, Scale(200, dpi())); }

void FrmTry::OnCommand(int id, int /*code*/) {
  if (id == cmdStop) work_.Stop();
  if (id == IDCANCEL) OnClose();
}

LRESULT FrmTry::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  list_.OnNotify(header, result);
  return result;
}

void FrmTry::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvTry) || work_.working()) return;
  const auto place_of = [this](size_t row) { return PlaceNamedBy(trial_->Where(row)); };
  RowMenu{list_, machine_.shell, place_of}.Show(window(), screen);
}

// While it looks, closing stops it first.
void FrmTry::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

HBRUSH FrmTry::OnControlColor(HDC target, HWND control) {
  return control == Control(txtTry) ? Paper(target) : nullptr;
}

}  // namespace quellix
