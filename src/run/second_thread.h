#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>

namespace quellix {

// A second pair of hands for work in many equal pieces: a thread that is made when it is first
// needed and ends with this object.
class SecondThread {
 public:
  // `work` is called with the numbers of pieces, on either thread; it must not throw.
  explicit SecondThread(std::function<void(size_t)> work) : work_(std::move(work)) {}
  // Pieces that nobody has begun are left undone.
  ~SecondThread();
  SecondThread(const SecondThread&) = delete;
  SecondThread& operator=(const SecondThread&) = delete;

  // Gives it the pieces below `count`, each to be done once. What was begun before must be
  // finished.
  void Begin(size_t count);
  // Helps, and returns when every piece is done. Where no thread can be made, all is done here.
  void Finish();

 private:
  enum class Stage { kIdle, kOffered, kTaken, kEnding };

  void Start();
  void Serve();
  void Work();

  const std::function<void(size_t)> work_;
  std::mutex lock_;
  std::condition_variable changed_;
  Stage stage_ = Stage::kIdle;
  std::atomic<size_t> next_{0};
  std::atomic<size_t> count_{0};
  bool is_alone_ = false;  // no thread could be made
  std::thread thread_;
};

}  // namespace quellix
