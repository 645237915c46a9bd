#include "app/options_general.h"

#include <algorithm>
#include <utility>

#include "app/explorer_menu.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/numbers.h"
#include "settings/path_check.h"
#include "settings/settings.h"

namespace quellix {
namespace {

constexpr const char* kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunName = "Quellix";
constexpr size_t kLongestPath = 254;  // characters that are read back

std::string RunText(const Machine& machine) {
  return "\"" + machine.installed_folder + "\\quellix.exe\" -S";
}

// A whole number within the limits; nothing for any other text.
std::optional<int> WholeNumber(std::string_view text, int least, int most) {
  text = TrimBlanks(text);
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == text.npos;
  const std::optional<double> number = digits ? ToNumber(text) : std::nullopt;
  if (!number || *number < least || *number > most) return std::nullopt;
  return static_cast<int>(*number);
}

std::optional<int> Duration(const GeneralOptions& options) {
  return WholeNumber(options.typed_duration, 1, LongestDuration(options.InHours()));
}

std::optional<int> LowDisk(const GeneralOptions& options) {
  return WholeNumber(options.typed_low_disk, 0, kMostLowDisk);
}

bool HasDrive(System& system, char letter) {
  return std::ranges::any_of(system.Drives(), [upper = letter & ~0x20](const Drive& drive) {
    return drive.letter == upper;
  });
}

std::string WhyNotBackupFolder(const Machine& machine, const GeneralOptions& options) {
  const std::string folder = WithBackslash(TrimBlanks(options.BackupFolder));
  if (folder.empty()) return Tr("Please choose the folder for backups.");
  std::string why = Tr(WhyNoPath(folder));
  if (why.empty() && ToUtf16(folder).size() > kLongestPath) {
    why = Tr("The path of the backup folder is longer than 254 characters.");
  }
  // Without the folder files would go without a backup. Settings of a volume have no drive.
  if (why.empty() && options.RemovalMode == kBackUp && folder[1] == ':' && folder[0] != '@' &&
      !HasDrive(machine.system, folder[0])) {
    why = Tr("There is no drive %1 to keep the backups on.", folder.substr(0, 2));
  }
  return why;
}

void SaveRunValue(const Machine& machine, bool wanted) {
  const RunValue now = LookAtRunValue(machine);
  if (now == (wanted ? RunValue::kOurs : RunValue::kMissing)) return;
  const auto key = machine.registry.Create(RegistryRoot::kCurrentUser, kRunKey);
  if (wanted) {
    key->SetValue(kRunName, {kRegSz, ToUtf16Bytes(RunText(machine)) + std::string(2, '\0')});
  } else {
    key->DeleteValue(kRunName);
  }
  key->Flush();
}

bool StartsWithWindows(const Machine& machine) {
  try {
    return LookAtRunValue(machine) != RunValue::kMissing;
  } catch (const Error&) {  // told when it is saved
    return false;
  }
}

bool HasExplorerMenu(const Machine& machine) {
  try {
    return LookAtExplorerMenu(machine) != ExplorerMenu::kMissing;
  } catch (const Error&) {  // told when it is saved
    return false;
  }
}

// An unused field that makes no sense keeps what was there.
Preferences ToBeStored(const GeneralOptions& options, const GeneralOptions& loaded) {
  Preferences preferences = static_cast<const Preferences&>(options);
  const std::optional<int> typed = Duration(options);
  preferences.duration = typed ? static_cast<int16_t>(*typed) : loaded.duration;
  if (const auto percent = LowDisk(options)) preferences.low_disk = static_cast<int16_t>(*percent);
  preferences.ExtraSecurity = options.extra_security ? 1 : 0;
  preferences.RenameBeforeDelete = options.rename ? 1 : 0;
  preferences.BackupFolder = WithBackslash(TrimBlanks(options.BackupFolder));
  return preferences;
}

// "The settings could not be saved. ..." when `save` fails, else "".
template <typename Save>
std::string Attempt(std::string_view what, Save save) {
  try {
    save();
    return {};
  } catch (const Error& error) {
    return Tr("%1 could not be saved. %2", what, Shown(error)) + "\n";
  }
}

}  // namespace

void TypeLowDisk(GeneralOptions& options, std::string typed) {
  options.typed_low_disk = std::move(typed);
  if (LowDisk(options).value_or(0) > 0) options.tray_icon = true;
}

void TakeTrayIcon(GeneralOptions& options, bool wanted) {
  options.tray_icon = wanted;
  if (!wanted) options.typed_low_disk = "0";
}

int LongestDuration(bool hours) { return hours ? INT16_MAX / 60 : INT16_MAX; }

RunValue LookAtRunValue(const Machine& machine) {
  const auto key =
      machine.registry.Open(RegistryRoot::kCurrentUser, kRunKey, RegistryAccess::kRead);
  const std::optional<RegistryValue> value = key ? key->QueryValue(kRunName) : std::nullopt;
  if (!value) return RunValue::kMissing;
  const bool ours = value->type == kRegSz &&
                    EqualsNoCase(TrimNull(FromUtf16Bytes(value->bytes)), RunText(machine));
  return ours ? RunValue::kOurs : RunValue::kChanged;
}

GeneralOptions LoadGeneralOptions(const Machine& machine) {
  GeneralOptions options{Settings(machine).Load()};
  options.start_with_windows = StartsWithWindows(machine);
  options.explorer_menu = HasExplorerMenu(machine);
  options.extra_security = options.ExtraSecurity != 0;
  options.rename = options.RenameBeforeDelete == 1;
  options.typed_duration = std::to_string(options.duration.value_or(1));
  options.typed_low_disk = std::to_string(options.low_disk);
  if (TrimBlanks(options.BackupFolder).empty()) {
    options.BackupFolder = machine.program_folder + "\\Backup\\";
  }
  return options;
}

std::optional<Refusal> CheckGeneralOptions(const Machine& machine, const GeneralOptions& options) {
  if (options.auto_clean && !Duration(options)) {
    const std::string most = std::to_string(LongestDuration(options.InHours()));
    return Refusal{OptionsField::kDuration,
                   options.InHours()
                       ? Tr("Please enter a whole number of hours from 1 to %1.", most)
                       : Tr("Please enter a whole number of minutes from 1 to %1.", most)};
  }
  if (!LowDisk(options)) {
    return Refusal{
        OptionsField::kLowDisk,
        Tr("Please enter a whole number of per cent from 0 to %1.", std::to_string(kMostLowDisk))};
  }
  const std::string why = WhyNotBackupFolder(machine, options);
  if (!why.empty()) return Refusal{OptionsField::kBackupFolder, why};
  return std::nullopt;
}

std::string SaveGeneralSettings(const Machine& machine, const GeneralOptions& options,
                                const GeneralOptions& loaded) {
  std::string problems = Attempt(Tr("Starting with Windows"),
                                 [&] { SaveRunValue(machine, options.start_with_windows); });
  problems += Attempt(Tr("The entry in Explorer's menu"),
                      [&] { SaveExplorerMenu(machine, options.explorer_menu); });
  problems += Attempt(Tr("The settings"),
                      [&] { Settings(machine).Save(ToBeStored(options, loaded), loaded, true); });
  return problems;
}

}  // namespace quellix
