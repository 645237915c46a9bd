#pragma once

#include <string>

#include "platform/pause.h"
#include "run/views.h"
#include "ui/windows_api.h"

namespace quellix {

// Shows a run in a window that has no more for it than lblStatus. Calls are cheap: the window
// follows when it is flushed.
class StatusView : public RunView {
 public:
  void Attach(HWND window);
  // What runs breathe by from now on.
  void BreatheBy(const Pause& pause) { pause_ = pause; }
  // Brings the window up to date.
  void Flush();

  bool Breathe() override { return pause_(); }
  void SetStatus(std::string_view text) override { status_.assign(text); }
  void SetProgress(const ProgressBar&) override {}
  void SetCommands(const Commands&) override {}
  void ShowCurrentItem(const Item*) override {}
  void ShowLastCleaned(std::string_view) override {}
  void ShowCritical(std::string_view text) override;
  bool AskToGoOn(std::string_view question) override;
  void ShowReport(const RunReport&) override {}

 private:
  HWND window_ = nullptr;
  std::string status_, shown_;
  Pause pause_;
};

}  // namespace quellix
