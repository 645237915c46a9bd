#pragma once

#include <string>

#include "app/refusal.h"
#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {

// The open Options window, driven through its pages' controls.
class OptionsWindow {
 public:
  // Opens it by the main window's menu.
  explicit OptionsWindow(const QuellixWindow& program);

  HWND window() const { return window_; }
  bool IsOpen() const { return IsWindow(window_) != FALSE; }
  void GoTo(OptionsPage page) const;
  OptionsPage Page() const;
  // A control of the window or of the page that is shown; null when it has none of that number.
  HWND Control(int id) const;
  bool IsChecked(int id) const { return SendMessageW(Control(id), BM_GETCHECK, 0, 0) != 0; }
  bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
  void Click(int id) const {
    const HWND control = Control(id);
    AwaitInput(control);
    SendMessageW(control, BM_CLICK, 0, 0);
  }
  void Type(int id, const std::wstring& text) const {
    SendMessageW(Control(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  // Chooses a row of a combo box as its user does.
  void Choose(int id, int row) const;
  // Selects one row of a list by the keys, or all.
  void SelectRow(int id, int row) const;
  int CountRows(int id) const {
    return static_cast<int>(SendMessageW(Control(id), LVM_GETITEMCOUNT, 0, 0));
  }
  // Presses OK, Cancel or Apply; true when the window then closes.
  bool PressAndClose(int id) const;
  // Presses something that is answered by a message with such a text, and answers that message.
  bool PressAndRead(int id, const std::wstring& part) const;

 private:
  const QuellixWindow& program_;
  HWND window_;
};

}  // namespace quellix::test
