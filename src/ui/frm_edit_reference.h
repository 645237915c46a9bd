#pragma once

#include <functional>

#include "registry_tools/registry_scan.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {

// The dialog that gives a reference another location: of an application path or a help file.
class FrmEditReference : public OwnedWindow {
 public:
  // `template_id` is frmEditAppPath or frmEditHelp. `scan` outlives the dialog; `closed` is called
  // when it has gone, whatever was done.
  void Show(int template_id, RegistryScan& scan, size_t row, HWND owner,
            std::function<void()> closed);

 protected:
  void OnInit() override;
  HWND FirstFocus() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return scan_->traits().name; }
  void OnClose() override;

 private:
  void Browse();
  void Save();

  RegistryScan* scan_ = nullptr;
  size_t row_ = 0;
  std::function<void()> closed_;
  WindowPrompts prompts_;
};

}  // namespace quellix
