#pragma once

#include "ui/dialog.h"

namespace quellix {

// A window whose owner is disabled while it is open, so that nothing starts behind it. A window
// that derives from it and overrides OnClose or OnDestroyed calls these in the end.
class OwnedWindow : public Dialog {
 public:
  bool IsOpen() const { return window() != nullptr; }

 protected:
  // Makes and shows the window.
  void Open(int template_id, HWND owner);
  void OnClose() override;
  void OnDestroyed() override;

 private:
  void EnableOwner() const;

  HWND owner_ = nullptr;
};

}  // namespace quellix
