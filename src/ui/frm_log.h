#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"
#include "run/views.h"
#include "ui/dialog.h"
#include "ui/entry_view.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/window_prompts.h"

namespace quellix {

// The log window: what the last run did, and the runs before it that are kept.
class FrmLog : public Dialog {
 public:
  explicit FrmLog(const Machine& machine) : machine_(machine), entries_(machine) {}

  // Opens the window, or shows another report in it.
  void Show(HWND owner, const RunReport& report);

 protected:
  void OnInit() override;
  HWND FirstFocus() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  void OnContextMenu(HWND control, POINT screen) override;
  const char* HelpTopic() const override { return "log"; }
  LRESULT OnNotify(NMHDR& header) override;
  HBRUSH OnControlColor(HDC target, HWND control) override;
  void OnClose() override { work_.working() ? work_.StopAndClose() : Close(); }

 private:
  Cell CategoryCell(int row, int column) const;
  void ShowReport();
  void FillRuns();
  void ChooseRun();
  void Save() const;
  void Undo();
  std::string TextOf(size_t form) const;
  void Tell(const std::string& sentence) const;

  Machine machine_;
  RunReport last_, report_;  // of the run that was shown first, and as shown now
  std::vector<std::string> runs_;
  ListView categories_;
  EntryView entries_;
  WindowPrompts prompts_;
  LongWork work_{*this};
};

}  // namespace quellix
