#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/pause.h"
#include "run/time_left.h"
#include "run/views.h"
#include "search/results_view.h"
#include "ui/frm_deletetion.h"
#include "ui/windows_api.h"

namespace quellix {

// Shows a run in the main window. A run calls far more often than anyone can see, so calls only
// take notes; the window follows at every item and at the pace of the eye.
class RunDisplay : public RunView, public ResultsView {
 public:
  using ShowItem = std::function<void(const Item*)>;

  // The window to show in, and what moves its picture of the current item.
  void Attach(HWND window, ShowItem show_item);
  // What runs breathe by from now on.
  void BreatheBy(const Pause& pause) { pause_ = pause; }
  // Lets runs search for junk: its finds are reviewed in a window before the attached one.
  void ReviewFinds(const Machine& machine);
  // Brings the window up to date.
  void Flush();
  // The figures of the list in work, after so many milliseconds; and in their place, where the time
  // of the last run stands, what a stopped run has done.
  void ShowFigures(const Locale& locale, uint64_t milliseconds);
  void ShowStopped(std::string_view text);
  // The report of the last finished run, once.
  std::optional<RunReport> TakeReport();
  // Whether it is not to be shown now.
  bool is_kept_only() const { return is_kept_only_; }

  bool Breathe() override { return pause_(StepsOf(files_)); }
  void SetStatus(std::string_view text) override { status_.assign(text); }
  void SetProgress(const ProgressBar& bar) override { bar_ = bar; }
  void ShowFiles(const FileProgress& files) override { files_ = files; }
  void SetCommands(const Commands& commands) override { commands_ = commands; }
  void ShowCurrentItem(const Item* item) override;
  void ShowLastCleaned(std::string_view text) override { last_cleaned_.assign(text); }
  void ShowCritical(std::string_view text) override;
  bool AskToGoOn(std::string_view question) override;
  ProgramAnswer AskAboutProgram(const ProgramQuestion& question) override;
  void ShowReport(const RunReport& report) override {
    report_ = report;
    is_kept_only_ = false;
  }
  void KeepReport(const RunReport& report) override {
    report_ = report;
    is_kept_only_ = true;
  }
  bool OpenResults(SearchResults& results) override;
  void AwaitResults() override;

  // A box with Yes and No before `owner`; closing it is No.
  static bool AskBeforeRun(HWND owner, std::string_view question);

 private:
  void FlushText(int control, const std::string& text, std::string& shown) const;
  void FlushProgress();
  void ShowLine(std::string_view text);
  void FlushCommands();
  void EnableMenus(bool enable) const;

  // The window that boxes stand before.
  HWND Front() const;

  HWND window_ = nullptr;
  HWND pressed_ = nullptr;  // the button that the keyboard was on when the run began
  std::unique_ptr<FrmDeletetion> results_;  // null where no finds are reviewed
  ShowItem show_item_;
  std::string status_, shown_status_;
  std::string last_cleaned_, shown_last_cleaned_;
  ProgressBar bar_, shown_bar_;
  FileProgress files_;
  Commands commands_, shown_commands_;
  const Item* item_ = nullptr;
  const Item* shown_item_ = nullptr;
  std::optional<RunReport> report_;
  bool is_kept_only_ = false;
  Pause pause_;
};

}  // namespace quellix
