#pragma once

#include <functional>
#include <memory>

#include "app/run_question.h"
#include "platform/machine.h"
#include "run/run_choice.h"
#include "run/run_entries.h"
#include "ui/entry_view.h"
#include "ui/owned_window.h"

namespace quellix {

// What a run would remove, entry by entry: what is unticked stays.
class FrmPreview : public OwnedWindow {
 public:
  explicit FrmPreview(const Machine& machine) : machine_(machine), entries_(machine) {}

  // Called when the window has closed to clean what is ticked, and whether the further choice of
  // the question was taken.
  std::function<void(std::shared_ptr<RunChoice> choice, bool further)> on_clean;
  // What to ask before that.
  std::function<RunQuestion(const EntryList& list)> question_of;

  void Show(HWND owner, std::shared_ptr<const RunEntries> found);

 protected:
  void OnInit() override;
  HWND FirstFocus() override;
  void OnResolution() override { entries_.OnResolution(dpi()); }
  void OnCommand(int id, int code) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  bool OnKey(MSG& message) override;
  const char* HelpTopic() const override { return "preview"; }

 private:
  void TickAll(bool ticked);
  void Clean();

  Machine machine_;
  std::shared_ptr<const RunEntries> found_;
  EntryView entries_;
};

}  // namespace quellix
