#include "ui/frm_keygen.h"

#include "ui/control_text.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr int kMostOffered = 100;  // any other number can be typed

}  // namespace

void FrmKeygen::Show(HWND owner, Take take) {
  take_ = std::move(take);
  Open(frmKeygen, owner);
}

void FrmKeygen::OnInit() {
  std::vector<std::string> numbers;
  for (int i = 0; i <= kMostOffered; ++i) numbers.push_back(std::to_string(i));
  FillCombo(Control(cmbFrom), numbers);
  FillCombo(Control(cmbTo), numbers);
  FillCombo(Control(cmbPad), {"0", "00"});
  SetText(cmbFrom, "1");
  SetText(cmbTo, "10");
  SendMessageW(Control(cmbPad), CB_SETCURSEL, 0, 0);
  EnableWindow(Control(cmbPad), FALSE);
}

modPlugin::NumberRange FrmKeygen::Range() const {
  return {ControlText(Control(cmbFrom)), ControlText(Control(cmbTo)), IsTicked(window(), chkPad),
          ControlText(Control(cmbPad))};
}

void FrmKeygen::OnCommand(int id, int /*code*/) {
  if (id == chkPad) EnableWindow(Control(cmbPad), IsTicked(window(), chkPad));
  if (id == IDCANCEL || (id == IDOK && take_(Range()))) OnClose();
}

}  // namespace quellix
