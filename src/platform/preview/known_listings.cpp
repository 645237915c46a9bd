#include "platform/preview/known_listings.h"

#include <algorithm>
#include <utility>

namespace quellix {
namespace {

// Mostly all that a small folder holds goes.
constexpr size_t kAFew = 64;

}  // namespace

KnownListings::Known KnownListings::Find(const FileId& folder, Detail detail) {
  if (const auto young = young_.find(folder); young != young_.end()) {
    return young->second.detail >= detail ? young->second : Known{};
  }
  const auto old = old_.find(folder);
  if (old == old_.end() || old->second.detail < detail) return {};
  Known known = old->second;
  Keep(folder, known);
  return known;
}

void KnownListings::Keep(const FileId& folder, Known known) {
  const size_t bytes = SizeOf(known);
  is_noted_ = false;
  Forget(folder);
  if (bytes > most_ / 2) return;
  if (bytes_ + bytes > most_ / 2) {
    old_ = std::exchange(young_, {});
    bytes_ = 0;
  }
  bytes_ += bytes;
  young_.emplace(folder, std::move(known));
}

void KnownListings::Forget(const FileId& folder) {
  if (!old_.empty()) old_.erase(folder);
  const auto young = young_.find(folder);
  if (young == young_.end()) return;
  bytes_ -= SizeOf(young->second);
  young_.erase(young);
}

size_t KnownListings::SizeOf(const Known& known) {
  return sizeof(Generation::value_type) + known.listing->bytes();
}

void KnownListings::NoteGone(const FileId& folder, std::string_view name) {
  if (!is_noted_ || noted_folder_ != folder) {
    noted_folder_ = folder;
    noted_ = nullptr;
    is_noted_ = true;
    for (Generation* generation : {&young_, &old_}) {
      const auto place = noted_ == nullptr ? generation->find(folder) : generation->end();
      if (place != generation->end()) noted_ = &place->second;
    }
  }
  if (noted_ == nullptr) return;
  if (noted_->gone.empty()) noted_->gone.reserve(std::min(noted_->listing->size(), kAFew));
  noted_->gone.push_back(name);
}

}  // namespace quellix
