#include "ui/owned_window.h"

namespace quellix {

void OwnedWindow::Open(int template_id, HWND owner) {
  Close();
  owner_ = owner;
  Create(template_id, owner);
  EnableWindow(owner, FALSE);
  ShowWindow(window(), SW_SHOW);
}

// The owner comes back to life first, or Windows would hand the focus to another program.
void OwnedWindow::OnClose() {
  EnableOwner();
  Close();
}

void OwnedWindow::OnDestroyed() { EnableOwner(); }

void OwnedWindow::EnableOwner() const {
  if (owner_) EnableWindow(owner_, TRUE);
}

}  // namespace quellix
