#include "search/folder_walk.h"

#include <memory>
#include <vector>

#include "platform/listing.h"
#include "platform/path.h"

namespace quellix {
namespace {

class Walk {
 public:
  Walk(Folder& first, std::string_view path, WalkOrder order, const ProtectedPlaces* spared,
       FolderVisitor& visitor, const Pause& pause)
      : first_(first),
        path_(WithBackslash(path)),
        start_(path_.size()),
        order_(order),
        spared_(spared),
        visitor_(visitor),
        pause_(pause) {}

  void Run() {
    if (!Enter(&first_)) return;
    while (!levels_.empty()) {
      Level& level = levels_.back();
      path_.resize(level.path_length);
      if (level.next == level.entries.size()) {
        levels_.pop_back();
        if (!levels_.empty()) visitor_.End(path_);
      } else if (Stops(false) || !Visit(level.entries[level.next++])) {
        return;
      }
    }
  }

 private:
  // A folder that is being gone through.
  struct Level {
    size_t path_length;
    Listing entries;  // those whose turn is still to come
    size_t next = 0;
  };

  bool Stops(bool before_folder) {
    if (!pause_()) return false;
    visitor_.Stopped(before_folder);
    return true;
  }

  // Begins the folder at path_; null is one that cannot be opened. False when the walk ends.
  bool Enter(Folder* folder) {
    if (Stops(true)) return false;
    levels_.push_back({path_.size(), {}});
    if (folder == nullptr) return true;
    try {
      List(*folder, levels_.back().entries);
    } catch (const Error& error) {
      visitor_.Failed(path_, error);
    }
    return true;
  }

  void List(Folder& folder, Listing& entries) {
    Listing files;
    folder.Enumerate(visitor_.Needs(), [&](const Entry& entry) {
      if (entry.info.is_folder) {
        entries.Add(entry);
      } else if (order_ == WalkOrder::kAsListed) {
        if (visitor_.HasTurn(path_, entry)) entries.Add(entry);
      } else if (order_ == WalkOrder::kFilesFirst) {
        files.Add(entry);
      } else {
        visitor_.File(folder, path_, entry);
      }
      return !pause_();
    });
    for (size_t i = 0; i < files.size() && !pause_(); ++i) {
      visitor_.File(folder, path_, files[i]);
    }
  }

  // False when the walk ends.
  bool Visit(const Entry& entry) {
    if (!entry.info.is_folder) {
      visitor_.File(first_, path_, entry);
      return true;
    }
    path_.append(entry.name) += '\\';
    if (entry.info.is_link) {
      if (!visitor_.Wants(path_)) return true;
      visitor_.Begin(path_);
      visitor_.End(path_);
      return true;
    }
    return !visitor_.Wants(path_) || Open();
  }

  bool Open() {
    std::unique_ptr<Folder> folder;
    try {
      folder = first_.OpenFolder(WithoutBackslash(std::string_view(path_).substr(start_)),
                                 OpenFor::kListing);
      if (!folder) return true;  // it has gone meanwhile
      if (spared_ != nullptr && spared_->IsSpared(folder->Id())) {
        visitor_.Spared(path_, spared_->keep().ForFolder(folder->Id()));
        return true;
      }
    } catch (const Error& error) {
      visitor_.Failed(path_, error);
    }
    visitor_.Begin(path_);
    return Enter(folder.get());
  }

  Folder& first_;
  std::string path_;  // ends in "\"
  size_t start_;      // of what lies below the first folder
  WalkOrder order_;
  const ProtectedPlaces* spared_;
  FolderVisitor& visitor_;
  const Pause& pause_;
  std::vector<Level> levels_;
};

}  // namespace

void WalkFolder(Folder& folder, std::string_view path, WalkOrder order,
                const ProtectedPlaces* spared, FolderVisitor& visitor, const Pause& pause) {
  Walk(folder, path, order, spared, visitor, pause).Run();
}

}  // namespace quellix
