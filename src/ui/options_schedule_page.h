#pragma once

#include "app/schedule.h"
#include "ui/options_page.h"

namespace quellix {

// When the system's task scheduler cleans. The scheduler keeps that, not Settings.ini: it is read
// when the page is first seen, and stored when the options are accepted.
class OptionsSchedulePage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsSchedule, owner); }
  void Reveal(bool visible) override;
  std::string Store() override;

 protected:
  void Fill() override;
  void OnControl(int id, int code) override;
  LRESULT OnNotify(NMHDR& header) override;
  const char* HelpTopic() const override { return "options-schedule"; }

 private:
  void Look();
  void ShowSchedule(const Schedule& schedule);
  Schedule Chosen() const;
  void EnableFields() const;

  bool is_read_ = false, is_changed_ = false;
};

}  // namespace quellix
