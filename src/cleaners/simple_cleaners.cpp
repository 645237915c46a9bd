#include "cleaners/simple_cleaners.h"

#include <algorithm>

#include "app/run_steps.h"
#include "cleaners/skeleton.h"

namespace quellix {
namespace {

constexpr const char* kRunHistory =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU\\";
constexpr const char* kTypedURLs = "Software\\Microsoft\\Internet Explorer\\TypedURLs\\";

// Deletes all values of a key of the user and counts them, the one that holds the list's order
// included: the count has always been told so.
size_t DeleteHistory(CleaningContext& context, const char* key) {
  const modRegistry::Access access = RegistryOf(context);
  const std::string names = modRegistry::ListRegValues(access, RegistryRoot::kCurrentUser, key);
  if (names.empty()) return 0;
  modRegistry::RequireWritable(access, RegistryRoot::kCurrentUser, key);
  modRegistry::DeleteRegValues(access, RegistryRoot::kCurrentUser, names, key);
  return static_cast<size_t>(std::ranges::count(names, '\0')) + 1;
}

void CleanHistoryKey(CleaningContext& context, const Item& item, const char* key) {
  BeginItem(context, item);
  const size_t count = DeleteHistory(context, key);
  EndRun(context, "");
  AppendCountLine(context, item, count);
}

}  // namespace

void CleanTempFiles(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  ResetItemCounters(context.state);
  CleanFolder(context, context.machine.system.TempFolder(), "*.*", FoldersPass::kYes);
  EndRun(context, "");
  AppendFilesLine(context, item);
}

// The bins of all drives are queried and emptied at once. There is no query drive by drive: it was
// tied to a drive type that no drive has, and logs are compared with those of earlier versions.
void CleanRecycleBin(CleaningContext& context, const Item& item) {
  RunState& state = context.state;
  BeginItem(context, item);
  ResetItemCounters(state);
  const RecycleBinContent content = context.machine.shell.QueryRecycleBin();
  context.machine.shell.EmptyRecycleBin();
  state.FilesDeleted = static_cast<int32_t>(content.items);
  state.SpaceGained = static_cast<double>(content.bytes);
  state.RunFilesDeleted += state.FilesDeleted;
  state.RunSpaceGained += state.SpaceGained;
  EndRun(context, "");
  AppendFilesLine(context, item);
}

void CleanRunHistory(CleaningContext& context, const Item& item) {
  CleanHistoryKey(context, item, kRunHistory);
}

void CleanTypedURLs(CleaningContext& context, const Item& item) {
  CleanHistoryKey(context, item, kTypedURLs);
}

void CleanClipboard(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  context.machine.shell.EmptyClipboard();
  EndRun(context, "");
  AppendCaptionLine(context, item);
}

}  // namespace quellix
