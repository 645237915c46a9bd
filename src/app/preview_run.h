#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/cleaning_run.h"
#include "app/selection.h"
#include "backup/preview_archive.h"
#include "platform/preview/preview_machine.h"
#include "run/context.h"
#include "run/views.h"
#include "settings/settings.h"

namespace quellix {

// A run that changes nothing: what a run would come by, and what would become of it.
class PreviewRun {
 public:
  // `view` shows where it is; it is never asked for anything but to breathe. The machine's ports
  // and `view` must outlive it.
  PreviewRun(const Machine& machine, RunView& view);

  // Returns when all is found, or stopped.
  void Run(const Selection& selection);
  void RunOneItem(const Item& item);
  void RunOthers(const OtherChoices& choices);
  // Work that is no item, such as plug-ins chosen by hand.
  void RunByHand(const std::function<void(CleaningContext&)>& work);

  // Grows while it runs.
  std::shared_ptr<const RunEntries> entries() const { return state_.Entries; }
  const RunState& state() const { return state_; }

 private:
  // Shows where the run is and keeps what it would tell.
  class QuietView : public RunView {
   public:
    explicit QuietView(RunView& view) : view_(view) {}
    bool Breathe() override { return view_.Breathe(); }
    void SetStatus(std::string_view text) override { view_.SetStatus(text); }
    void SetProgress(const ProgressBar& bar) override { view_.SetProgress(bar); }
    void ShowFiles(const FileProgress& files) override { view_.ShowFiles(files); }
    void SetCommands(const Commands& commands) override { view_.SetCommands(commands); }
    void ShowCurrentItem(const Item* item) override { view_.ShowCurrentItem(item); }
    void ShowLastCleaned(std::string_view) override {}
    void ShowCritical(std::string_view text) override { told.append(text).append("\r\n"); }
    bool AskToGoOn(std::string_view) override { return true; }
    void ShowReport(const RunReport&) override {}

    std::string told;

   private:
    RunView& view_;
  };

  PreviewMachine preview_;
  QuietView view_;
  Settings settings_;
  RunState state_;
  PreviewArchive archive_;
  CleaningContext context_;
};

// Whether it goes, or would, and cannot be had back. An empty folder is no loss.
bool GoesForGood(const RunEntry& entry);

// What to ask before a run that does what a preview found: "Delete 20,000 files (54.00 MB) for
// good?"; "" where nothing would be lost that cannot be had back. `is_ticked` tells of each index
// of `preview.all` that would be removed.
std::string QuestionBefore(const RunEntries& preview, const Locale& locale,
                           const std::function<bool(size_t index)>& is_ticked);

}  // namespace quellix
