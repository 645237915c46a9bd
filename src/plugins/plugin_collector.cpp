#include "plugins/plugin_collector.h"

#include <string>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

class Collector {
 public:
  Collector(CleaningContext& context, bool delete_subfolders, bool recurse, std::string_view mask)
      : context_(context), mask_(mask), delete_subfolders_(delete_subfolders), recurse_(recurse) {}

  // `folder` ends in "\\". Levels are kept here and not on the stack: nobody knows how deep a tree
  // is.
  void Collect(const std::string& folder) {
    folder_ = folder;
    if (!Enter()) return;
    while (!levels_.empty()) {
      Level& level = levels_.back();
      folder_.resize(level.folder_length);
      if (level.next == level.entries.size()) {
        Leave();
      } else if (Stopped("Aborted by User") || !Take(level.entries[level.next++])) {
        return;
      }
    }
  }

 private:
  struct Listed {
    std::string name;
    bool is_folder;
    bool is_link;
  };

  // A folder that is being visited.
  struct Level {
    size_t folder_length;  // of its path in folder_
    std::vector<Listed> entries;
    size_t next = 0;
  };

  // Begins folder_; false when the user has stopped.
  bool Enter() {
    if (Stopped("Aborted by user")) return false;
    levels_.push_back({folder_.size(), List()});
    return true;
  }

  // A folder counts behind all that is below it; the first one stays.
  void Leave() {
    levels_.pop_back();
    if (!levels_.empty()) Visited();
  }

  bool Take(const Listed& entry) {
    if (!entry.is_folder) {
      context_.state.PendingFiles.Append(folder_, entry.name);
      return true;
    }
    if (!recurse_) return true;
    folder_.append(entry.name).append("\\");
    if (!entry.is_link) return Enter();
    Visited();
    return true;
  }

  void Visited() {
    if (delete_subfolders_) context_.state.PendingFolders.Append(folder_);
  }

  // The listing is whole before anything in it is visited.
  std::vector<Listed> List() {
    std::vector<Listed> entries;
    context_.machine.files.Enumerate(folder_, Detail::kKind, [&](const Entry& entry) {
      if (entry.info.is_folder || MatchesMask(entry.name, mask_)) {
        entries.push_back({std::string(entry.name), entry.info.is_folder, entry.info.is_link});
      }
      return true;
    });
    return entries;
  }

  // The two places that ask have always spelled their status differently.
  bool Stopped(std::string_view status) {
    context_.view.Yield();
    context_.view.Yield();
    if (context_.state.AbortRequested) context_.view.SetStatus(status);
    return context_.state.AbortRequested;
  }

  CleaningContext& context_;
  std::string mask_;
  bool delete_subfolders_;
  bool recurse_;
  std::string folder_;  // ends in "\"
  std::vector<Level> levels_;
};

}  // namespace

void CollectPluginFiles(CleaningContext& context, std::string_view folder, bool delete_subfolders,
                        bool recurse, std::string_view mask) {
  Collector(context, delete_subfolders, recurse, mask).Collect(WithBackslash(folder));
}

}  // namespace quellix::modPlugin
