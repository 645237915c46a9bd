#include "cleaners/named_places.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/set_for_now.h"
#include "run/stayed.h"
#include "run/working_folder.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

void RemoveItself(CleaningContext& context, const std::string& path) {
  const FileList alone;
  RunEntry entry{.kind = EntryKind::kFolder, .place = path};
  if (!IsChosen(context.state, entry)) return;
  WorkingFolder(context, alone, Claim::kOwnList).OfFolder(path).RemoveFolder(NamePart(path));
  NoteEntry(context.state, std::move(entry));
}

bool IsTemporary(const Machine& machine, Folder& folder) {
  const auto temporary = machine.files.OpenFolder(machine.system.TempFolder());
  return temporary && temporary->Id() == folder.Id();
}

// Why a folder may not go with all that is in it; "" when it may. The user's own folders are
// emptied by lists of his, and never taken away.
Sentence WhyNotWhole(CleaningContext& context, Folder& folder) {
  ProtectedPlaces& places = PlacesOf(context);
  Sentence why = places.WhyNot(folder, "*.*", true, Claim::kRecipe);
  if (!why.empty() || !(places.IsNoted(folder) || IsTemporary(context.machine, folder))) return why;
  return Say("it is a folder that Windows or its programs expect; name what lies in it.");
}

void RemoveWhole(CleaningContext& context, const std::string& path) {
  std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(path);
  if (!folder) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  if (const Sentence why = WhyNotWhole(context, *folder); !why.empty())
    throw Error(Error::Kind::kDenied, Say("%1 was not removed: %2", path, why));
  const FileList list = CollectFiles(context, std::move(folder), WithBackslash(path), "*.*");
  if (context.state.AbortRequested) return;
  RemovePendingFiles(context, list, Claim::kRecipe);
  if (context.state.AbortRequested) return;
  RemovePendingFolders(context, list);
}

// Why a link may not go; "" when it may. Windows marks its own, which old programs go by, and what
// leads to a folder that users know is as good as that folder.
Sentence WhyNotLink(CleaningContext& context, const std::string& path) {
  const auto info = context.machine.files.Look(path);
  if (info && (info->attributes & kSystem) != 0) return Say("it is a link that Windows needs.");
  ProtectedPlaces& places = PlacesOf(context);
  const auto parent = OpenFolderOf(context.machine.files, path);
  Sentence why = places.WhyNotFile(*parent, path, Claim::kOwnList);
  if (!why.empty()) return why;
  try {
    const auto target = context.machine.files.OpenLinked(path);
    if (!target || !places.IsNoted(*target)) return {};
    return Say("it leads to a folder that Windows or its programs expect.");
  } catch (const Error&) {  // a dead one
    return {};
  }
}

void RemoveLink(CleaningContext& context, const std::string& path) {
  const Sentence why = WhyNotLink(context, path);
  if (!why.empty()) throw Error(Error::Kind::kDenied, Say("%1 was not removed: %2", path, why));
  RemoveItself(context, path);
}

// What is left in it was told, unless nobody saw it, or it was left out of the choice.
void RemoveEmptied(CleaningContext& context, const std::string& path, uint64_t told_before) {
  RunState& state = context.state;
  try {
    RemoveItself(context, path);
  } catch (const Error& error) {
    const bool is_told = state.Choice || state.StayedCount + state.KeptCount > told_before;
    if (error.kind() != Error::Kind::kNotEmpty || !is_told) throw;
  }
}

void RemoveFound(CleaningContext& context, const std::string& path, const FileInfo& info) {
  const uint64_t told = context.state.StayedCount + context.state.KeptCount;
  if (info.is_link && info.is_folder) return RemoveLink(context, path);
  if (!info.is_folder) return void(RemoveFile(context, path, Claim::kOwnList));
  RemoveWhole(context, path);
  if (!context.state.AbortRequested) RemoveEmptied(context, path, told);
}

[[noreturn]] void RefuseDrive(CleaningContext& context, const std::string& root) {
  const auto folder = context.machine.files.OpenFolder(root);
  const Sentence why = folder ? WhyNotWhole(context, *folder) : Sentence();
  throw Error(Error::Kind::kDenied,
              Say("%1 was not removed: %2", root, why.empty() ? Say("it is a whole drive.") : why));
}

// By its true name, whatever was typed; a colon would name a part of a file.
void RemoveNamed(CleaningContext& context, const std::string& typed) {
  try {
    if (FolderPart(typed).empty()) RefuseDrive(context, WithBackslash(typed));
    const auto parent =
        typed.find(':', 2) == typed.npos ? OpenFolderOf(context.machine.files, typed) : nullptr;
    const std::string path =
        parent ? std::string(FolderPart(typed)) + TrueName(*parent, NamePart(typed)) : typed;
    const auto info = parent ? context.machine.files.Look(path, Detail::kKind) : std::nullopt;
    if (!info) throw Error(Error::Kind::kMissing, Say("There is no such file or folder."));
    NotePlace(context.state);
    RemoveFound(context, path, *info);
  } catch (const Error& error) {
    NoteStayed(context.state, typed, error);
  }
}

bool IsBelow(std::string_view path, const std::vector<std::string>& others) {
  return std::ranges::any_of(others, [path](const std::string& other) {
    return path.size() > other.size() && EqualsNoCase(path.substr(0, other.size()), other) &&
           path[other.size()] == '\\';
  });
}

// Without those that go with another of them.
std::vector<std::string> Outermost(std::span<const std::string> paths) {
  std::vector<std::string> all, outermost;
  for (const std::string& path : paths) all.emplace_back(WithoutBackslash(path));
  for (const std::string& path : all) {
    if (!IsBelow(path, all) && std::ranges::find(outermost, path) == outermost.end())
      outermost.push_back(path);
  }
  return outermost;
}

}  // namespace

void CleanNamed(CleaningContext& context, std::span<const std::string> paths) {
  RunState& state = context.state;
  const SetForNow of_any_age(state.OlderThanDays, 0);  // ages are for what nobody named
  ResetItemCounters(state);
  state.Entries->BeginRule(Mark("Named by hand"));
  for (const std::string& path : Outermost(paths)) {
    if (StopsRun(context)) break;
    RemoveNamed(context, path);
  }
  state.Entries->BeginRule("");
  if (state.AbortRequested) return;
  AppendFilesLine(context, Mark("Named by hand... "));
}

}  // namespace quellix
