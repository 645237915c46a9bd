#include "ui/long_work.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/words.h"
#include "run/time_left.h"
#include "ui/dialog.h"

namespace quellix {
namespace {

constexpr ULONGLONG kMillisecondsUnnoticed = 80;
constexpr ULONGLONG kMillisecondsUnsigned = 1000;  // what is over by then needs no sign elsewhere
constexpr int kBarSteps = 1000;

}  // namespace

void ShowSteps(HWND bar, const Progress& progress) {
  if (progress.total == 0) return;
  const double part = static_cast<double>(std::min(progress.done, progress.total)) /
                      static_cast<double>(progress.total);
  SendMessageW(bar, PBM_SETRANGE32, 0, kBarSteps);
  SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(part * kBarSteps), 0);
}

bool LongWork::IsThere() const { return handle_ != nullptr && window_.window() == handle_; }

LongWork::End LongWork::Run(Looks looks, const Work& work) {
  struct Ending {
    ~Ending() { self->Finish(); }
    LongWork* self;
  };
  looks_ = std::move(looks);
  handle_ = window_.window();
  working_ = true;
  stopping_ = closing_ = shown_ = false;
  progress_ = {};
  begun_at_ = worked_since_ = GetTickCount64();
  {
    const Ending ending{this};
    if (!looks_.often_short) Begin();
    work([this](const Progress& progress) { return Breathe(progress); });
  }
  if (!IsThere()) return End::kGone;
  return closing_ ? End::kCloses : End::kDone;
}

LongWork::End LongWork::Run(Looks looks, const Work& work, std::string& problem) {
  problem.clear();
  return Run(std::move(looks), [&](const Pause& pause) {
    try {
      work(pause);
    } catch (const Error& error) {
      problem = Shown(error);
    }
  });
}

// Nothing is handled before the window shows that it is at work: it might begin something else.
bool LongWork::Breathe(const Progress& progress) {
  if (!IsThere()) return true;
  if (!shown_) {
    if (GetTickCount64() - begun_at_ < kMillisecondsUnnoticed) return stopping_;
    Begin();
  }
  pump_.Breathe([&] { Show(progress); });
  return stopping_ || !IsThere();
}

void LongWork::Begin() {
  shown_ = true;
  focus_ = nullptr;
  enabled_.clear();
  if (looks_.bar != 0) {
    ShowSteps(window_.Control(looks_.bar), {.done = 0, .total = 1});
  }
  if (looks_.stop != 0) EnableWindow(window_.Control(looks_.stop), TRUE);
  for (const int id : looks_.idle) {
    const HWND control = window_.Control(id);
    if (control == nullptr) continue;
    enabled_.emplace_back(control, IsWindowEnabled(control) != FALSE);
    if (GetFocus() == control) focus_ = control;
    window_.EnableControl(id, false, looks_.stop != 0 ? looks_.stop : looks_.rest);
  }
}

void LongWork::Finish() {
  working_ = false;
  sign_.Clear();
  if (!shown_ || !IsThere()) return;
  if (looks_.bar != 0) ShowWindow(window_.Control(looks_.bar), SW_HIDE);
  for (const auto& [control, enabled] : enabled_) EnableWindow(control, enabled);
  const bool is_moved =
      GetFocus() == window_.Control(looks_.stop) || GetFocus() == window_.Control(looks_.rest);
  if (focus_ != nullptr && is_moved && IsWindowEnabled(focus_)) window_.FocusOn(focus_);
  if (looks_.stop != 0) window_.EnableControl(looks_.stop, false, looks_.rest);
}

// Another count begins anew, and so does its time.
void LongWork::Show(const Progress& progress) {
  if (progress.total != progress_.total || progress.done < progress_.done) {
    begun_at_ = GetTickCount64();
  }
  progress_ = {progress.done, progress.total, {}, progress.work};
  if (GetTickCount64() - worked_since_ > kMillisecondsUnsigned) sign_.Show(handle_, progress);
  if (looks_.bar != 0 && progress.total != 0) {
    ShowSteps(window_.Control(looks_.bar), progress);
    ShowWindow(window_.Control(looks_.bar), SW_SHOWNA);
  }
  if (looks_.show) looks_.show(progress);
}

std::string LongWork::TimeLeft() const {
  return TimeLeftText(progress_, GetTickCount64() - begun_at_);
}

}  // namespace quellix
