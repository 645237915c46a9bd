#include "plugins/plugin_collector.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/run_limits.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"
#include "search/folder_walk.h"

namespace quellix::modPlugin {
namespace {

class Collector : public FolderVisitor {
 public:
  Collector(CleaningContext& context, bool delete_subfolders, bool recurse,
            std::span<const std::string> masks, WalkExclusions exclusions, FileList& list)
      : context_(context),
        limits_(context),
        masks_(masks),
        delete_subfolders_(delete_subfolders),
        recurse_(recurse),
        exclusions_(std::move(exclusions)),
        list_(list) {}

  // The two places that ask have always spelled their status differently.
  void Stopped(bool before_folder) override {
    context_.view.SetStatus(before_folder ? Tr("Aborted by user") : Tr("Aborted by User"));
  }
  Detail Needs() const override { return limits_.Needs(Detail::kKind); }
  bool HasTurn(const std::string& path, const Entry& entry) override {
    const auto fits = [&](const std::string& mask) { return MatchesMask(entry.name, mask); };
    return std::ranges::any_of(masks_, fits) && !exclusions_.LeavesFile(path, entry.name);
  }
  void File(Folder&, const std::string& path, const Entry& entry) override {
    if (limits_.Leaves(nullptr, path, entry)) return;
    list_.PendingFiles.Append(path, entry.name);
  }
  bool Wants(const std::string& path) override {
    return recurse_ && !exclusions_.LeavesFolder(path);
  }
  void End(const std::string& path) override {
    if (delete_subfolders_) list_.PendingFolders.Append(path);
  }
  void Spared(const std::string& path, std::string_view line) override {
    if (!line.empty()) return NoteKept(context_.state, path, line);
    LogSpared(context_.state, path);
  }
  void Failed(const std::string& path, const Error& error) override {
    if (error.kind() == Error::Kind::kMissing) return;
    NoteStayed(context_.state, path, error);
  }

 private:
  CleaningContext& context_;
  RunLimits limits_;
  std::span<const std::string> masks_;
  bool delete_subfolders_;
  bool recurse_;
  WalkExclusions exclusions_;
  FileList& list_;
};

}  // namespace

FileList CollectPluginFiles(CleaningContext& context, std::shared_ptr<Folder> folder,
                            std::string_view path, bool delete_subfolders, bool recurse,
                            std::span<const std::string> masks, const Exclusions* exclusions) {
  FileList list{std::move(folder), WithBackslash(path), {}, {}};
  WalkExclusions left = exclusions ? exclusions->In(*list.folder, path) : WalkExclusions();
  Collector collector(context, delete_subfolders, recurse, masks, std::move(left), list);
  WalkFolder(*list.folder, path, WalkOrder::kAsListed, &PlacesOf(context), collector,
             PauseOf(context));
  return list;
}

}  // namespace quellix::modPlugin
