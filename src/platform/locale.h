#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quellix {

struct LocalTime {
  int year = 0, month = 0, day = 0;  // month and day from 1
  int hour = 0, minute = 0, second = 0;
};

// Whether the date part is a day of the calendar.
bool IsCalendarDate(const LocalTime& time);
// Days since 1970 of the date part, which is a day of the calendar.
int64_t DayNumber(const LocalTime& time);

// The user's regional settings, as Windows keeps them under Control Panel\International.
struct Locale {
  std::string short_date = "M/d/yyyy";     // pictures of d, dd, M, MM, yy, yyyy
  std::string time_format = "h:mm:ss tt";  // pictures of h, hh, H, HH, m, mm, s, ss, t, tt
  std::string am = "AM", pm = "PM";
  std::string decimal = ".", thousand = ",";
  std::string grouping = "3;0";  // digits a group, as Windows writes it; "0" for none
  bool leading_zero = true;      // 0.5 rather than .5
};

// Date and time in the user's form: short date, a blank, time. At midnight exactly the time is
// left out, as Windows programs of this family write it.
std::string FormatDateTime(const LocalTime& time, const Locale& locale);

// Whether `text` is a date, with or without a time, in the user's form.
bool IsDateTime(std::string_view text, const Locale& locale);

// `value` with `decimals` digits (0 to 9) after the decimal sign, rounded half away from zero,
// with digit grouping.
std::string FormatNumber(double value, int decimals, const Locale& locale);

// How many there are, "1,204".
std::string FormatCount(uint64_t count, const Locale& locale);

}  // namespace quellix
