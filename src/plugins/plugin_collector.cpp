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

  // `folder` ends in "\".
  void Collect(const std::string& folder) {
    if (Stopped("Aborted by user")) return;
    for (const Listed& entry : List(folder)) {
      if (Stopped("Aborted by User")) return;
      if (!entry.is_folder) {
        context_.state.PendingFiles.Append(folder, entry.name);
      } else if (recurse_) {
        Visit(folder + entry.name + "\\", entry.is_link);
      }
    }
  }

 private:
  struct Listed {
    std::string name;
    bool is_folder;
    bool is_link;
  };

  // The listing is whole before anything in it is visited.
  std::vector<Listed> List(const std::string& folder) {
    std::vector<Listed> entries;
    context_.machine.files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
      if (entry.info.is_folder || MatchesMask(entry.name, mask_)) {
        entries.push_back({std::string(entry.name), entry.info.is_folder, entry.info.is_link});
      }
      return true;
    });
    return entries;
  }

  void Visit(const std::string& folder, bool is_link) {
    if (!is_link) Collect(folder);
    if (delete_subfolders_ && !context_.state.AbortRequested) {
      context_.state.PendingFolders.Append(folder);
    }
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
};

}  // namespace

void CollectPluginFiles(CleaningContext& context, std::string_view folder, bool delete_subfolders,
                        bool recurse, std::string_view mask) {
  context.machine.files.Anchor(folder);
  Collector(context, delete_subfolders, recurse, mask).Collect(WithBackslash(folder));
}

}  // namespace quellix::modPlugin
