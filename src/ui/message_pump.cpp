#include "ui/message_pump.h"

#include "ui/dialog.h"

namespace quellix {
namespace {

// A held Enter that began the work must not go on to press Stop.
bool IsRepeatedPress(const MSG& message) {
  const bool presses = message.wParam == VK_RETURN || message.wParam == VK_SPACE;
  return message.message == WM_KEYDOWN && presses && (message.lParam & (1 << 30)) != 0;
}

}  // namespace

void MessagePump::HandleMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    if (!IsRepeatedPress(message)) Dialog::Dispatch(message);
  }
}

}  // namespace quellix
