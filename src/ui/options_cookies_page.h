#pragma once

#include "ui/options_page.h"

namespace quellix {

// The cookies on the machine beside those to keep.
class OptionsCookiesPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsCookies, owner); }

 protected:
  void Fill() override;
  void OnSized() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-cookies"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;

 private:
  void Attach(ListView& view, int id, const std::vector<std::string>& cookies);
  void ShowCookies();
  void EnableCommands();
  void Move(int command);

  ListView on_machine_, kept_;
};

}  // namespace quellix
