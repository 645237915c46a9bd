#include "app/options_general.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "settings/numbers.h"
#include "settings/path_check.h"
#include "settings/settings.h"

namespace quellix {
namespace {

constexpr const char* kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunName = "Quellix";
constexpr size_t kLongestPath = 254;  // characters that are read back

std::string RunText(const Machine& machine) {
  return "\"" + machine.program_folder + "\\quellix.exe\" -S";
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
  return WholeNumber(options.duration, 1, LongestDuration(options.hours));
}

// What the duration is stored as: an unused field that makes no sense keeps what was there.
std::string DurationText(const GeneralOptions& options, const GeneralOptions& loaded) {
  const std::optional<int> typed = Duration(options);
  return typed ? std::to_string(*typed) : loaded.duration;
}

bool HasDrive(System& system, char letter) {
  return std::ranges::any_of(system.Drives(), [upper = letter & ~0x20](const Drive& drive) {
    return drive.letter == upper;
  });
}

std::string WhyNotBackupFolder(const Machine& machine, const GeneralOptions& options) {
  const std::string folder = WithBackslash(TrimBlanks(options.backup_folder));
  if (folder.empty()) return "Please choose the folder for backups.";
  std::string why = WhyNoPath(folder);
  if (why.empty() && ToUtf16(folder).size() > kLongestPath) {
    why = "The path of the backup folder is longer than 254 characters.";
  }
  // Without the folder files would go without a backup. Settings of a volume have no drive.
  if (why.empty() && options.method == 'B' && folder[1] == ':' && folder[0] != '@' &&
      !HasDrive(machine.system, folder[0])) {
    why = "There is no drive " + folder.substr(0, 2) + " to keep the backups on.";
  }
  return why;
}

void SaveRunEntry(const Machine& machine, bool wanted) {
  const RunEntry now = LookAtRunEntry(machine);
  if (now == (wanted ? RunEntry::kOurs : RunEntry::kMissing)) return;
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
    return LookAtRunEntry(machine) != RunEntry::kMissing;
  } catch (const Error&) {  // told when it is saved
    return false;
  }
}

std::string_view Check(bool on) { return on ? "1" : "0"; }

void SaveSettings(const Machine& machine, const GeneralOptions& options,
                  const GeneralOptions& loaded) {
  Settings settings(machine);
  const auto general = [&](std::string_view key, std::string_view value) {
    settings.WriteIniValue("General", key, value);
  };
  general("StartupClean", Check(options.startup_clean));
  general("AutoClean", Check(options.auto_clean));
  general("HM", Check(options.hours));
  general("Duration", DurationText(options, loaded));
  general("DelMethod", std::string(1, options.method));
  general("ExtraS", Check(options.extra_security));
  general("Rename", Check(options.rename));
  settings.WriteIniValue("Backup", "Path", WithBackslash(TrimBlanks(options.backup_folder)));
  general("Protect1", Check(options.protect1));
  general("Protect2", Check(options.protect2));
  general("TipBox", Check(options.tip_box));
}

void SaveFurtherSettings(const Machine& machine, const GeneralOptions& options,
                         const GeneralOptions& loaded) {
  struct Row {
    const char *section, *key;
    bool GeneralOptions::*value;
  };
  constexpr Row kRows[] = {{"General", "TrayIcon", &GeneralOptions::tray_icon},
                           {"Backup", "Strict", &GeneralOptions::strict},
                           {"Backup", "KeepOnAbort", &GeneralOptions::keep_on_abort},
                           {"Backup", "Registry", &GeneralOptions::backup_registry}};
  Settings settings(machine);
  for (const Row& row : kRows) {
    if (options.*row.value == loaded.*row.value) continue;
    settings.WriteIniValue(row.section, row.key, Check(options.*row.value));
  }
  if (options.wipe_step != loaded.wipe_step) {
    settings.WriteIniValue("General", "WipeStep", std::to_string(options.wipe_step));
  }
}

// "The settings could not be saved. ..." when `save` fails, else "".
template <typename Save>
std::string Attempt(std::string_view what, Save save) {
  try {
    save();
    return {};
  } catch (const Error& error) {
    return std::string(what) + " could not be saved. " + error.what() + "\n";
  }
}

}  // namespace

int LongestDuration(bool hours) { return hours ? INT16_MAX / 60 : INT16_MAX; }

RunEntry LookAtRunEntry(const Machine& machine) {
  const auto key =
      machine.registry.Open(RegistryRoot::kCurrentUser, kRunKey, RegistryAccess::kRead);
  const std::optional<RegistryValue> value = key ? key->QueryValue(kRunName) : std::nullopt;
  if (!value) return RunEntry::kMissing;
  const bool ours = value->type == kRegSz &&
                    EqualsNoCase(TrimNull(FromUtf16Bytes(value->bytes)), RunText(machine));
  return ours ? RunEntry::kOurs : RunEntry::kChanged;
}

GeneralOptions LoadGeneralOptions(const Machine& machine) {
  const Settings settings(machine);
  const GeneralSettings general = settings.LoadGeneralSettings();
  RunState deletion;
  settings.LoadDeletionSettings(deletion);
  const std::optional<int16_t> duration =
      ToInt16(settings.ReadIniValue("General", "Duration", "1"));
  constexpr char kLetters[] = {'D', 'R', 'W', 'B'};  // by removal mode
  GeneralOptions options;
  options.start_with_windows = StartsWithWindows(machine);
  options.startup_clean = general.startup_clean;
  options.auto_clean = general.auto_clean;
  options.duration = std::to_string(duration.value_or(1));
  options.hours = ToInt16(settings.ReadIniValue("General", "HM", "1")).value_or(1) == 1;
  options.protect1 = general.protect1;
  options.protect2 = general.protect2;
  options.tip_box = general.tip_box;
  options.tray_icon = general.tray_icon;
  options.method = kLetters[deletion.RemovalMode - 1];
  options.extra_security = deletion.ExtraSecurity != 0;
  options.rename = deletion.RenameBeforeDelete == 1;
  options.wipe_step = deletion.WipeStep;
  options.backup_folder = deletion.BackupFolder;
  if (TrimBlanks(options.backup_folder).empty()) {
    options.backup_folder = machine.program_folder + "\\Backup\\";
  }
  options.strict = deletion.Backup.strict;
  options.keep_on_abort = deletion.Backup.keep_on_abort;
  options.backup_registry = ToNumber(settings.ReadIniValue("Backup", "Registry", "1")) == 1;
  return options;
}

std::optional<Refusal> CheckGeneralOptions(const Machine& machine, const GeneralOptions& options) {
  if (options.auto_clean && !Duration(options)) {
    return Refusal{OptionsField::kDuration,
                   "Please enter a whole number of " +
                       std::string(options.hours ? "hours" : "minutes") + " from 1 to " +
                       std::to_string(LongestDuration(options.hours)) + "."};
  }
  const std::string why = WhyNotBackupFolder(machine, options);
  if (!why.empty()) return Refusal{OptionsField::kBackupFolder, why};
  return std::nullopt;
}

std::string SaveGeneralSettings(const Machine& machine, const GeneralOptions& options,
                                const GeneralOptions& loaded) {
  std::string problems =
      Attempt("Starting with Windows", [&] { SaveRunEntry(machine, options.start_with_windows); });
  problems += Attempt("The settings", [&] {
    SaveSettings(machine, options, loaded);
    SaveFurtherSettings(machine, options, loaded);
  });
  return problems;
}

}  // namespace quellix
