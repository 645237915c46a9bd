#include "ui/options_page.h"

#include <algorithm>

#include "ui/control_text.h"

namespace quellix {

void OptionsPageWindow::MoveTo(const RECT& place) {
  SetWindowPos(window(), nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void OptionsPageWindow::FocusOn(int control) {
  SetFocus(Control(control));
  SendDlgItemMessageW(window(), control, EM_SETSEL, 0, -1);
}

void OptionsPageWindow::OnInit() {
  ready_ = false;
  Fill();
  ready_ = true;
}

void OptionsPageWindow::OnCommand(int id, int code) {
  if (ready_) OnControl(id, code);
}

void OptionsPageWindow::Changed() const {
  if (ready_) context_.on_change();
}

void OptionsPageWindow::ShowBoxes(std::span<const SettingBox> boxes) const {
  for (const SettingBox& box : boxes) Check(box.control, options().general.*box.value);
}

bool OptionsPageWindow::TakeBox(std::span<const SettingBox> boxes, int id) {
  const auto box = std::ranges::find(boxes, id, &SettingBox::control);
  if (box == boxes.end()) return false;
  options().general.*box->value = IsChecked(id);
  return true;
}

std::string OptionsPageWindow::TextOf(int id) const { return ControlText(Control(id)); }

}  // namespace quellix
