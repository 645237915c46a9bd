#pragma once

#include "platform/machine.h"
#include "ui/owned_window.h"
#include "ui/resource.h"

namespace quellix {

// What this program is, and the licences of what is in it.
class FrmAbout : public OwnedWindow {
 public:
  explicit FrmAbout(const Machine& machine) : own_folder_(machine.program_folder) {}

  void Show(HWND owner) { Open(frmAbout, owner); }

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(IDCANCEL); }
  void OnResolution() override;
  void OnDrawItem(const DRAWITEMSTRUCT& item) override;
  void OnCommand(int id, int code) override;
  HBRUSH OnControlColor(HDC target, HWND control) override {
    return control == Control(txtLicences) ? Paper(target) : nullptr;
  }
  const char* HelpTopic() const override { return "about"; }

 private:
  const std::string own_folder_;
  UniqueIcon picture_;
};

}  // namespace quellix
