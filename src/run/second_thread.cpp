#include "run/second_thread.h"

#include <system_error>

namespace quellix {

SecondThread::~SecondThread() {
  if (!thread_.joinable()) return;
  next_ = count_.load();
  {
    const std::lock_guard held(lock_);
    stage_ = Stage::kEnding;
  }
  changed_.notify_all();
  thread_.join();
}

void SecondThread::Start() {
  if (thread_.joinable() || is_alone_) return;
  try {
    thread_ = std::thread([this] { Serve(); });
  } catch (const std::system_error&) {
    is_alone_ = true;
  }
}

void SecondThread::Work() {
  for (size_t number = next_++; number < count_; number = next_++) work_(number);
}

void SecondThread::Serve() {
  std::unique_lock held(lock_);
  while (true) {
    changed_.wait(held, [this] { return stage_ == Stage::kOffered || stage_ == Stage::kEnding; });
    if (stage_ == Stage::kEnding) return;
    stage_ = Stage::kTaken;
    held.unlock();
    Work();
    held.lock();
    if (stage_ == Stage::kEnding) return;
    stage_ = Stage::kIdle;
    changed_.notify_all();
  }
}

void SecondThread::Begin(size_t count) {
  Start();
  {
    const std::lock_guard held(lock_);
    next_ = 0;
    count_ = count;
    if (!is_alone_) stage_ = Stage::kOffered;
  }
  changed_.notify_all();
}

// What the thread has not even taken is not waited for.
void SecondThread::Finish() {
  Work();
  std::unique_lock held(lock_);
  if (stage_ == Stage::kOffered) stage_ = Stage::kIdle;
  changed_.wait(held, [this] { return stage_ == Stage::kIdle; });
}

}  // namespace quellix
