#include "settings/settings.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

constexpr uint64_t kLargestWipeStep = 16u << 20;

bool IsOne(std::string_view value) { return ToNumber(value) == 1; }

// A value beyond a byte counts as off, like one that is no number.
uint8_t ToByte(std::string_view value) {
  const std::optional<int16_t> number = ToInt16(value);
  return number && *number >= 0 && *number <= 255 ? static_cast<uint8_t>(*number) : uint8_t{0};
}

int16_t DecodeMethod(std::string_view method) {
  if (method == "R") return kRecycle;
  if (method == "D") return kDelete;
  if (method == "W") return kWipe;
  return kBackUp;
}

std::optional<int16_t> IntervalMinutes(std::string_view duration, std::string_view unit) {
  const std::optional<int16_t> number = ToInt16(duration);
  const std::optional<int16_t> hours = ToInt16(unit);
  if (!number || !hours) return std::nullopt;
  if (*hours != 1) return number;
  const int minutes = *number * 60;
  if (minutes > INT16_MAX || minutes < INT16_MIN) return std::nullopt;
  return static_cast<int16_t>(minutes);
}

}  // namespace

std::string Settings::Path() const { return machine_.program_folder + "\\Settings.ini"; }

std::string Settings::ReadIniValue(std::string_view section, std::string_view key,
                                   std::string_view fallback, size_t buffer) const {
  const std::string value =
      machine_.profile.Read(Path(), section, key).value_or(std::string(fallback));
  return std::string(TrimNull(ToUtf8(ToUtf16(value).substr(0, buffer - 1))));
}

void Settings::WriteIniValue(std::string_view section, std::string_view key,
                             std::string_view value) {
  machine_.profile.Write(Path(), section, key, value);
}

void Settings::RequireReadable() const { machine_.files.ReadWholeFile(Path()); }

bool Settings::IsReadable() const {
  try {
    RequireReadable();
    return true;
  } catch (const Error&) {
    return false;
  }
}

GeneralSettings Settings::LoadGeneralSettings() const {
  GeneralSettings general;
  general.auto_clean = IsOne(ReadIniValue("General", "AutoClean", "0"));
  if (general.auto_clean) {
    general.interval_minutes = IntervalMinutes(ReadIniValue("General", "Duration", "1"),
                                               ReadIniValue("General", "HM", "1"));
  }
  general.startup_clean = IsOne(ReadIniValue("General", "StartupClean", "0"));
  general.protect1 = IsOne(ReadIniValue("General", "Protect1", "0"));
  general.protect2 = IsOne(ReadIniValue("General", "Protect2", "0"));
  general.tip_box = IsOne(ReadIniValue("General", "TipBox", "1"));
  general.tray_icon = IsOne(ReadIniValue("General", "TrayIcon", "0"));
  return general;
}

// With the defaults a run would delete for good what its user wants to have backed up. A backup
// folder tells that something was loaded before: it always has a default.
void Settings::LoadDeletionSettings(RunState& state) const {
  if (!state.BackupFolder.empty() && !IsReadable()) return;
  state.RemovalMode = DecodeMethod(ReadIniValue("General", "DelMethod", "D", 512));
  if (state.FixedRemovalMode != 0) state.RemovalMode = state.FixedRemovalMode;
  state.ExtraSecurity = ToByte(ReadIniValue("General", "ExtraS", "0"));
  state.RenameBeforeDelete = ToByte(ReadIniValue("General", "Rename", "0"));
  const double step = ToNumber(ReadIniValue("General", "WipeStep", "1")).value_or(1);
  state.WipeStep = static_cast<uint64_t>(std::clamp(step, 1.0, double{kLargestWipeStep}));
  state.BackupFolder =
      WithBackslash(ReadIniValue("Backup", "Path", machine_.program_folder + "\\Backup\\"));
  state.AllValues = IsOne(ReadIniValue("General", "AllValues", "0"));
  state.Backup.strict = IsOne(ReadIniValue("Backup", "Strict", "0"));
  state.Backup.keep_on_abort = IsOne(ReadIniValue("Backup", "KeepOnAbort", "0"));
  state.Backup.registry = IsOne(ReadIniValue("Backup", "Registry", "1"));
}

std::optional<std::string> Settings::LastCleaned() const {
  const Locale locale = machine_.system.UserLocale();
  std::string text =
      ReadIniValue("CleanUp", "LastCleaned", FormatDateTime(machine_.system.Now(), locale));
  if (!IsDateTime(text, locale)) return std::nullopt;
  return text;
}

std::string Settings::LastCleanedText() const {
  const bool never = IsReadable() && ReadIniValue("CleanUp", "LastCleaned", "").empty();
  return never ? "Never" : LastCleaned().value_or("");
}

std::string Settings::StoreLastCleaned() {
  std::string text = FormatDateTime(machine_.system.Now(), machine_.system.UserLocale());
  WriteIniValue("CleanUp", "LastCleaned", text);
  return text;
}

}  // namespace quellix
