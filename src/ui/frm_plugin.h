#pragma once

#include <array>
#include <functional>
#include <string>

#include "plugins/plugin_editor.h"
#include "ui/frm_keygen.h"
#include "ui/frm_try.h"
#include "ui/owned_window.h"
#include "ui/plugin_pages.h"
#include "ui/window_prompts.h"

namespace quellix {

// The plug-in editor's window: a description and four pages of records.
class FrmPlugin : public OwnedWindow {
 public:
  // `on_saved` is called when the manager's list has changed.
  FrmPlugin(const Machine& machine, modPlugin::PluginManager& manager,
            std::function<void()> on_saved);

  void Create(HWND owner);
  void Edit(HWND owner, const std::string& file);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(txtDescription); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "plugin-editor"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  bool OnKey(MSG& message) override;
  void OnClose() override;

 private:
  std::array<PluginPage*, 4> Pages() { return {&files_, &registry_, &ini_, &further_}; }
  void OnEnter();
  void ShowPage();
  void ShowTitle();
  void Save();

  Machine machine_;
  std::function<void()> on_saved_;
  WindowPrompts prompts_;
  modPlugin::PluginEditor editor_;
  PluginFilesPage files_;
  PluginRegistryPage registry_;
  PluginIniPage ini_;
  PluginFurtherPage further_;
  FrmTry try_;
};

}  // namespace quellix
