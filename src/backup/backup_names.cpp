#include "backup/backup_names.h"

#include <chrono>
#include <cstdio>

#include "platform/text.h"

namespace quellix {
namespace {

int ToInt(std::string_view digits) {
  int value = 0;
  for (const char c : digits) value = value * 10 + (c - '0');
  return value;
}

// Those of the date and the time; empty when there is something else.
std::string_view DigitsOf(std::string_view name) {
  if (name.size() < 6 || name[name.size() - 4] != '.') return {};
  const std::string_view digits = name.substr(2, name.size() - 6);
  const bool fits = digits.size() >= 12 && digits.size() <= 14 &&
                    digits.find_first_not_of("0123456789") == std::string_view::npos;
  return fits ? digits : std::string_view();
}

// The digits behind the date with an hour of one or two digits; nothing when that is no time.
std::optional<LocalTime> WithHourOf(size_t hour_digits, std::string_view time, LocalTime date) {
  if (time.size() < hour_digits + 3 || time.size() > hour_digits + 4) return std::nullopt;
  date.hour = ToInt(time.substr(0, hour_digits));
  date.minute = ToInt(time.substr(hour_digits, 2));
  date.second = ToInt(time.substr(hour_digits + 2));
  const bool leading_zero =
      (hour_digits == 2 && date.hour < 10) || (time.size() == hour_digits + 4 && date.second < 10);
  if (leading_zero || date.hour > 23 || date.minute > 59 || date.second > 59) return std::nullopt;
  return date;
}

}  // namespace

std::string BackupArchiveName(std::string_view prefix, const LocalTime& now,
                              std::string_view suffix) {
  char text[32];
  std::snprintf(text, sizeof text, "%02d%02d%04d%d%02d%d", now.day, now.month, now.year, now.hour,
                now.minute, now.second);
  return std::string(prefix).append(text).append(suffix);
}

std::optional<std::string> RootOfArchive(std::string_view name) {
  if (name.size() < 2 || name[1] != '_') return std::nullopt;
  if (name[0] == '_') return "\\\\";
  const char letter = name[0];
  const bool is_letter = (letter | 0x20) >= 'a' && (letter | 0x20) <= 'z';
  if (!is_letter && letter != '@') return std::nullopt;
  return std::string(1, letter) + ":\\";
}

LocalTime NextSecond(LocalTime time) {
  if (++time.second < 60) return time;
  time.second = 0;
  if (++time.minute < 60) return time;
  time.minute = 0;
  time.hour = (time.hour + 1) % 24;
  return time;
}

bool IsArchiveName(std::string_view name) {
  return RootOfArchive(name) && !DigitsOf(name).empty() &&
         EqualsNoCase(name.substr(name.size() - 4), ".zip");
}

std::optional<LocalTime> DateOfArchive(std::string_view name) {
  const std::string_view digits = DigitsOf(name);
  if (digits.empty()) return std::nullopt;
  const LocalTime date{.year = ToInt(digits.substr(4, 4)),
                       .month = ToInt(digits.substr(2, 2)),
                       .day = ToInt(digits.substr(0, 2))};
  const auto one = WithHourOf(1, digits.substr(8), date),
             two = WithHourOf(2, digits.substr(8), date);
  const std::chrono::year_month_day day(std::chrono::year(date.year),
                                        std::chrono::month(static_cast<unsigned>(date.month)),
                                        std::chrono::day(static_cast<unsigned>(date.day)));
  if (!day.ok() || (one && two)) return std::nullopt;
  return one ? one : two;
}

}  // namespace quellix
