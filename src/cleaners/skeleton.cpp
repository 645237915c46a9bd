#include "cleaners/skeleton.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "registry_tools/registry_eraser.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

constexpr std::string_view kSystemRoot = "%SYSTEMROOT%";

std::string FolderText(const Machine& machine, RegistryRoot root, std::string_view key,
                       std::string_view name) {
  std::string folder =
      modRegistry::ReadRegString({machine.registry, machine.system}, root, key, name);
  return folder.size() > 1 ? WithBackslash(folder) : folder;
}

}  // namespace

std::string ExpandSystemRoot(System& system, std::string_view path) {
  if (!ContainsNoCase(path, kSystemRoot)) return std::string(path);
  const std::string system_folder = system.SystemFolder();
  if (system_folder.empty()) return {};
  return ReplaceNoCase(path, kSystemRoot, system_folder);
}

std::vector<std::string> ExpandSystemRootBothWays(System& system, std::string_view path) {
  std::vector<std::string> paths = {ExpandSystemRoot(system, path)};
  if (ContainsNoCase(path, kSystemRoot)) {
    paths.push_back(ReplaceNoCase(path, kSystemRoot, system.WindowsFolder()));
  }
  return paths;
}

std::string FolderFromRegistry(const Machine& machine, RegistryRoot root, std::string_view key,
                               std::string_view name) {
  return ExpandSystemRoot(machine.system, FolderText(machine, root, key, name));
}

std::vector<std::string> FoldersFromRegistry(CleaningContext& context, RegistryRoot root,
                                             std::string_view key, std::string_view name) {
  const Machine& machine = context.machine;
  return ExpandSystemRootBothWays(machine.system, FolderText(machine, root, key, name));
}

std::string ListUserValues(CleaningContext& context, std::string_view key) {
  using modRegistry::Reach;
  const modRegistry::Access access = RegistryOf(context);
  if (modRegistry::KeyExists(access, RegistryRoot::kCurrentUser, key)) NotePlace(context.state);
  return modRegistry::ListRegValues(access, RegistryRoot::kCurrentUser, key,
                                    context.state.AllValues ? Reach::kAll : Reach::kFew,
                                    PauseOf(context));
}

size_t ClearUserKey(CleaningContext& context, std::string_view key) {
  const std::string names = ListUserValues(context, key);
  if (names.empty()) return 0;
  return RegistryEraser::OfRun(context).EraseValues(RegistryRoot::kCurrentUser, key, names).gone;
}

FileList CollectAllowed(CleaningContext& context, std::string_view path, std::string_view mask,
                        Claim claim, const FirstFound& first) {
  if (path.empty()) return {};
  std::string why;
  try {
    std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(path);
    if (!folder) return {};
    NotePlace(context.state);
    why = Logged(PlacesOf(context).WhyNot(*folder, mask, true, claim));
    if (why.empty()) return CollectFiles(context, std::move(folder), path, mask, first);
  } catch (const Error& error) {
    if (error.kind() == Error::Kind::kMissing) return {};
    why = Logged(error);
  }
  LogNotCleaned(context.state, path, why);
  return {};
}

void DropFiles(PathList& files, const Stays& stays) {
  PathList going;
  for (size_t i = 0; i < files.size(); ++i) {
    if (!stays(files[i])) going.Append(files[i]);
  }
  files = std::move(going);
}

namespace {

// What a folder's scan has found so far, while it goes on.
class FoundSoFar {
 public:
  FoundSoFar(CleaningContext& context, Claim claim, const Stays& stays)
      : context_(context), claim_(claim), stays_(stays) {}

  // Where a machine looks at files ahead, they wait for that until the next ones are there; the
  // first ones are waited for.
  void Take(FileList found) {
    Remove();
    waiting_ = std::move(found);
    if (stays_) DropFiles(waiting_.PendingFiles, stays_);
    if (!std::exchange(is_first_, false)) expected_ = ExpectLooks(context_, {&waiting_, 1});
    if (!expected_) Remove();
  }
  void Remove() {
    if (!waiting_.folder) return;
    RemovePendingFiles(context_, waiting_, claim_);
    expected_.reset();
    waiting_ = {};
  }

 private:
  CleaningContext& context_;
  const Claim claim_;
  const Stays& stays_;
  FileList waiting_;
  std::shared_ptr<void> expected_;  // uses the list
  bool is_first_ = true;
};

}  // namespace

void CleanFolder(CleaningContext& context, std::string_view path, std::string_view mask,
                 FoldersPass folders_pass, Claim claim, const Stays& stays) {
  FoundSoFar found(context, claim, stays);
  // A look changes nothing, so that its first rows need not await the end of the scan.
  FirstFound first;
  if (context.state.IsPreview) first = [&](FileList part) { found.Take(std::move(part)); };
  FileList list = CollectAllowed(context, path, mask, claim, first);
  found.Remove();
  if (!list.folder) return;
  if (stays) DropFiles(list.PendingFiles, stays);
  RemovePendingFiles(context, list, claim);
  if (folders_pass == FoldersPass::kYes) RemovePendingFolders(context, list);
}

void RemoveEmptyFolder(CleaningContext& context, std::string_view folder) {
  const FileList alone;
  const std::string_view path = WithoutBackslash(folder);
  RunEntry entry{.kind = EntryKind::kFolder, .place = std::string(path)};
  if (!IsChosen(context.state, entry)) return;
  try {
    WorkingFolder(context, alone, Claim::kItem).OfFolder(folder).RemoveFolder(NamePart(path));
    NoteEntry(context.state, std::move(entry));
  } catch (const Error&) {  // not there, or not empty
  }
}

void ResetItemCounters(RunState& state) {
  state.FilesDeleted = 0;
  state.SpaceGained = 0;
}

void BeginFiles(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  ResetItemCounters(context.state);
}

void EndFiles(CleaningContext& context, const Item& item) {
  EndRun(context, "");
  AppendFilesLine(context, item.log_caption);
}

void CleanByAction(CleaningContext& context, const Item& item,
                   const std::function<void()>& action) {
  BeginItem(context, item);
  action();
  EndRun(context, "");
  AppendCaptionLine(context, item);
}

void AppendFilesLine(CleaningContext& context, std::string_view caption) {
  LogLine(context.state, FilesText(caption, context.state.FilesDeleted, context.state.SpaceGained,
                                   context.machine.system.UserLocale()));
}

void AppendCountLine(CleaningContext& context, const Item& item, size_t count) {
  // TRANSLATORS: %1 is a caption that ends in "... ", or in dots alone.
  LogLine(context.state, Log("%1Files Deleted: %2", Log(item.log_caption), std::to_string(count)));
}

void AppendCaptionLine(CleaningContext& context, const Item& item) {
  LogLine(context.state, Log(item.log_caption));
}

}  // namespace quellix
