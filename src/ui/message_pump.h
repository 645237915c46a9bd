#pragma once

#include "ui/windows_api.h"

namespace quellix {

// Lets the interface thread handle its messages in the middle of work, some fifty times a second,
// and what it shows follow some twenty times.
class MessagePump {
 public:
  // As long as it is not time for anything this costs next to nothing: it is called for every file.
  // `show` is called when it is time to bring the window up to date, before messages are handled.
  template <typename Show>
  void Breathe(const Show& show) {
    const ULONGLONG now = GetTickCount64();
    if (now - handled_at_ < kMillisecondsPerLook) return;
    if (now - shown_at_ >= kMillisecondsPerFrame) {
      shown_at_ = now;
      show();
    }
    HandleMessages();
    handled_at_ = GetTickCount64();
  }

 private:
  static constexpr ULONGLONG kMillisecondsPerLook = 20, kMillisecondsPerFrame = 50;

  static void HandleMessages();

  ULONGLONG handled_at_ = 0, shown_at_ = 0;  // milliseconds, of the tick count
};

}  // namespace quellix
