#pragma once

#include "app/updates.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/window_prompts.h"

namespace quellix {

// Tells whether there is a new version, and fetches and starts its installer.
class FrmUpdate : public OwnedWindow {
 public:
  explicit FrmUpdate(const Machine& machine) : machine_(machine) {}

  // Asks the server as soon as the window is seen.
  void Show(HWND owner);
  // What was found out already.
  void Show(HWND owner, const UpdateCheck& check);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(IDCANCEL); }
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "updates"; }
  HBRUSH OnControlColor(HDC target, HWND control) override;
  void OnTimer(UINT_PTR id) override;
  void OnClose() override;
  void OnDestroyed() override;

 private:
  bool Work(const std::string& status, const LongWork::Work& work);
  void Ask();
  void Install();
  void Start(const std::string& bytes);
  void ShowResult();

  Machine machine_;
  UpdateSource source_;
  UpdateCheck check_;
  WindowPrompts prompts_;
  LongWork work_{*this};
};

}  // namespace quellix
