#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ui/options_page.h"
#include "ui/owned_window.h"
#include "ui/window_prompts.h"

namespace quellix {

// The Options window: a list of pages beside the one that is chosen. What is changed there reaches
// the disk with OK or Apply, all pages at once.
class FrmOptions : public OwnedWindow {
 public:
  FrmOptions(const Machine& machine, Scheduler& scheduler)
      : machine_(machine),
        schedule_(scheduler, machine.installed_folder + "\\quellix.exe", machine.session.UserId()) {
  }

  // Called after each OK and Apply, when the files are written.
  std::function<void()> on_accepted;
  std::function<void(HWND owner)> show_backups;

  // With the page that is asked for, or the one that was shown last.
  void Show(HWND owner, std::optional<OptionsPage> page = {});

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstPages); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "options"; }

 private:
  void MakePages();
  void RequireRoom();
  void ChoosePage(int page);
  bool FindUnfinished();
  bool Check();
  bool Accept();

  Machine machine_;
  ScheduledCleaning schedule_;
  WindowPrompts prompts_;
  std::optional<Options> options_;
  std::optional<OptionsContext> context_;
  std::vector<std::unique_ptr<OptionsPageWindow>> pages_;  // by OptionsPage
  int page_ = 0;                                           // kept for the next time
};

}  // namespace quellix
