#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// In which folders a restore, or another work, makes temporary files, noted in a temporary file of
// its own: after a kill the next start knows where to look. Where it cannot be made, nothing is
// noted. No function throws.
class RestoreNotes {
 public:
  RestoreNotes(FileSystem& files, std::string_view folder) : files_(files), folder_(folder) {}
  ~RestoreNotes();
  RestoreNotes(const RestoreNotes&) = delete;
  RestoreNotes& operator=(const RestoreNotes&) = delete;

  void Add(std::string_view path);
  // What was made there could not be removed: the note stays for the next start.
  void Leave() { name_.clear(); }
  // Whether a kill's next start would know.
  bool IsKept() const { return file_ != nullptr; }

 private:
  void Begin();

  FileSystem& files_;
  const std::string folder_;
  bool is_begun_ = false;
  std::unique_ptr<Folder> open_;
  std::string name_;
  std::unique_ptr<RandomFile> file_;  // held, so that nobody takes it for a leftover
  uint64_t size_ = 0;
};

// Whether a folder that was made for temporary files alone, as what fills a drive to wipe what is
// free on it, is noted in `folder` by somebody who is still at work and lies on the drive of `root`
// ("C:\") now. Never throws.
bool HasFiller(FileSystem& files, const std::string& folder, std::string_view root);

// Removes the temporary files that killed runs left in these folders, and in those where a killed
// restore was at work; such a folder that has a temporary name itself
// goes too, and its note stays as long as it is not there to be cleared. What a living
// process holds stays, and so does what cannot be removed. The number of files removed; never
// throws.
size_t ClearLeftovers(FileSystem& files, std::span<const std::string> folders);

}  // namespace quellix
