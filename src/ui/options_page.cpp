#include "ui/options_page.h"

#include <algorithm>

#include "platform/win32/win32_text.h"

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

std::string OptionsPageWindow::TextOf(int id) const {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(Control(id))) + 1, L'\0');
  text.resize(
      static_cast<size_t>(GetWindowTextW(Control(id), text.data(), static_cast<int>(text.size()))));
  return Narrow(text);
}

}  // namespace quellix
