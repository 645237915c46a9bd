#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"
#include "run/run_state.h"

namespace quellix {

// What LoadGeneralSettings found in Settings.ini for the main window.
struct GeneralSettings {
  bool auto_clean = false;
  std::optional<int16_t> interval_minutes =
      std::nullopt;  // nothing when it is off or does not fit 16 bits
  bool startup_clean = false;
  bool protect1 = false;  // the empty-files item may be used
  bool protect2 = false;  // the dead-shortcut item may be used
  bool tip_box = true;
  bool tray_icon = false;  // closing the window leaves an icon while cleaning is automatic
};

// Settings.ini in the program folder, one key at a time.
class Settings {
 public:
  explicit Settings(const Machine& machine) : machine_(machine) {}

  // The value, or `fallback` when it is absent; cut to `buffer` - 1 characters and at the first
  // NUL.
  std::string ReadIniValue(std::string_view section, std::string_view key,
                           std::string_view fallback, size_t buffer = 255) const;
  // Throws Error when Settings.ini cannot be written; it then stays as it was.
  void WriteIniValue(std::string_view section, std::string_view key, std::string_view value);

  // Throws Error when Settings.ini is there but cannot be read: every key then has its default.
  void RequireReadable() const;
  bool IsReadable() const;

  GeneralSettings LoadGeneralSettings() const;
  // Sets the removal mode, its options, the backup folder and its options. While Settings.ini
  // cannot be read, what was loaded before stays, or else all have their defaults.
  void LoadDeletionSettings(RunState& state) const;

  // LastCleaned: reading gives nothing unless it is a date in the user's form. An absent key reads
  // as the present; what is shown then is "Never".
  std::optional<std::string> LastCleaned() const;
  std::string LastCleanedText() const;
  // Stores the present date and time; returns the text.
  std::string StoreLastCleaned();

 private:
  std::string Path() const;

  Machine machine_;
};

}  // namespace quellix
