#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/volume/volume_drive.h"

namespace quellix {

// Looks at files that will soon be asked for, on a thread of its own, and is never far ahead of
// whoever asks. Follows no link below the folders and enters no other disk. What it cannot tell is
// left to who asks; what it tells was so a moment ago. Everything but its own thread's work is
// called by one thread alone.
class LookAhead : public std::enable_shared_from_this<LookAhead> {
 public:
  // Files below an open folder, as FilesBelow.
  struct Files {
    int folder;
    std::span<const std::string_view> paths;
    size_t start;
  };

  LookAhead() = default;
  ~LookAhead();

  // In the order in which they will be asked for, behind those that are expected already; they are
  // until the returned object goes, which folders and paths must outlast. Null where there may be
  // no further thread.
  std::shared_ptr<LookAhead> Expect(std::span<const Files> files);
  // What was seen of a file in the folder `id`; nothing when it is not known or not its turn.
  std::optional<Seen> Take(const FileId& id, std::string_view name);

 private:
  static constexpr size_t kMostAhead = 8192;
  // Files are numbered from 1 on, in the order in which they were expected.
  struct Part : Files {
    size_t before;  // the number of the last one in the parts before
    size_t last() const { return before + paths.size(); }
  };
  struct Slot {
    std::atomic<size_t> number{0};  // of the file that is seen here
    FileId folder;
    Seen seen;
  };
  struct Place;

  bool Start();
  void Forget(size_t last);
  void MoveOnTo(size_t number);
  bool IsIn(size_t number, const FileId& id, std::string_view name) const;
  const Part& PartOf(size_t number) const;

  void Run();
  bool Advance(size_t& number) const;
  void Enter(size_t number, Place& place);
  void LookAt(size_t number, Place& place);
  void Wake();

  std::mutex mutex_;  // of parts_, where the thread reads and the other writes
  std::deque<Part> parts_;
  std::vector<Slot> slots_;
  std::atomic<size_t> count_{0};   // of all files that were ever expected
  std::atomic<size_t> behind_{0};  // how many of them who asks has left behind
  std::atomic<size_t> lead_{1};    // how far ahead the thread begins
  std::atomic<size_t> at_{0};      // the number that the thread looks at; 0 for none
  std::atomic<uint32_t> news_{0};  // changes when a thread that waits may go on
  std::atomic<bool> is_ending_{false};
  size_t misses_ = 0;  // in a row
  std::thread thread_;
};

}  // namespace quellix
