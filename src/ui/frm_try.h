#pragma once

#include <optional>

#include "plugins/plugin_trial.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/status_view.h"

namespace quellix {

// Shows what a recipe would remove now; removes nothing.
class FrmTry : public OwnedWindow {
 public:
  explicit FrmTry(const Machine& machine) : machine_(machine) {}

  // Returns when the list is complete or the user has stopped or closed it.
  void Show(HWND owner, const modPlugin::Plugin& plugin);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvTry); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "plugin-editor"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnClose() override;
  HBRUSH OnControlColor(HDC target, HWND control) override;

 private:
  Machine machine_;
  std::optional<modPlugin::PluginTrial> trial_;
  ListView list_;
  StatusView display_;
  LongWork work_{*this};
};

}  // namespace quellix
