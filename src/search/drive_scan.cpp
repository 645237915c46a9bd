#include "search/drive_scan.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/run_limits.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"
#include "search/folder_walk.h"

namespace quellix {
namespace {

// More than a window shows at once; then so many times more each time, up to a limit.
constexpr size_t kFirstFound = 200, kGrowth = 8, kMostFound = 8192;

// What both kinds of scan share: mask and status.
class ScanVisitor : public FolderVisitor {
 public:
  ScanVisitor(CleaningContext& context, std::string_view mask)
      : context_(context), masks_(Split(mask, ';')), every_name_(mask == "*.*") {}

  void Stopped(bool) override { context_.view.SetStatus(Tr("Aborted by User")); }
  void Begin(const std::string& path) override {
    context_.view.SetStatus(Tr("Scanning system... %1", path));
  }

 protected:
  bool Fits(std::string_view name) const {
    return every_name_ || std::ranges::any_of(masks_, [name](const std::string& mask) {
             return MatchesMask(name, mask);
           });
  }
  CleaningContext& context() { return context_; }

 private:
  CleaningContext& context_;
  std::vector<std::string> masks_;
  bool every_name_;
};

class CollectingVisitor : public ScanVisitor {
 public:
  CollectingVisitor(CleaningContext& context, std::string_view mask, FileList& list,
                    const FirstFound& first)
      : ScanVisitor(context, mask), limits_(context), list_(list), first_(first) {}

  Detail Needs() const override { return limits_.Needs(Detail::kKind); }
  void File(Folder& folder, const std::string& path, const Entry& entry) override {
    if (!Fits(entry.name) || limits_.Leaves(&folder, path, entry)) return;
    list_.PendingFiles.Append(path, entry.name);
    if (first_ && list_.PendingFiles.size() >= enough_) HandOut();
  }
  bool Wants(const std::string&) override { return true; }
  void Begin(const std::string& path) override {
    list_.PendingFolders.Append(path);
    ScanVisitor::Begin(path);
  }
  void Spared(const std::string& path, std::string_view line) override {
    if (!line.empty()) return NoteKept(context().state, path, line);
    LogSpared(context().state, path);
  }
  void Failed(const std::string& path, const Error& error) override {
    if (error.kind() == Error::Kind::kMissing) return;
    NoteStayed(context().state, path, error);
  }

 private:
  void HandOut() {
    enough_ = std::min(enough_ * kGrowth, kMostFound);
    first_({list_.folder, list_.folder_path, std::exchange(list_.PendingFiles, {}), {}});
  }

  RunLimits limits_;
  FileList& list_;
  const FirstFound& first_;
  size_t enough_ = kFirstFound;
};

class SearchingVisitor : public ScanVisitor {
 public:
  SearchingVisitor(CleaningContext& context, std::string_view mask, const IgnoreLists& ignore,
                   FileTest& test)
      : ScanVisitor(context, mask), ignore_(ignore), test_(test) {}

  Detail Needs() const override { return test_.Needs(); }
  void File(Folder& folder, const std::string& path, const Entry& entry) override {
    if (!Fits(entry.name)) return;
    upper_name_ = UpCase(entry.name);
    if (!ignore_.Ignores(upper_name_)) test_.Test(folder, path, entry, upper_name_);
  }
  bool Wants(const std::string& path) override { return !ignore_.IsIgnoredFolder(path); }

 private:
  const IgnoreLists& ignore_;
  FileTest& test_;
  std::string upper_name_;
};

class EmptyFolderVisitor : public ScanVisitor {
 public:
  EmptyFolderVisitor(CleaningContext& context, const IgnoreLists& ignore,
                     const EmptyFolderSteps& steps)
      : ScanVisitor(context, "*.*"), ignore_(ignore), steps_(steps) {}

  void File(Folder&, const std::string&, const Entry&) override { NoteContent(); }
  bool Wants(const std::string& path) override {
    if (!ignore_.IsIgnoredFolder(path) && steps_.enters(path)) return true;
    NoteContent();
    return false;
  }
  void Begin(const std::string& path) override {
    ScanVisitor::Begin(path);
    has_content_.push_back(failed_ == path);
  }
  void End(const std::string& path) override {
    const bool is_empty = !has_content_.back();
    has_content_.pop_back();
    if (!is_empty || !steps_.take(path)) NoteContent();
  }
  void Spared(const std::string&, std::string_view) override { NoteContent(); }
  // Of a folder that has begun, or of one that begins next.
  void Failed(const std::string& path, const Error&) override {
    failed_ = path;
    NoteContent();
  }

 private:
  void NoteContent() { has_content_.back() = true; }

  const IgnoreLists& ignore_;
  const EmptyFolderSteps& steps_;
  std::vector<bool> has_content_{false};  // of the folders that are gone through, outermost first
  std::string failed_;
};

// What cannot be opened yields nothing.
std::unique_ptr<Folder> OpenToSearch(CleaningContext& context, std::string_view path) {
  try {
    return context.machine.files.OpenFolder(path);
  } catch (const Error&) {
    return nullptr;
  }
}

}  // namespace

FileList ScanFolder(CleaningContext& context, std::shared_ptr<Folder> folder, std::string_view path,
                    std::string_view mask, ScanMode, const FirstFound& first) {
  FileList list{std::move(folder), WithBackslash(path), {}, {}};
  if (!list.folder) return list;
  CollectingVisitor visitor(context, mask, list, first);
  WalkFolder(*list.folder, path, WalkOrder::kWhileListing, &PlacesOf(context), visitor,
             PauseOf(context));
  return list;
}

void SearchFolder(CleaningContext& context, std::string_view path, std::string_view mask,
                  const IgnoreLists& ignore, FileTest& test) {
  const auto folder = OpenToSearch(context, path);
  if (!folder) return;
  SearchingVisitor visitor(context, mask, ignore, test);
  WalkFolder(*folder, path, WalkOrder::kWhileListing, nullptr, visitor, PauseOf(context));
}

void SearchEmptyFolders(CleaningContext& context, std::string_view path, const IgnoreLists& ignore,
                        const EmptyFolderSteps& steps) {
  const auto folder = OpenToSearch(context, path);
  if (!folder) return;
  EmptyFolderVisitor visitor(context, ignore, steps);
  WalkFolder(*folder, path, WalkOrder::kWhileListing, &PlacesOf(context), visitor,
             PauseOf(context));
}

}  // namespace quellix
