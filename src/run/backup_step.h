#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/words.h"
#include "run/context.h"
#include "run/working_folder.h"

namespace quellix {

// The files that were archived but not yet removed. They are removed together, once their archived
// bytes are on the disk: bringing them there one by one would cost more than all the rest.
class BackupBatch {
 public:
  explicit BackupBatch(CleaningContext& context) : context_(context) {}

  // Archives a file of an open folder, as it was seen there (Detail::kSize). A path on another
  // drive than the last one begins an archive of its own, for which the batch has to be empty.
  void Add(Folder& folder, std::string_view path, const FileInfo& seen);
  bool empty() const { return files_.empty(); }
  // Whether it is time to remove: many files, or many bytes.
  bool IsFull() const;
  bool FitsDriveOf(std::string_view path) const;

  // Brings the archive onto the disk and empties the batch: removes and counts each file that may
  // go, and notes the others as stayed. In strict mode a file may not go that changed meanwhile.
  // There is a pause before each; a batch is finished whatever it says.
  void Remove(WorkingFolder& working);
  // The same for a batch of one file; where that stays, Error tells why.
  void RemoveOnly(WorkingFolder& working);
  // Brings the archive onto the disk and empties the batch; its files stay, to be changed. Why not
  // all of them are in the archive; empty when they are.
  Sentence Store();

 private:
  struct File {
    std::string_view path;
    FileInfo seen;     // before it was archived
    Sentence problem;  // why it is not in the archive
  };

  void Flush();
  const Sentence& ProblemOf(Folder& folder, File& file) const;
  void RemoveOne(WorkingFolder& working, File& file);

  CleaningContext& context_;
  std::vector<File> files_;
  uint64_t bytes_ = 0;
};

}  // namespace quellix
