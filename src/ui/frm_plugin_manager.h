#pragma once

#include "plugins/plugin_manager.h"
#include "ui/frm_plugin.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/status_view.h"
#include "ui/window_prompts.h"

namespace quellix {

class Engine;

// The plug-in manager's window. Closing it saves the list.
class FrmPluginManager : public OwnedWindow {
 public:
  FrmPluginManager(Engine& engine, const Machine& machine);

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvPlugin); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "plugins"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnClose() override;
  void OnEndSession() override { manager_.Save(); }

 private:
  void OnListNotify(const NMHDR& header);
  std::string TextOf(size_t row, int column);
  void ShowRows();
  void ShowAdded();
  void EnableCommands();
  void TickAll(bool ticked);
  void Edit();
  LongWork::End Work(const std::function<void()>& work);
  void Process();

  Engine& engine_;
  Machine machine_;
  WindowPrompts prompts_;
  modPlugin::PluginManager manager_;
  FrmPlugin editor_;
  ListView list_;
  StatusView display_;  // of its own runs
  LongWork work_{*this};
};

}  // namespace quellix
