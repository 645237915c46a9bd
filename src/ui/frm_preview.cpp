#include "ui/frm_preview.h"

#include <utility>

#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {
    {lblRunSummary, 0, 0, 1, 0}, {lblFilter, 1, 0, 1, 0},      {txtFilter, 1, 0, 1, 0},
    {lstvRun, 0, 0, 1, 1},       {cmdSelectAll, 0, 1, 0, 1},   {cmdDeselectAll, 0, 1, 0, 1},
    {chkByFolder, 1, 0, 1, 0},   {cmdKeepEntry, 0, 1, 0, 1},   {cmdOpenFolder, 0, 1, 0, 1},
    {cmdCopy, 0, 1, 0, 1},       {cmdCleanTicked, 1, 1, 1, 1}, {IDCANCEL, 1, 1, 1, 1},
};

}  // namespace

void FrmPreview::Show(HWND owner, std::shared_ptr<const RunEntries> found) {
  found_ = std::move(found);
  Open(frmPreview, owner);
}

void FrmPreview::OnInit() {
  layout().Add(kAnchors);
  Remember(machine_, "frmPreview", {&entries_.view()});
  entries_.Attach(window());
  entries_.ShowTotals();
  entries_.Show(found_, EntryView::Kind::kChoice);
}

HWND FrmPreview::FirstFocus() { return Control(lstvRun); }

void FrmPreview::OnCommand(int id, int code) {
  if (entries_.OnCommand(id, code)) return;
  switch (id) {
    case cmdSelectAll:
    case cmdDeselectAll:
      return TickAll(id == cmdSelectAll);
    case cmdCleanTicked:
      return Clean();
    case IDCANCEL:
      return OnClose();
  }
}

void FrmPreview::TickAll(bool ticked) {
  entries_.list()->TickAll(ticked);
  entries_.Refresh();
  entries_.ShowSummary();
}

void FrmPreview::Clean() {
  const EntryList& list = *entries_.list();
  const RunQuestion question = question_of(list);
  FurtherChoice further{question.further.text};
  if (!MayGo(window(), question.heading, question.text, &further)) return;
  const std::shared_ptr<RunChoice> choice =
      further.is_ticked ? list.Choice(question.further.entries) : list.Choice();
  OnClose();
  on_clean(choice, further.is_ticked);
}

LRESULT FrmPreview::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  entries_.OnNotify(header, result);
  return result;
}

void FrmPreview::OnContextMenu(HWND control, POINT screen) {
  entries_.OnContextMenu(control, screen);
}

bool FrmPreview::OnKey(MSG& message) { return IsLetterForButton(message); }

}  // namespace quellix
