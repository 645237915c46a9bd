#include "ui/status_view.h"

#include "platform/win32/win32_text.h"
#include "ui/resource.h"
#include "ui/run_display.h"
#include "ui/window_prompts.h"

namespace quellix {

void StatusView::Attach(HWND window) {
  window_ = window;
  status_.clear();
  shown_.clear();
}

void StatusView::Flush() {
  if (status_ == shown_) return;
  SetDlgItemTextW(window_, lblStatus, Wide(status_).c_str());
  shown_ = status_;
}

void StatusView::ShowCritical(std::string_view text) {
  Flush();
  ShowBox(window_, text, MB_OK | MB_ICONERROR);
}

bool StatusView::AskToGoOn(std::string_view question) {
  Flush();
  return RunDisplay::AskBeforeRun(window_, question);
}

}  // namespace quellix
