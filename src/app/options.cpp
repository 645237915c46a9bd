#include "app/options.h"

#include "app/settings.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

// Whether a path is a folder or lies below it, as both are written.
bool LiesIn(std::string_view path, std::string_view folder) {
  const std::string inner = WithBackslash(TrimBlanks(path));
  const std::string outer = WithBackslash(TrimBlanks(folder));
  return outer.size() > 1 && EqualsNoCase(std::string_view(inner).substr(0, outer.size()), outer);
}

// What lies in the folder of the backups stays in every run, so it must not hold what is cleaned;
// and where it lies in a folder that is emptied by others, the backups are soon lost.
std::string WhyNotForBackups(const Machine& machine, std::string_view backups,
                             const OptionList& own_folders) {
  System& system = machine.system;
  const std::string profile = system.Environment("USERPROFILE").value_or("");
  std::vector<std::string> cleaned = {system.TempFolder()};
  for (const ListRow& row : own_folders.rows()) cleaned.push_back(row.text);
  for (const std::string& folder : cleaned) {
    if (LiesIn(folder, backups)) return "It holds " + folder + ", which is cleaned.";
    if (LiesIn(backups, folder)) return "It lies in " + folder + ", which is cleaned.";
  }
  for (const std::string& folder : {system.WindowsFolder(), profile}) {
    if (!folder.empty() && LiesIn(folder, backups)) return "It holds " + folder + ".";
  }
  return LiesIn(backups, system.WindowsFolder()) ? "It lies in the folder of Windows." : "";
}

std::string_view TitleOf(const OptionList& list) { return list.page().title; }

}  // namespace

Options::Options(const Machine& machine)
    : general(LoadGeneralOptions(machine)), cookies(machine), machine_(machine), saved_(general) {
  try {
    Settings(machine).RequireReadable();
  } catch (const Error& error) {
    settings_problem_ =
        std::string("The settings could not be read; their defaults are shown. ") + error.what();
  }
  SearchOptions stored;
  try {
    stored = LoadSearchOptions(machine);
  } catch (const Error& error) {
    search_problem_ =
        std::string("srch.txt could not be read, so it stays as it is. ") + error.what();
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
  if (general.method == 'B' || general.backup_folder != saved_.backup_folder) {
    const OptionList& own_folders = lists.back();
    const std::string why = WhyNotForBackups(machine_, general.backup_folder, own_folders);
    if (!why.empty()) {
      return Refusal{OptionsField::kBackupFolder,
                     "Backups cannot be kept in " + general.backup_folder + ". " + why};
    }
  }
  if (!search_problem_.empty()) return std::nullopt;
  if (!HasSensibleDates(search)) {
    return Refusal{OptionsField::kDates, "The first date must lie before the second one."};
  }
  if (!HasSensibleSize(search)) {
    return Refusal{OptionsField::kSize,
                   "Please enter a whole number of kilobytes from 0 to 2147483647."};
  }
  return std::nullopt;
}

std::string Options::Save() {
  std::string problems;
  const auto attempt = [&problems](std::string_view what, const auto& save) {
    try {
      save();
    } catch (const Error& error) {
      problems.append(what).append(" could not be saved. ").append(error.what()).append("\n");
    }
  };
  problems = SaveGeneral();
  if (search_problem_.empty()) {
    attempt("The search options", [&] { SaveSearchDraft(machine_, search); });
  }
  for (OptionList& list : lists) attempt(TitleOf(list), [&] { list.Save(); });
  attempt("The cookies to keep", [&] { cookies.Save(); });
  return problems;
}

// Defaults that stand in for what could not be read must not replace it.
std::string Options::SaveGeneral() {
  if (!settings_problem_.empty()) {
    return "The settings could not be saved, as they could not be read when the Options were "
           "opened. Please open them again.\n";
  }
  const std::string problems = SaveGeneralSettings(machine_, general, saved_);
  saved_ = LoadGeneralOptions(machine_);
  return problems;
}

OptionsPage PageOf(OptionsField field) {
  switch (field) {
    case OptionsField::kDuration:
      return OptionsPage::kGeneral;
    case OptionsField::kBackupFolder:
      return OptionsPage::kDeletion;
    default:
      return OptionsPage::kSearch;
  }
}

}  // namespace quellix
