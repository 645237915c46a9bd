#include "cleaners/internet_cleaners.h"

#include <functional>

#include "cleaners/cookie_lists.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

void DeleteCacheEntries(CleaningContext& context,
                        const std::function<bool(const UrlCacheEntry&)>& goes) {
  std::vector<std::string> sources;
  context.machine.url_cache.Enumerate([&](const UrlCacheEntry& entry) {
    if (goes(entry)) sources.push_back(entry.source);
    return !StopsRun(context);
  });
  for (const std::string& source : sources) {
    if (StopsRun(context)) return;
    context.machine.url_cache.Delete(source);
  }
  NotePlace(context.state);
}

bool IsKept(std::string_view file, std::string_view keep_list) {
  return !file.empty() && keep_list.find(UpCase(file)) != std::string_view::npos;
}

void DropKeptFiles(PathList& files, std::string_view keep_list) {
  PathList going;
  for (size_t i = 0; i < files.size(); ++i) {
    if (!IsKept(files[i], keep_list)) going.Append(files[i]);
  }
  files = std::move(going);
}

void DeleteCookieEntries(CleaningContext& context, std::string_view keep_list) {
  try {
    DeleteCacheEntries(context, [keep_list](const UrlCacheEntry& entry) {
      return (entry.type & kCookieEntry) != 0 && !IsKept(entry.local_file, keep_list);
    });
  } catch (const NotAvailable& error) {  // the files are gone all the same
    context.state.RunLog.append(error.what()).append("\r\n");
  }
}

}  // namespace

void CleanInternetCache(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] {
    DeleteCacheEntries(context, [](const UrlCacheEntry& entry) {
      return (entry.type & (kCookieEntry | kUrlHistoryEntry)) == 0;
    });
  });
}

void CleanCookies(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  ResetItemCounters(context.state);
  const std::string keep_list = UpCase(ReadKeptCookies(context.machine));
  const std::string folder =
      FolderFromRegistry(context, RegistryRoot::kCurrentUser, kShellFolders, "Cookies");
  FileList list = CollectAllowed(context, folder, "*.txt");
  DropKeptFiles(list.PendingFiles, keep_list);
  if (list.folder) RemovePendingFiles(context, list);
  if (!context.state.AbortRequested) DeleteCookieEntries(context, keep_list);
  EndRun(context, "");
  AppendFilesLine(context, item);
}

void CleanAddressHistory(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] {
    context.machine.shell.ClearAddressHistory();
    NotePlace(context.state);
  });
}

}  // namespace quellix
