#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "settings/preferences.h"

namespace quellix {

// Settings.ini in the program folder; until there is one, that which came with the program.
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

  // All choices in one reading; while Settings.ini cannot be read, the defaults.
  Preferences Load() const;
  // Writes what differs from `stored`, in one replacement of the file; with `all_users` set also
  // what every user's file holds. Keys that are none of ours stay. Throws Error; the old file then
  // stays.
  void Save(const Preferences& preferences, const Preferences& stored, bool all_users);
  // Those that tell how files go. While Settings.ini cannot be read, what was loaded before stays,
  // or else all have their defaults.
  void LoadDeletionSettings(RemovalOptions& options) const;

  // LastCleaned: reading gives nothing unless it is a date in the user's form. An absent key reads
  // as the present; what is shown then is "Never".
  std::optional<std::string> LastCleaned() const;
  std::string LastCleanedText() const;
  // Stores the present date and time; returns the text.
  std::string StoreLastCleaned();
  // When an item was cleaned last, as text; "" when that is not known.
  std::string ItemCleanedText(std::string_view item_key) const;
  // Stores the present date and time for some items. Throws Error.
  void StoreItemsCleaned(std::span<const std::string_view> item_keys);

 private:
  std::string Path() const;
  void Write(const std::vector<IniEntry>& entries);

  Machine machine_;
};

}  // namespace quellix
