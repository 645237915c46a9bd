#include "settings/settings.h"

#include "platform/error.h"
#include "platform/words.h"
#include "settings/numbers.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr std::string_view kFile = "Settings.ini";
constexpr std::string_view kCleanUp = "CleanUp", kLastCleaned = "LastCleaned";
constexpr std::string_view kItemsCleaned = "ItemsCleaned";

}  // namespace

std::string Settings::Path() const { return FoundPath(machine_, kFile); }

void Settings::Write(const std::vector<IniEntry>& entries) {
  TakeOver(machine_, kFile);
  machine_.profile.Write(OwnPath(machine_, kFile), entries);
}

std::string Settings::ReadIniValue(std::string_view section, std::string_view key,
                                   std::string_view fallback, size_t buffer) const {
  const std::string value =
      machine_.profile.Read(Path(), section, key).value_or(std::string(fallback));
  return CutToBuffer(value, buffer);
}

void Settings::WriteIniValue(std::string_view section, std::string_view key,
                             std::string_view value) {
  Write({{std::string(section), std::string(key), std::string(value)}});
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

Preferences Settings::Load() const {
  Preferences preferences;
  preferences.BackupFolder = machine_.program_folder + "\\Backup\\";
  try {
    ReadPreferences(ReadIni(machine_.files, machine_.system, Path()), preferences);
  } catch (const Error&) {  // RequireReadable tells
  }
  return preferences;
}

void Settings::Save(const Preferences& preferences, const Preferences& stored, bool all_users) {
  Write(ChangedPreferences(preferences, stored, all_users));
}

// With the defaults a run would delete for good what its user wants to have backed up. A backup
// folder tells that something was loaded before: it always has a default.
void Settings::LoadDeletionSettings(RemovalOptions& options) const {
  if (options.BackupFolder.empty() || IsReadable())
    options = static_cast<const RemovalOptions&>(Load());
}

std::optional<std::string> Settings::LastCleaned() const {
  const Locale locale = machine_.system.UserLocale();
  std::string text =
      ReadIniValue(kCleanUp, kLastCleaned, FormatDateTime(machine_.system.Now(), locale));
  if (!IsDateTime(text, locale)) return std::nullopt;
  return text;
}

std::string Settings::LastCleanedText() const {
  const bool never = IsReadable() && ReadIniValue(kCleanUp, kLastCleaned, "").empty();
  return never ? Tr("Never") : LastCleaned().value_or("");
}

std::string Settings::StoreLastCleaned() {
  std::string text = FormatDateTime(machine_.system.Now(), machine_.system.UserLocale());
  WriteIniValue(kCleanUp, kLastCleaned, text);
  return text;
}

std::string Settings::ItemCleanedText(std::string_view item_key) const {
  return ReadIniValue(kItemsCleaned, item_key, "");
}

void Settings::StoreItemsCleaned(std::span<const std::string_view> item_keys) {
  const std::string now = FormatDateTime(machine_.system.Now(), machine_.system.UserLocale());
  std::vector<IniEntry> entries;
  for (const std::string_view key : item_keys)
    entries.push_back({std::string(kItemsCleaned), std::string(key), now});
  if (!entries.empty()) Write(entries);
}

}  // namespace quellix
