#pragma once

#include "app/free_space_drives.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {

// Overwrites what is free on drives.
class FrmWipeFree : public OwnedWindow {
 public:
  explicit FrmWipeFree(const Machine& machine) : machine_(machine), drives_(machine) {}

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvWipeFree); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "wipe-free"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnClose() override;

 private:
  Cell CellOf(int row, int column) const;
  void Wipe();
  void ShowProgress(const Progress& progress);

  Machine machine_;
  FreeSpaceDrives drives_;
  ListView list_;
  WindowPrompts prompts_;
  LongWork work_{*this};
};

}  // namespace quellix
