#pragma once

#include <utility>

#include "platform/machine.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/status_view.h"
#include "ui/user_runs.h"

namespace quellix {

// Cleans for other users of this Windows, one after the other. For administrators.
class FrmUsers : public OwnedWindow {
 public:
  // `engine`: that of the main window, by whose ticks is cleaned.
  FrmUsers(Engine& engine, const Machine& machine, OtherUsers here)
      : engine_(engine), machine_(machine), runs_(machine, display_, std::move(here)) {}

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvUsers); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "users"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnClose() override;
  HBRUSH OnControlColor(HDC target, HWND control) override;

 private:
  bool Work(const std::string& status, void (UserRuns::*work)(const Pause& pause));
  void Look();
  void Clean();
  void ShowTicks();

  Engine& engine_;
  Machine machine_;
  StatusView display_;
  UserRuns runs_;
  ListView users_, found_;
  LongWork work_{*this};
};

}  // namespace quellix
