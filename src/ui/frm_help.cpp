#include "ui/frm_help.h"

#include "ui/resource.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {{wbHelp, 0, 0, 1, 1}};

}  // namespace

bool FrmHelp::Show(const std::wstring& address) {
  if (!window()) Create(frmHelp, nullptr);
  if (!browser_) {
    Close();
    return false;
  }
  browser_.Navigate(address);
  ShowWindow(window(), IsIconic(window()) ? SW_RESTORE : SW_SHOW);
  SetForegroundWindow(window());
  browser_.TakeFocus();
  return true;
}

void FrmHelp::OnInit() {
  layout().Add(kAnchors);
  browser_.Create(Control(wbHelp));
}

void FrmHelp::OnCommand(int id, int /*code*/) {
  if (id == IDCANCEL) OnClose();
}

// Pages want their window to be there when they go.
void FrmHelp::OnClose() {
  browser_.Close();
  Close();
}

}  // namespace quellix
