#pragma once

#include "ui/options_page.h"

namespace quellix {

class OptionsSearchPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsSearch, owner); }

 protected:
  void Fill() override;
  void OnSized() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-search"; }
  LRESULT OnNotify(NMHDR& header) override;

 private:
  bool Take(int id, int code);
  void ShowDate(int id, const std::optional<LocalTime>& date) const;
  void EnableFields() const;

  ListView drives_;
};

}  // namespace quellix
