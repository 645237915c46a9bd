#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/profile_strings.h"
#include "settings/removal_options.h"

namespace quellix {

inline constexpr int16_t kMostLowDisk = 50;

// What Settings.ini holds of the user's choices; as made, the defaults of absent keys. A new
// setting is a member here, a row in preferences.cpp, a control and a line of README.
struct Preferences : RemovalOptions {
  bool startup_clean = false;
  bool auto_clean = false;
  // Of the interval of automatic cleaning: its number, and its unit, 1 for hours, else minutes.
  // Nothing when the key holds no number of 16 bits.
  std::optional<int16_t> duration = 1;
  std::optional<int16_t> hours = 1;
  bool protect1 = false;  // the empty-files item may be used
  bool protect2 = false;  // the dead-shortcut item may be used
  bool tip_box = true;
  bool ask = false;            // before what cannot be undone
  bool select_risky = true;    // what loses data for good is ticked together with the others
  int16_t kept_logs = 0;       // how many runs are kept for reading
  bool tray_icon = false;      // closing the window leaves an icon while cleaning is automatic
  int16_t low_disk = 0;        // per cent of Windows' drive below which a run begins; 0: never
  bool check_updates = false;  // a server is asked for new versions once a week
  std::string language;  // of the windows: "" as Windows', "en", "de", or a file (see SpeakAs)
  bool log_in_language = false;   // else the logs of runs are English
  std::string overwrite = "Ask";  // what a restore does where a file is there already

  bool InHours() const { return hours.value_or(1) == 1; }
  // Those that count: only while the icon stays is the program there to look.
  int16_t LowDiskPercent() const { return tray_icon ? low_disk : int16_t{0}; }
  // Nothing when cleaning is not automatic or the interval does not fit 16 bits.
  std::optional<int16_t> IntervalMinutes() const;
};

// Takes every key that is there; the others keep what `preferences` has.
void ReadPreferences(const IniText& settings, Preferences& preferences);

// The keys to be written, in the order of the file: those that differ from `stored` and, with
// `all_users` set, also those that every user's file has once the Options were accepted.
std::vector<IniEntry> ChangedPreferences(const Preferences& preferences, const Preferences& stored,
                                         bool all_users);

}  // namespace quellix
