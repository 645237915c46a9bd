#pragma once

#include <string>

#include "run/views.h"
#include "ui/windows_api.h"

namespace quellix {

// Shows a run in a window that has no more for it than lblStatus and cmdStop. Calls are cheap; the
// window follows at the pace of the eye.
class StatusView : public RunView {
 public:
  void Attach(HWND window);
  // Brings the window up to date.
  void Flush();

  void Yield() override;
  void SetStatus(std::string_view text) override { status_.assign(text); }
  void SetProgress(const ProgressBar&) override {}
  void SetCommands(const Commands& commands) override;
  void ShowCurrentItem(const Item*) override {}
  void ShowLastCleaned(std::string_view) override {}
  void ShowCritical(std::string_view text) override;
  bool AskToGoOn(std::string_view question) override;
  void ShowReport(const RunReport&) override {}

 private:
  HWND window_ = nullptr;
  std::string status_, shown_;
  ULONGLONG flushed_at_ = 0;  // milliseconds, of the tick count
};

}  // namespace quellix
