#include "ui/frm_edit_reference.h"

#include "platform/error.h"
#include "ui/control_text.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {
    {lblAppPath, 0, 0, 1, 0}, {txtPath, 0, 0, 1, 0},  {cmdBrowse, 1, 0, 1, 0},
    {cmdOk, 1, 1, 1, 1},      {IDCANCEL, 1, 1, 1, 1},
};

}  // namespace

void FrmEditReference::Show(int template_id, RegistryScan& scan, size_t row, HWND owner,
                            std::function<void()> closed) {
  scan_ = &scan;
  row_ = row;
  closed_ = std::move(closed);
  Open(template_id, owner);
}

void FrmEditReference::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  SetText(lblAppPath, scan_->row(row_).texts[0]);
  SetText(txtPath, scan_->row(row_).texts[1]);
}

HWND FrmEditReference::FirstFocus() {
  SendDlgItemMessageW(window(), txtPath, EM_SETSEL, 0, -1);
  return Control(txtPath);
}

void FrmEditReference::OnCommand(int id, int code) {
  if (id == IDCANCEL) return OnClose();
  if (code != BN_CLICKED) return;
  if (id == cmdBrowse) Browse();
  if (id == cmdOk) Save();
}

void FrmEditReference::Browse() {
  if (const auto chosen = scan_->Browse(row_, prompts_)) SetText(txtPath, *chosen);
}

void FrmEditReference::Save() {
  scan_->SaveEdit(row_, ControlText(Control(txtPath)));
  OnClose();
}

void FrmEditReference::OnClose() {
  scan_->EndEdit();
  OwnedWindow::OnClose();
  closed_();
}

}  // namespace quellix
