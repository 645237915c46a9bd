#include "ui/control_text.h"

#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

void Fill(HWND control, UINT clear, UINT add, const std::vector<std::string>& texts) {
  SendMessageW(control, WM_SETREDRAW, FALSE, 0);
  SendMessageW(control, clear, 0, 0);
  for (const std::string& text : texts) {
    SendMessageW(control, add, 0, reinterpret_cast<LPARAM>(Wide(text).c_str()));
  }
  SendMessageW(control, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(control, nullptr, TRUE);
}

}  // namespace

std::string ControlText(HWND control) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
  text.resize(
      static_cast<size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
  return Narrow(text);
}

void ShowControlText(HWND control, std::string_view text) {
  if (ControlText(control) != text) SetWindowTextW(control, Wide(text).c_str());
}

void FillCombo(HWND combo, const std::vector<std::string>& texts) {
  Fill(combo, CB_RESETCONTENT, CB_ADDSTRING, texts);
}

void FillList(HWND list, const std::vector<std::string>& texts) {
  Fill(list, LB_RESETCONTENT, LB_ADDSTRING, texts);
}

bool IsTicked(HWND dialog, int box) { return IsDlgButtonChecked(dialog, box) == BST_CHECKED; }

// As Tab does, with the look of the default button.
void EnableWithFocus(HWND control, bool enabled, HWND other) {
  if (!control || (IsWindowEnabled(control) != FALSE) == enabled) return;
  if (!enabled && GetFocus() == control) {
    SendMessageW(GetParent(control), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(other), TRUE);
  }
  EnableWindow(control, enabled);
}

}  // namespace quellix
