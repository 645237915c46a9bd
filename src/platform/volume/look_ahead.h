#pragma once

#include <atomic>
#include <optional>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/volume/volume_drive.h"

namespace quellix {

// Looks at files that will soon be asked for, on a thread of its own, and is never far ahead of
// whoever asks. Follows no link below the folder and enters no other disk. What it cannot tell is
// left to who asks; what it tells was so a moment ago.
class LookAhead {
 public:
  // Files below an open folder, as FilesBelow.
  struct Part {
    int folder;
    std::span<const std::string_view> paths;
    size_t start;
    size_t before = 0;  // how many there are in the parts before
  };

  // In the order in which they will be asked for; folders and paths must outlast
  // the object.
  explicit LookAhead(std::vector<Part> parts);
  ~LookAhead() { End(); }

  // What was seen of a file in the folder `id`; nothing when it is not known or not its turn.
  std::optional<Seen> Take(const FileId& id, std::string_view name);
  // Nothing is known any more.
  void End();

 private:
  static constexpr size_t kMostAhead = 8192;
  struct Slot {
    std::atomic<size_t> number{0};  // of the path that is seen here, from 1 on
    FileId folder;
    Seen seen;
  };
  struct Place;

  void Run();
  void LookAt(size_t number, Place& place);
  const Part& PartOf(size_t number) const;
  std::string_view NameOf(size_t number) const;
  bool Advance(size_t& number);
  void MoveOnTo(size_t number);
  bool IsIn(size_t number, const FileId& id, std::string_view name) const;

  const std::vector<Part> parts_;
  const size_t count_;  // of all their files
  std::vector<Slot> slots_;
  std::atomic<size_t> behind_{0};  // how many paths who asks has left behind
  size_t misses_ = 0;              // in a row
  std::thread thread_;             // the last, because it uses all the others
};

}  // namespace quellix
