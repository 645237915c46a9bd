#include "settings/preferences.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

using Text = std::string_view;

// How a member is read from its key's text, and written.
struct Form {
  void (*read)(Preferences& preferences, Text text);
  std::string (*write)(const Preferences& preferences);
};

template <auto Member>
constexpr Form kBox = {
    [](Preferences& to, Text text) { to.*Member = ToNumber(text) == 1; },
    [](const Preferences& from) -> std::string { return from.*Member ? "1" : "0"; }};

template <auto Member>
constexpr Form kNumber = {
    [](Preferences& to, Text text) { to.*Member = ToInt16(text); },
    [](const Preferences& from) { return std::to_string((from.*Member).value_or(1)); }};

// A value beyond a byte counts as off, like one that is no number.
template <auto Member>
constexpr Form kByte = {[](Preferences& to, Text text) {
                          const int16_t number = ToInt16(text).value_or(0);
                          const bool fits = number >= 0 && number <= UINT8_MAX;
                          to.*Member = static_cast<uint8_t>(fits ? number : 0);
                        },
                        [](const Preferences& from) { return std::to_string(from.*Member); }};

template <auto Member>
constexpr Form kWord = {[](Preferences& to, Text text) { to.*Member = text; },
                        [](const Preferences& from) { return from.*Member; }};

constexpr Form kFolder = {[](Preferences& to, Text text) { to.BackupFolder = WithBackslash(text); },
                          [](const Preferences& from) { return from.BackupFolder; }};

constexpr Form kStep = {[](Preferences& to, Text text) {
                          const double step = ToNumber(text).value_or(1);
                          to.WipeStep = static_cast<uint64_t>(
                              std::clamp(step, 1.0, static_cast<double>(kLargestWipeStep)));
                        },
                        [](const Preferences& from) { return std::to_string(from.WipeStep); }};

// Any other letter backs up, as it always has: the mode that loses nothing.
constexpr Text kMethods = "DRW";
constexpr Form kMethod = {
    [](Preferences& to, Text text) {
      const size_t place = text.size() == 1 ? kMethods.find(text) : Text::npos;
      to.RemovalMode = place == Text::npos ? kBackUp : static_cast<RemovalModes>(kDelete + place);
    },
    [](const Preferences& from) -> std::string {
      return {from.RemovalMode == kBackUp
                  ? 'B'
                  : kMethods[static_cast<size_t>(from.RemovalMode - kDelete)]};
    }};

// What is negative or no number counts as 0.
template <auto Member>
constexpr Form kCount = {[](Preferences& to, Text text) {
                           to.*Member = std::max<int16_t>(ToInt16(text).value_or(0), 0);
                         },
                         [](const Preferences& from) { return std::to_string(from.*Member); }};

// Beyond the bounds the nearest counts.
constexpr Form kPercent = {[](Preferences& to, Text text) {
                             to.low_disk =
                                 std::clamp<int16_t>(ToInt16(text).value_or(0), 0, kMostLowDisk);
                           },
                           [](const Preferences& from) { return std::to_string(from.low_disk); }};

constexpr size_t kShort = 255, kLong = 512;  // characters that a value is read to, less one

struct Row {
  const char *section, *key;
  Form form;
  bool all_users = false;  // written whenever the Options are accepted
  size_t buffer = kShort;
};

// In the order in which they are written.
constexpr Row kRows[] = {
    {"General", "StartupClean", kBox<&Preferences::startup_clean>, true},
    {"General", "AutoClean", kBox<&Preferences::auto_clean>, true},
    {"General", "HM", kNumber<&Preferences::hours>, true},
    {"General", "Duration", kNumber<&Preferences::duration>, true},
    {"General", "DelMethod", kMethod, true, kLong},
    {"General", "ExtraS", kByte<&Preferences::ExtraSecurity>, true},
    {"General", "Rename", kByte<&Preferences::RenameBeforeDelete>, true},
    {"Backup", "Path", kFolder, true},
    {"General", "Protect1", kBox<&Preferences::protect1>, true},
    {"General", "Protect2", kBox<&Preferences::protect2>, true},
    {"General", "TipBox", kBox<&Preferences::tip_box>, true},
    {"General", "TrayIcon", kBox<&Preferences::tray_icon>},
    {"General", "LowDisk", kPercent},
    {"General", "WipeStep", kStep},
    {"General", "AllValues", kBox<&Preferences::AllValues>},
    {"General", "KeepPins", kBox<&Preferences::KeepPins>},
    {"General", "OlderThanDays", kCount<&Preferences::OlderThanDays>},
    {"General", "Ask", kBox<&Preferences::ask>},
    {"General", "SelectRisky", kBox<&Preferences::select_risky>},
    {"General", "KeepLogs", kCount<&Preferences::kept_logs>},
    {"General", "CheckUpdates", kBox<&Preferences::check_updates>},
    {"General", "Language", kWord<&Preferences::language>},
    {"General", "LogLanguage", kBox<&Preferences::log_in_language>},
    {"Backup", "Strict", kBox<&Preferences::Strict>},
    {"Backup", "KeepOnAbort", kBox<&Preferences::KeepOnAbort>},
    {"Backup", "Registry", kBox<&Preferences::BackupRegistry>},
    {"Backup", "KeepDays", kCount<&Preferences::KeepDays>},
    {"Backup", "Overwrite", kWord<&Preferences::overwrite>},
};

}  // namespace

std::optional<int16_t> Preferences::IntervalMinutes() const {
  if (!auto_clean || !duration || !hours) return std::nullopt;
  const int minutes = *hours == 1 ? *duration * 60 : *duration;
  if (minutes > INT16_MAX || minutes < INT16_MIN) return std::nullopt;
  return static_cast<int16_t>(minutes);
}

void ReadPreferences(const IniText& settings, Preferences& preferences) {
  for (const Row& row : kRows) {
    const std::optional<std::string_view> value = settings.Find(row.section, row.key);
    if (value) row.form.read(preferences, CutToBuffer(*value, row.buffer));
  }
}

std::vector<IniEntry> ChangedPreferences(const Preferences& preferences, const Preferences& stored,
                                         bool all_users) {
  std::vector<IniEntry> entries;
  for (const Row& row : kRows) {
    std::string value = row.form.write(preferences);
    if ((row.all_users && all_users) || value != row.form.write(stored)) {
      entries.push_back({row.section, row.key, std::move(value)});
    }
  }
  return entries;
}

}  // namespace quellix
