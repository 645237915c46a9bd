#include "run/deletion_batch.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "run/stayed.h"

namespace quellix {

void DeletionBatch::TakeAway(File& file) noexcept {
  try {
    file.is_gone = file.folder->RemoveAsSpelled(NamePart(file.path), file.seen);
  } catch (const std::exception&) {  // no memory: it goes alone, or says so
  }
}

bool DeletionBatch::Add(std::string_view path) {
  try {
    Put(path);
  } catch (const Error& error) {
    Finish();
    NoteStayed(context_.state, path, error);
  }
  return goes_together_.value_or(true);
}

// The machine shows by the first file whether it can.
void DeletionBatch::Put(std::string_view path) {
  working_.Of(path);
  File file{.folder = working_.Shared(), .path = path};
  if (!goes_together_) {
    TakeAway(file);
    goes_together_ = file.is_gone;
    if (!file.is_gone) return alone_(path);
    return CountRemoved(context_.state, path, file.seen, Way::kDeleted);
  }
  if (filling_.empty() || filling_.back().folder != file.folder) ++folders_;
  filling_.push_back(std::move(file));
  if (filling_.size() >= most_ || folders_ == kMostFolders) HandOn();
}

void DeletionBatch::HandOn() {
  Settle();
  std::swap(filling_, begun_);
  folders_ = 0;
  if (begun_.empty()) return;
  begun_at_ = std::chrono::steady_clock::now();
  second_.Begin(begun_.size());
}

// As many go together as go in an instant: a slow disk must not keep the user waiting for Stop.
void DeletionBatch::Settle() {
  if (begun_.empty()) return;
  second_.Finish();
  const bool is_quick =
      std::chrono::steady_clock::now() - begun_at_ < std::chrono::milliseconds(10);
  most_ = is_quick ? std::min(2 * most_, kMost) : kFewest;
  for (const File& file : begun_) {
    if (file.is_gone) {
      CountRemoved(context_.state, file.path, file.seen, Way::kDeleted);
    } else {
      alone_(file.path);
    }
  }
  begun_.clear();
}

void DeletionBatch::Stop() {
  filling_.clear();
  Settle();
}

void DeletionBatch::Finish() {
  HandOn();
  Settle();
}

}  // namespace quellix
