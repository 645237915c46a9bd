#include "options_window.h"

namespace quellix::test {
OptionsWindow::OptionsWindow(const QuellixWindow& program) : program_(program) {
  program.Choose(mnuOptions);
  window_ = program.AwaitWindow(L"Options");
}

void OptionsWindow::GoTo(OptionsPage page) const {
  const HWND pages = AwaitControl(window_, lstPages);
  SendMessageW(pages, LB_SETCURSEL, static_cast<WPARAM>(page), 0);
  SendMessageW(window_, WM_COMMAND, MAKEWPARAM(lstPages, LBN_SELCHANGE),
               reinterpret_cast<LPARAM>(pages));
}

OptionsPage OptionsWindow::Page() const {
  return static_cast<OptionsPage>(SendMessageW(GetDlgItem(window_, lstPages), LB_GETCURSEL, 0, 0));
}

HWND OptionsWindow::Control(int id) const {
  if (const HWND own = GetDlgItem(window_, id)) return own;
  for (HWND child = GetWindow(window_, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    if (IsWindowVisible(child) && IsOfClass(child, L"#32770")) return GetDlgItem(child, id);
  }
  return nullptr;
}

void OptionsWindow::Choose(int id, int row) const {
  const HWND box = Control(id);
  AwaitInput(box);
  SendMessageW(box, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
  SendMessageW(GetParent(box), WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE),
               reinterpret_cast<LPARAM>(box));
}

void OptionsWindow::SelectRow(int id, int row) const {
  const HWND list = Control(id);
  for (int i = 0; i <= row; ++i) {
    program_.PressKey(list, i == 0 ? VK_HOME : VK_DOWN);
    Await([&] {
      return SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED) == i;
    });
  }
}

bool OptionsWindow::PressAndClose(int id) const {
  Press(Control(id));
  return Await([this] { return !IsOpen(); });
}

bool OptionsWindow::PressAndRead(int id, const std::wstring& part) const {
  Press(Control(id));
  return program_.Answer(part, IDOK);
}

}  // namespace quellix::test
