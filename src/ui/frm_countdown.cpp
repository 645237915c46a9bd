#include "ui/frm_countdown.h"

#include "platform/words.h"
#include "ui/long_work.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr int kSeconds = 30;
constexpr UINT_PTR kTimer = 1;

}  // namespace

void FrmCountdown::Show(HWND owner, std::string_view what, std::function<void()> end) {
  what_ = what;
  end_ = std::move(end);
  seconds_ = kSeconds;
  Open(frmCountdown, owner);
  SetForegroundWindow(window());
}

void FrmCountdown::OnInit() {
  ShowSeconds();
  SetTimer(window(), kTimer, 1000, nullptr);
}

void FrmCountdown::ShowSeconds() const {
  // TRANSLATORS: %1 is what happens then: "The computer is turned off".
  SetText(lblCountdown, TrN("%1 in %2 second.", "%1 in %2 seconds.",
                            static_cast<uint64_t>(seconds_), what_, std::to_string(seconds_)));
  ShowSteps(Control(pgCountdown),
            {.done = static_cast<uint64_t>(kSeconds - seconds_), .total = kSeconds});
}

void FrmCountdown::OnTimer(UINT_PTR) {
  if (--seconds_ <= 0) return End();
  ShowSeconds();
}

void FrmCountdown::End() {
  const std::function<void()> end = std::move(end_);
  OnClose();
  end();
}

void FrmCountdown::OnCommand(int id, int /*code*/) {
  if (id == cmdNow) End();
  if (id == IDCANCEL) OnClose();
}

}  // namespace quellix
