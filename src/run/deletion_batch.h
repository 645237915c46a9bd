#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "run/context.h"
#include "run/second_thread.h"
#include "run/working_folder.h"

namespace quellix {

// Deletes the files of a list, where the machine lets several go at a time, by two threads: while
// this one looks after the next files, the other removes those before. What becomes of each is
// noted in the list's order, and what is not so simple goes alone.
class DeletionBatch {
 public:
  // Removes one file with all that belongs to it, and notes it.
  using Alone = std::function<void(std::string_view path)>;

  DeletionBatch(CleaningContext& context, WorkingFolder& working, Alone alone)
      : context_(context), working_(working), alone_(std::move(alone)) {}

  // `path` must last until Finish. What is precious or kept is noted as stayed. False when the file
  // went alone and all others should: this machine takes one after the other.
  bool Add(std::string_view path);
  // Returns when everything that was added is gone or noted as stayed.
  void Finish();
  // The user has stopped: what the other thread has been given already, at most 512, goes and is
  // told; the rest stays, untouched and untold.
  void Stop();

 private:
  struct File {
    std::shared_ptr<Folder> folder;
    std::string_view path;
    FileInfo seen = {};
    bool is_gone = false;
  };
  static constexpr size_t kFewest = 32, kMost = 512;
  static constexpr size_t kMostFolders = 64;  // held open at a time, twice

  static void TakeAway(File& file) noexcept;
  void Put(std::string_view path);
  void HandOn();
  void Settle();

  CleaningContext& context_;
  WorkingFolder& working_;
  Alone alone_;
  std::vector<File> filling_, begun_;
  size_t folders_ = 0;  // in filling_
  size_t most_ = kFewest;
  std::optional<bool> goes_together_;  // once a file has shown it
  std::chrono::steady_clock::time_point begun_at_;
  // The last, because its thread uses the others.
  SecondThread second_{[this](size_t number) { TakeAway(begun_[number]); }};
};

}  // namespace quellix
