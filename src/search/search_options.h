#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// The five lines of srch.txt. Check values are those of the check boxes: 0, 1 or 2.
struct SearchOptions {
  // Entries of the drive list, each behind a blank; nothing without srch.txt: the drive with
  // Windows.
  std::optional<std::string> drives;

  int file_reference = 1;  // only 1 is set
  int path_reference = 1;  // only 1 is set

  // The other checks are set when they are not 0.
  int date = 0;
  std::optional<LocalTime> first_date, second_date;  // nothing: none that can be read

  // Kept and stored, but no search has ever applied the size.
  int size = 0;
  bool size_equals = false, size_minimum = true, size_maximum = false;
  int32_t size_kb = 1000;

  int read_only = 1, hidden = 1, system = 1;
};

// From srch.txt. What is missing or makes no sense in it has its default. Throws Error when it is
// there but cannot be read.
SearchOptions LoadSearchOptions(const Machine& machine);

// The lines of srch.txt and back. A date that is not there is written as that of `now`.
SearchOptions ParseSearchOptions(std::vector<std::string> lines, const Locale& locale);
std::vector<std::string> SearchOptionLines(const SearchOptions& options, const Locale& locale,
                                           const LocalTime& now);

// Replaces srch.txt. Dates are written in the user's short form. Throws Error; the old file then
// stays.
void SaveSearchOptions(const Machine& machine, const SearchOptions& options);

// The first line for the chosen entries of the drive list.
std::string JoinDrives(const std::vector<std::string>& entries);

// A file time in local time: "mm/dd/yyyy h:nn:ss AM/PM", the hour without a leading zero.
std::string FormatFileTime(System& system, int64_t filetime);

}  // namespace quellix
