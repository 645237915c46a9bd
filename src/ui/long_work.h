#pragma once

#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/pause.h"
#include "ui/message_pump.h"
#include "ui/progress_sign.h"

namespace quellix {

class Dialog;

// Brings a progress bar to where the work is.
void ShowSteps(HWND bar, const Progress& progress);

// The long work of a window, on the interface thread, one at a time. The window answers meanwhile:
// it can be moved, stopped and closed, but nothing else can be begun in it.
class LongWork {
 public:
  using Work = std::function<void(const Pause& pause)>;

  // What the window shows while it works. The controls are those of the window, 0 for none.
  struct Looks {
    std::span<const int> idle = {};  // cannot be used
    int stop = 0;                    // can be used only then
    int rest = 0;                    // takes the keyboard where no other control can
    int bar = 0;                     // shown where the work tells how far it is
    // Called some twenty times a second.
    std::function<void(const Progress&)> show = {};
    // The work is over at once most times: nothing is shown, and nothing answers, before it is
    // noticed that it is not.
    bool often_short = false;
  };

  enum class End {
    kDone,    // also when it was stopped
    kCloses,  // the window is to close now
    kGone     // there is no window any more
  };

  explicit LongWork(Dialog& window) : window_(window) {}
  LongWork(const LongWork&) = delete;
  LongWork& operator=(const LongWork&) = delete;

  // Returns when the work has returned, and passes on what it throws. The controls are then as they
  // were.
  End Run(Looks looks, const Work& work);
  // The same of work whose failure is told: `problem` is then its sentence, else "".
  End Run(Looks looks, const Work& work, std::string& problem);

  bool working() const { return working_; }
  // Both take effect at the next pause, and are without effect while nothing is in work.
  void Stop() { stopping_ = true; }
  void StopAndClose() { stopping_ = closing_ = true; }
  // "about 2 minutes left", "" while nobody knows; of the work that runs.
  std::string TimeLeft() const;
  // Since what is counted began, in milliseconds.
  uint64_t Elapsed() const { return GetTickCount64() - begun_at_; }

 private:
  bool Breathe(const Progress& progress);
  void Begin();
  void Finish();
  void Show(const Progress& progress);
  bool IsThere() const;

  Dialog& window_;
  HWND handle_ = nullptr;  // of the window that works
  MessagePump pump_;
  ProgressSign sign_;
  Looks looks_;
  Progress progress_;  // as shown last, without its path
  bool working_ = false, stopping_ = false, closing_ = false, shown_ = false;
  std::vector<std::pair<HWND, bool>> enabled_;  // the idle controls before
  HWND focus_ = nullptr;                        // where the keyboard was, if it was moved
  // Milliseconds, of the tick count: what is counted now, and the work.
  ULONGLONG begun_at_ = 0, worked_since_ = 0;
};

}  // namespace quellix
