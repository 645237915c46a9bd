#include "cleaners/internet_cleaners.h"

#include <functional>
#include <utility>
#include <vector>

#include "cleaners/cookie_lists.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

// Lines of a cookie file.
constexpr size_t kHostLine = 2, kLinesACookie = 9;
constexpr const char* kNoSite =
    Mark("Its site cannot be told, so it may be one that your keep list names.");

// The host of "Cookie:user@host/path".
std::string_view CookieHost(std::string_view source) {
  source.remove_prefix(std::min(source.find('@') + 1, source.size()));
  return source.substr(0, source.find('/'));
}

// Leaves what the user keeps: by its file and, of a cookie, by its site.
bool IsOnKeepList(CleaningContext& context, const UrlCacheEntry& entry) {
  const KeepList& keep = KeepOf(context);
  std::string_view line = entry.local_file.empty() ? "" : keep.ForPath(entry.local_file);
  if (line.empty() && (entry.type & kCookieEntry) != 0)
    line = keep.ForSite(CookieHost(entry.source));
  if (!line.empty())
    NoteKept(context.state, {.kind = EntryKind::kCacheEntry, .place = entry.source}, line);
  return !line.empty();
}

void DeleteCacheEntries(CleaningContext& context,
                        const std::function<bool(const UrlCacheEntry&)>& goes) {
  std::vector<RunEntry> found;
  context.machine.url_cache.Enumerate([&](const UrlCacheEntry& entry) {
    if (goes(entry) && !IsOnKeepList(context, entry)) {
      found.push_back({.kind = EntryKind::kCacheEntry,
                       .bytes = entry.size,
                       .last_write = entry.last_modified,
                       .place = entry.source,
                       .part = entry.local_file});
    }
    return !StopsRun(context);
  });
  for (RunEntry& entry : found) {
    if (StopsRun(context)) return;
    if (!IsChosen(context.state, entry)) continue;
    if (!context.machine.url_cache.Delete(entry.place)) {
      entry.fate = Fate::kStayed;
      context.state.Entries->Note(entry, Say("It is in use, or gone already."));
    }
    NoteEntry(context.state, std::move(entry));
  }
  NotePlace(context.state);
}

bool IsKept(std::string_view file, std::string_view keep_list) {
  return !file.empty() && keep_list.find(UpCase(file)) != std::string_view::npos;
}

// The line that keeps the site of a cookie file: its lines are name, value, host and path, flags
// and times, "*", again and again. Throws Error for a file of today that does not tell its sites:
// of old ones the names do.
std::string_view SiteLine(CleaningContext& context, std::string_view file) {
  const KeepList& keep = KeepOf(context);
  if (!keep.has_sites()) return {};
  const std::optional<std::string> bytes = context.machine.files.ReadWholeFile(file);
  if (!bytes) return {};
  const std::vector<std::string> lines = Split(*bytes, '\n');
  bool is_clear = lines.size() > kHostLine;
  for (size_t i = kHostLine; i < lines.size(); i += kLinesACookie) {
    const std::string_view host = std::string_view(lines[i]).substr(0, lines[i].find('/'));
    if (const auto line = keep.ForSite(host); !line.empty()) return line;
    const size_t end = i + kLinesACookie - kHostLine - 1;
    is_clear = is_clear && !host.empty() && end < lines.size() && lines[end].starts_with('*');
  }
  if (!is_clear && !MatchesMask(NamePart(file), "*.txt"))
    throw Error(Error::Kind::kOther, Say(kNoSite));
  return {};
}

// What cannot be read is not told from what is kept: it stays.
bool IsOfKeptSite(CleaningContext& context, std::string_view file) {
  try {
    const std::string_view line = SiteLine(context, file);
    if (!line.empty()) NoteKept(context.state, file, line);
    return !line.empty();
  } catch (const Error& error) {
    NoteStayed(context.state, file, error);
    return true;
  }
}

void DeleteCookieEntries(CleaningContext& context, std::string_view keep_list) {
  try {
    DeleteCacheEntries(context, [keep_list](const UrlCacheEntry& entry) {
      return (entry.type & kCookieEntry) != 0 && !IsKept(entry.local_file, keep_list);
    });
  } catch (const NotAvailable& error) {  // the files are gone all the same
    LogLine(context.state, Logged(error));
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
  BeginFiles(context, item);
  const std::string keep_list = UpCase(ReadKeptCookies(context.machine));
  const std::string folder =
      FolderFromRegistry(context, RegistryRoot::kCurrentUser, kShellFolders, "Cookies");
  FileList list = CollectAllowed(context, folder, kCookieFiles);
  DropFiles(list.PendingFiles, [&](std::string_view file) {
    return IsKept(file, keep_list) || IsOfKeptSite(context, file);
  });
  if (list.folder) RemovePendingFiles(context, list);
  if (!context.state.AbortRequested) DeleteCookieEntries(context, keep_list);
  EndFiles(context, item);
}

void CleanAddressHistory(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] {
    const RunEntry entry{.kind = EntryKind::kAddressHistory};
    if (!IsChosen(context.state, entry)) return NotePlace(context.state);
    context.machine.shell.ClearAddressHistory();
    NoteEntry(context.state, entry);
    NotePlace(context.state);
  });
}

}  // namespace quellix
