#include "cleaners/named_places.h"

#include <memory>
#include <string_view>

#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

// Ages are for what nobody named.
class OfAnyAge {
 public:
  explicit OfAnyAge(RunState& state) : state_(state), days_(state.OlderThanDays) {
    state_.OlderThanDays = 0;
  }
  ~OfAnyAge() { state_.OlderThanDays = days_; }
  OfAnyAge(const OfAnyAge&) = delete;
  OfAnyAge& operator=(const OfAnyAge&) = delete;

 private:
  RunState& state_;
  const decltype(RunState::OlderThanDays) days_;
};

// A link, or a folder that is empty by now; one that is not keeps what is noted as stayed.
void RemoveItself(CleaningContext& context, const std::string& path) {
  const FileList alone;
  RunEntry entry{.kind = EntryKind::kFolder, .place = path};
  if (!IsChosen(context.state, entry)) return;
  try {
    WorkingFolder(context, alone, Claim::kOwnList).OfFolder(path).RemoveFolder(NamePart(path));
    NoteEntry(context.state, std::move(entry));
  } catch (const Error& error) {
    if (error.kind() == Error::Kind::kNotEmpty) return;
    NoteStayed(context.state, path, error.what(), error.kind());
  }
}

bool IsTemporary(const Machine& machine, Folder& folder) {
  const auto temporary = machine.files.OpenFolder(machine.system.TempFolder());
  return temporary && temporary->Id() == folder.Id();
}

// Why a folder may not go with all that is in it; "" when it may. The user's own folders are
// emptied by lists of his, and never taken away.
std::string WhyNotWhole(CleaningContext& context, Folder& folder) {
  ProtectedPlaces& places = PlacesOf(context);
  const std::string why = places.WhyNot(folder, "*.*", true, Claim::kRecipe);
  if (!why.empty() || !(places.IsNoted(folder) || IsTemporary(context.machine, folder))) return why;
  return "it is a folder that Windows or its programs expect; name what lies in it.";
}

void RemoveWhole(CleaningContext& context, const std::string& path) {
  std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(path);
  if (!folder) throw Error(Error::Kind::kMissing, "It is no longer there.");
  if (const std::string why = WhyNotWhole(context, *folder); !why.empty())
    throw Error(Error::Kind::kDenied, path + " was not removed: " + why);
  const FileList list = CollectFiles(context, std::move(folder), WithBackslash(path), "*.*");
  if (context.state.AbortRequested) return;
  RemovePendingFiles(context, list, Claim::kRecipe);
  if (context.state.AbortRequested) return;
  RemovePendingFolders(context, list);
}

void RemoveNamed(CleaningContext& context, const std::string& path) {
  try {
    const auto info = context.machine.files.Look(path, Detail::kKind);
    if (!info) throw Error(Error::Kind::kMissing, "There is no such file or folder.");
    NotePlace(context.state);
    if (!info->is_folder) {
      RemoveFile(context, path, Claim::kOwnList);
      return;
    }
    if (!info->is_link) RemoveWhole(context, path);
    if (!context.state.AbortRequested) RemoveItself(context, path);
  } catch (const Error& error) {
    NoteStayed(context.state, path, error.what(), error.kind());
  }
}

}  // namespace

void CleanNamed(CleaningContext& context, std::span<const std::string> paths) {
  RunState& state = context.state;
  const OfAnyAge of_any_age(state);
  ResetItemCounters(state);
  state.Entries->BeginRule("Named by hand");
  for (const std::string& path : paths) {
    if (StopsRun(context)) break;
    RemoveNamed(context, std::string(WithoutBackslash(path)));
  }
  state.Entries->BeginRule("");
  if (state.AbortRequested) return;
  state.RunLog +=
      "Named by hand... Files Deleted: " + std::to_string(state.FilesDeleted) + " Space Gained: " +
      FormatSize(state.SpaceGained, 2, true, context.machine.system.UserLocale()) + "\r\n";
}

}  // namespace quellix
