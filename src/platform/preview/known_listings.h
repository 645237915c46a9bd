#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/listing.h"

namespace quellix {

// For hash tables of folders. Those beside each other mostly have numbers beside each other; in the
// table they are as well, so that who goes through them in order finds it in the processor's cache.
struct HashOfId {
  size_t operator()(const FileId& id) const {
    return id.number[0] + (id.number[1] ^ id.volume) * 0x9E3779B97F4A7C15;
  }
};

// The listings that were read last, so that a folder which many entries name is read once.
class KnownListings {
 public:
  // About what all of them may take, in bytes.
  explicit KnownListings(size_t most = 32u << 20) : most_(most) {}

  struct Known {
    Detail detail = Detail::kKind;
    std::shared_ptr<const Listing> listing{};  // null when it is not known
    std::vector<std::string_view> gone{};      // since it was kept; held elsewhere
  };
  // Nothing as well where less is known than the detail asks for.
  Known Find(const FileId& folder, Detail detail);
  // Whether it is small enough to be kept.
  bool Takes(const Listing& listing) const { return listing.bytes() <= most_ / 2; }
  // Those that were not asked for longest may be forgotten for it.
  void Keep(const FileId& folder, Known known);
  void NoteGone(const FileId& folder, std::string_view name);

 private:
  using Generation = std::unordered_map<FileId, Known, HashOfId>;

  void Forget(const FileId& folder);
  static size_t SizeOf(const Known& known);

  const size_t most_;
  size_t bytes_ = 0;  // of the young ones
  Generation young_, old_;
  // Of the folder that NoteGone was last called for: most that goes is in the same one.
  bool is_noted_ = false;
  FileId noted_folder_;
  Known* noted_ = nullptr;
};

}  // namespace quellix
