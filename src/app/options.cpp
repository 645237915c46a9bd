#include "app/options.h"

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/settings.h"

namespace quellix {
namespace {

// Where a folder is: itself, by what it is, and those above it. A missing one begins with the
// nearest that is there.
struct Place {
  std::string path;
  std::vector<FileId> folders;
  bool is_there = false;
};

Place PlaceOf(const Machine& machine, std::string_view path) {
  Place place{WithBackslash(TrimBlanks(path)), {}, false};
  if (path.starts_with("\\\\")) return place;  // a server that does not answer would be waited for
  for (std::string_view at = place.path; !at.empty();) {
    try {
      if (const auto folder = machine.files.OpenFolder(at)) {
        place.folders = folder->Above();
        place.folders.insert(place.folders.begin(), folder->Id());
        place.is_there = at.size() == place.path.size();
        break;
      }
    } catch (const Error&) {  // closed to us, or a link
    }
    const std::string_view above = FolderPart(WithoutBackslash(at));
    at = above.size() < at.size() ? above : "";
  }
  return place;
}

// Whether `outer` is `inner` or holds it: as they are written, for what is not there yet, or as
// they are.
bool Holds(const Place& outer, const Place& inner) {
  const auto start = std::string_view(inner.path).substr(0, outer.path.size());
  return (outer.path.size() > 1 && EqualsNoCase(start, outer.path)) ||
         (outer.is_there && std::ranges::count(inner.folders, outer.folders.front()) > 0);
}

// What lies in the folder of the backups stays in every run, so it must not hold what is cleaned;
// and where it lies in a folder that is emptied by others, the backups are soon lost.
std::string WhyNotForBackups(const Machine& machine, std::string_view path,
                             const OptionList& own_folders) {
  const Place backups = PlaceOf(machine, path);
  std::vector<std::string> cleaned = {machine.system.TempFolder()};
  for (const ListRow& row : own_folders.rows()) cleaned.push_back(row.text);
  for (const std::string& each : cleaned) {
    const Place folder = PlaceOf(machine, each);
    if (Holds(backups, folder)) return Tr("It holds %1, which is cleaned.", each);
    if (Holds(folder, backups)) return Tr("It lies in %1, which is cleaned.", each);
  }
  const Place windows = PlaceOf(machine, machine.system.WindowsFolder());
  const Place profile = PlaceOf(machine, machine.system.Environment("USERPROFILE").value_or(""));
  for (const Place* each : {&windows, &profile}) {
    if (Holds(backups, *each)) return Tr("It holds %1.", each->path);
  }
  return Holds(windows, backups) ? Tr("It lies in the folder of Windows.") : "";
}

}  // namespace

Options::Options(const Machine& machine)
    : general(LoadGeneralOptions(machine)), cookies(machine), machine_(machine), saved_(general) {
  try {
    Settings(machine).RequireReadable();
  } catch (const Error& error) {
    settings_problem_ =
        Tr("The settings could not be read; their defaults are shown. %1", Shown(error));
  }
  SearchOptions stored;
  try {
    stored = LoadSearchOptions(machine);
  } catch (const Error& error) {
    search_problem_ =
        Tr("%1 could not be read, so it stays as it is. %2", "srch.txt", Shown(error));
  }
  search = MakeSearchDraft(machine, stored);
  lists.reserve(kListPages);
  for (const ListPage& page : ListPages()) lists.emplace_back(machine, page);
}

std::string Options::Problems() const {
  std::string problems;
  const auto add = [&problems](const std::string& problem) {
    if (!problem.empty()) problems += problem + "\n";
  };
  add(settings_problem_);
  add(search_problem_);
  for (const OptionList& list : lists) add(list.problem());
  add(cookies.problem());
  return problems;
}

std::optional<Refusal> Options::Check() const {
  if (std::optional<Refusal> refusal = CheckGeneralOptions(machine_, general)) return refusal;
  if (general.RemovalMode == kBackUp || general.BackupFolder != saved_.BackupFolder) {
    const OptionList& own_folders = lists.back();
    const std::string why = WhyNotForBackups(machine_, general.BackupFolder, own_folders);
    if (!why.empty()) {
      return Refusal{OptionsField::kBackupFolder,
                     Tr("Backups cannot be kept in %1. %2", general.BackupFolder, why)};
    }
  }
  if (!search_problem_.empty()) return std::nullopt;
  if (!HasSensibleDates(search)) {
    return Refusal{OptionsField::kDates, Tr("The first date must lie before the second one.")};
  }
  if (!HasSensibleSize(search)) {
    return Refusal{OptionsField::kSize,
                   Tr("Please enter a whole number of kilobytes from 0 to 2147483647.")};
  }
  return std::nullopt;
}

std::string Options::Save() {
  std::string problems;
  const auto attempt = [&problems](std::string_view what, const auto& save) {
    try {
      save();
    } catch (const Error& error) {
      problems += Tr("%1 could not be saved. %2", what, Shown(error)) + "\n";
    }
  };
  problems = SaveGeneral();
  if (search_problem_.empty()) {
    attempt(Tr("The search options"), [&] { SaveSearchDraft(machine_, search); });
  }
  for (OptionList& list : lists) attempt(Tr(list.page().title), [&] { list.Save(); });
  attempt(Tr("The cookies to keep"), [&] { cookies.Save(); });
  return problems;
}

// Defaults that stand in for what could not be read must not replace it.
std::string Options::SaveGeneral() {
  if (!settings_problem_.empty()) {
    return Tr("The settings could not be saved, as they could not be read when the Options were "
              "opened. Please open them again.") +
           "\n";
  }
  std::string problems = SaveGeneralSettings(machine_, general, saved_);
  saved_ = LoadGeneralOptions(machine_);
  return problems;
}

OptionsPage PageOf(OptionsField field) {
  switch (field) {
    case OptionsField::kDuration:
    case OptionsField::kLowDisk:
      return OptionsPage::kGeneral;
    case OptionsField::kBackupFolder:
      return OptionsPage::kDeletion;
    default:
      return OptionsPage::kSearch;
  }
}

}  // namespace quellix
