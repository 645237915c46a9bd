#include "browsers/profile_cleaner.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/programs_in_use.h"
#include "run/removal.h"
#include "run/run_limits.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/working_folder.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

std::vector<std::string> NamesIn(Folder& folder, std::string_view mask, bool folders) {
  std::vector<std::string> names;
  try {
    folder.Enumerate(Detail::kKind, [&](const Entry& entry) {
      const bool fits = entry.info.is_folder == folders && !entry.info.is_link;
      if (fits && MatchesMask(entry.name, mask)) names.emplace_back(entry.name);
      return true;
    });
  } catch (const Error&) {  // what cannot be listed cannot be cleaned either
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace

std::vector<std::string> FoldersIn(Folder& folder, std::string_view mask) {
  return NamesIn(folder, mask, true);
}

void CleanCaches(CleaningContext& context, const BrowserProfile& profile,
                 std::span<const std::string_view> names) {
  ProfileCleaner own(context, profile.folder, profile.path);
  for (const std::string_view name : names) own.Below(name);
  if (profile.cache_path == profile.path) return;
  try {
    std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(profile.cache_path);
    if (!folder) return;
    ProfileCleaner caches(context, std::move(folder), profile.cache_path);
    for (const std::string_view name : names) caches.Below(name);
  } catch (const Error& error) {
    NoteStayed(context.state, profile.cache_path, error);
  }
}

void AppendBrowserLine(CleaningContext& context, std::string_view browser, std::string_view label,
                       uint64_t rows) {
  RunState& state = context.state;
  // TRANSLATORS: A browser and what of it was cleaned: "Firefox, Cookies... Rows Deleted: 2 ...".
  LogLine(state, Log("%1, %2... Rows Deleted: %3 Files Deleted: %4 Space Gained: %5", browser,
                     Log(label), std::to_string(rows), std::to_string(state.FilesDeleted),
                     FormatSize(state.SpaceGained, 2, true, context.machine.system.UserLocale())));
}

// The first sign that a browser works with the folder.
std::optional<ProfileCleaner::Lock> ProfileCleaner::FindLock(
    std::span<const std::string_view> lock_files) {
  for (const std::string_view name : lock_files) {
    const std::string path = path_ + std::string(name);
    try {
      const auto info = folder_->Look(name, Detail::kKind);
      if (!info) continue;
      if (info->is_link) return Lock{path, {}, Error::Kind::kInUse, true};
      folder_->RequireRemovable(name);
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kMissing) return Lock{path, SentenceOf(error), error.kind()};
    }
  }
  return {};
}

bool ProfileCleaner::IsInUse(std::span<const std::string_view> lock_files, std::string_view browser,
                             std::string_view what) {
  const auto lock = FindLock(lock_files);
  if (!lock) return false;
  if (lock->kind != Error::Kind::kInUse) {
    NoteStayed(context_.state, lock->path, lock->why, lock->kind);
    return true;
  }
  const std::string name(browser);
  // TRANSLATORS: A browser, and what of it is to be cleaned: "Opera, Cookies".
  const ProgramInUse program{name, Tr("%1, %2", name, Tr(what)), {.held = lock->path}};
  const auto runs = [&] { return FindLock(lock_files).has_value(); };
  if (!lock->is_link && IsOutOfTheWay(context_, program, runs)) return false;
  NoteStayed(context_.state, lock->path,
             Say("%1 was left as it is: %2 is running. Close it and clean again.", path_, name),
             lock->kind);
  return true;
}

// Below the folder that is held: what its path has come to mean is nothing to us.
void ProfileCleaner::Remove(const std::vector<std::string>& names) {
  FileList list{.folder = folder_, .folder_path = path_, .PendingFiles = {}, .PendingFolders = {}};
  RunLimits limits(context_);
  for (const std::string& name : names) {
    const auto info = folder_->Look(name, limits.Needs(Detail::kSize));
    if (!info || info->is_folder || limits.Leaves(folder_.get(), path_, {name, *info})) continue;
    const Sentence why = PlacesOf(context_).WhyNotFile(*folder_, path_ + name, Claim::kItem);
    if (why.empty()) {
      list.PendingFiles.Append(path_ + name);
    } else {
      Leave(name, why);
    }
  }
  if (list.PendingFiles.empty()) return;
  NotePlace(context_.state);
  RemovePendingFiles(context_, list);
}

void ProfileCleaner::Files(std::span<const std::string_view> masks) {
  for (const std::string_view mask : masks) {
    if (context_.state.AbortRequested) return;
    Remove(NamesIn(*folder_, mask, false));
  }
}

void ProfileCleaner::WholeDatabase(std::string_view name) {
  if (context_.state.AbortRequested) return;
  const std::string database(name);
  try {
    if (folder_->Look(name, Detail::kKind)) folder_->RequireRemovable(name);
    Remove({database});
    // Without it, what lies beside it is never read; with it, it may be what makes it whole.
    if (folder_->Look(name, Detail::kKind)) return;
    Remove({database + "-journal", database + "-wal", database + "-shm"});
  } catch (const Error& error) {
    NoteStayed(context_.state, path_ + database, error);
  }
}

void ProfileCleaner::CleanTree(std::shared_ptr<Folder> folder, const std::string& path) {
  const Sentence why = PlacesOf(context_).WhyNot(*folder, "*.*", true, Claim::kItem);
  NotePlace(context_.state);
  if (!why.empty()) return LogNotCleaned(context_.state, path, Logged(why));
  const FileList list = CollectFiles(context_, std::move(folder), path, "*.*");
  RemovePendingFiles(context_, list);
  if (!context_.state.AbortRequested) RemovePendingFolders(context_, list);
}

void ProfileCleaner::Below(std::string_view names) {
  if (context_.state.AbortRequested) return;
  try {
    std::shared_ptr<Folder> folder = folder_->OpenFolder(names);
    if (folder) CleanTree(std::move(folder), path_ + std::string(names) + "\\");
  } catch (const Error& error) {
    Leave(names, SentenceOf(error));
  }
}

void ProfileCleaner::Sites(std::string_view names,
                           const std::function<std::string(Folder&, const std::string&)>& site_of) {
  if (context_.state.AbortRequested) return;
  try {
    const std::unique_ptr<Folder> folder = folder_->OpenFolder(names);
    if (!folder) return;
    for (const std::string& name : FoldersIn(*folder, "*")) {
      const std::string site = site_of(*folder, name);
      if (site.empty()) continue;
      const std::string below = std::string(names) + "\\" + name;
      const std::string_view line = KeepOf(context_).ForSite(site);
      if (!line.empty()) {
        NoteKept(context_.state, {.kind = EntryKind::kFolder, .place = path_ + below}, line);
        continue;
      }
      Below(below);
      if (context_.state.AbortRequested) return;
    }
  } catch (const Error& error) {
    Leave(names, SentenceOf(error));
  }
}

void ProfileCleaner::Rows(std::string_view names, const DatabaseJob& job) {
  if (context_.state.AbortRequested) return;
  const std::string_view below = FolderPart(names), name = NamePart(names);
  try {
    const auto folder = below.empty()
                            ? folder_
                            : std::shared_ptr<Folder>(folder_->OpenFolder(WithoutBackslash(below)));
    if (folder) rows_ += CleanDatabase(context_, *folder, path_ + std::string(below), name, job);
  } catch (const Error& error) {
    Leave(names, SentenceOf(error));
  }
}

bool ProfileCleaner::IsKeptForSites(std::string_view name) {
  if (!KeepOf(context_).has_sites()) return false;
  if (folder_->Look(name, Detail::kKind))
    NoteKept(context_.state, path_ + std::string(name), "site:");
  return true;
}

void ProfileCleaner::Leave(std::string_view name, const Sentence& why) {
  NoteStayed(context_.state, path_ + std::string(name), why, Error::Kind::kOther);
}

}  // namespace quellix
