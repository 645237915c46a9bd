#pragma once

#include <iostream>
#include <string>

#include "run/views.h"

namespace quellix {

// Shows a run on the console: its log on `out`, failures on standard error. Ctrl-C asks for a stop
// at the run's next pause.
class ConsoleView : public RunView {
 public:
  explicit ConsoleView(std::ostream& out = std::cout);
  ~ConsoleView() override;

  bool Breathe() override;
  void SetStatus(std::string_view text) override { status_ = text; }
  void SetProgress(const ProgressBar&) override {}
  void SetCommands(const Commands&) override {}
  void ShowCurrentItem(const Item*) override {}
  void ShowLastCleaned(std::string_view) override {}
  void ShowCritical(std::string_view text) override;
  bool AskToGoOn(std::string_view question) override;
  void ShowReport(const RunReport& report) override;

  const std::string& status() const { return status_; }

 private:
  std::ostream& out_;
  std::string status_;
};

}  // namespace quellix
