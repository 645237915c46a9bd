#pragma once

#include <chrono>
#include <iostream>
#include <string>

#include "run/run_state.h"
#include "run/views.h"

namespace quellix {

// Shows a run on the console: its log on `out`, failures on standard error, and there, where that
// is a terminal, how far it is. Ctrl-C asks for a stop at the run's next pause.
class ConsoleView : public RunView {
 public:
  explicit ConsoleView(std::ostream& out = std::cout);
  ~ConsoleView() override;

  // Whether standard error is a terminal; for all views.
  static void ShowProgress(bool shows) { shows_progress_ = shows; }
  // Whether somebody sits at a terminal who can be asked; for all views.
  static void Asks(bool asks) { asks_ = asks; }
  static bool asks() { return asks_; }
  // Whether what is cleaned is another user's than who runs this; for all views.
  static void WorksForAnother(bool works) { works_for_another_ = works; }
  static bool works_for_another() { return works_for_another_; }
  // Whether Ctrl-C was pressed while the last view was there.
  static bool WasInterrupted();
  // The run whose totals are told meanwhile; it must outlive this.
  void Follow(const RunState& run) { run_ = &run; }

  bool Breathe() override;
  void SetStatus(std::string_view text) override { status_ = text; }
  void SetProgress(const ProgressBar& bar) override { bar_ = bar; }
  void SetCommands(const Commands&) override {}
  void ShowCurrentItem(const Item*) override {}
  void ShowLastCleaned(std::string_view) override {}
  void ShowCritical(std::string_view text) override;
  bool AskToGoOn(std::string_view question) override;
  // Whoever does not answer skips.
  ProgramAnswer AskAboutProgram(const ProgramQuestion& question) override;
  void ShowReport(const RunReport& report) override;

  const std::string& status() const { return status_; }

 private:
  using Clock = std::chrono::steady_clock;

  void ShowLine();
  void ClearLine();

  inline static bool shows_progress_ = false, asks_ = false, works_for_another_ = false;
  std::ostream& out_;
  std::string status_;
  const RunState* run_ = nullptr;
  ProgressBar bar_;
  Clock::time_point begun_ = Clock::now(), shown_ = begun_;
  size_t line_ = 0;  // characters that are shown
};

}  // namespace quellix
