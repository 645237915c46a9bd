#include "platform/locale.h"

#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

#include "platform/text.h"

namespace quellix {
namespace {

std::chrono::year_month_day ToCalendar(const LocalTime& time) {
  return {std::chrono::year(time.year), std::chrono::month(static_cast<unsigned>(time.month)),
          std::chrono::day(static_cast<unsigned>(time.day))};
}

// One piece of a date or time picture: a letter with its count, or literal text with count 0.
struct Piece {
  char letter = 0;
  size_t count = 0;
  std::string literal;
};

std::vector<Piece> SplitPicture(std::string_view picture) {
  std::vector<Piece> pieces;
  for (size_t at = 0; at < picture.size();) {
    if (picture[at] == '\'') {  // quoted literal
      const size_t end = std::min(picture.find('\'', at + 1), picture.size());
      pieces.push_back({0, 0, std::string(picture.substr(at + 1, end - at - 1))});
      at = end + 1;
    } else if (std::string_view("dMyhHmst").find(picture[at]) != std::string_view::npos) {
      const size_t start = at;
      while (at < picture.size() && picture[at] == picture[start]) ++at;
      pieces.push_back({picture[start], at - start, {}});
    } else {
      pieces.push_back({0, 0, std::string(1, picture[at++])});
    }
  }
  return pieces;
}

std::string Digits(int value, size_t count) {
  char text[16];
  std::snprintf(text, sizeof text, count > 1 ? "%02d" : "%d", value);
  return text;
}

int TwelveHour(int hour) { return hour % 12 == 0 ? 12 : hour % 12; }

std::string FormatPiece(const Piece& piece, const LocalTime& time, const Locale& locale) {
  switch (piece.letter) {
    case 'd':
      return Digits(time.day, piece.count);
    case 'M':
      return Digits(time.month, piece.count);
    case 'y':
      return piece.count > 2 ? std::to_string(time.year) : Digits(time.year % 100, 2);
    case 'h':
      return Digits(TwelveHour(time.hour), piece.count);
    case 'H':
      return Digits(time.hour, piece.count);
    case 'm':
      return Digits(time.minute, piece.count);
    case 's':
      return Digits(time.second, piece.count);
    case 't': {
      const std::string& half = time.hour < 12 ? locale.am : locale.pm;
      return piece.count > 1 ? half : half.substr(0, 1);
    }
    default:
      return piece.literal;
  }
}

std::string FormatPicture(std::string_view picture, const LocalTime& time, const Locale& locale) {
  std::string result;
  for (const Piece& piece : SplitPicture(picture)) result += FormatPiece(piece, time, locale);
  return result;
}

std::optional<int> TakeNumber(std::string_view& text) {
  size_t length = 0;
  int value = 0;
  while (length < text.size() && length < 4 && text[length] >= '0' && text[length] <= '9') {
    value = value * 10 + (text[length++] - '0');
  }
  text.remove_prefix(length);
  return length == 0 ? std::nullopt : std::optional(value);
}

bool TakeHalf(std::string_view& text, const Locale& locale) {
  for (const std::string& half : {locale.am, locale.pm}) {
    if (!half.empty() && EqualsNoCase(text.substr(0, half.size()), half)) {
      text.remove_prefix(half.size());
      return true;
    }
  }
  return locale.am.empty() || locale.pm.empty();
}

bool InRange(char letter, int value) {
  switch (letter) {
    case 'd':
      return value >= 1 && value <= 31;
    case 'M':
      return value >= 1 && value <= 12;
    case 'y':
      return true;
    case 'h':
    case 'H':
      return value <= 23;
    default:
      return value <= 59;
  }
}

bool TakePicture(std::string_view& text, std::string_view picture, const Locale& locale) {
  for (const Piece& piece : SplitPicture(picture)) {
    if (piece.letter == 't') {
      if (!TakeHalf(text, locale)) return false;
    } else if (piece.letter != 0) {
      const std::optional<int> value = TakeNumber(text);
      if (!value || !InRange(piece.letter, *value)) return false;
    } else if (text.starts_with(piece.literal)) {
      text.remove_prefix(piece.literal.size());
    } else {
      return false;
    }
  }
  return true;
}

// "3;0" repeats groups of three; "3;2;0" goes on with groups of two; "3" groups once.
std::string GroupDigits(std::string digits, const Locale& locale) {
  const std::vector<std::string> sizes = Split(locale.grouping, ';');
  size_t index = 0, at = digits.size();
  int size = std::atoi(sizes[0].c_str());
  while (size > 0 && at > static_cast<size_t>(size)) {
    at -= size;
    digits.insert(at, locale.thousand);
    if (index + 1 >= sizes.size()) break;
    const int next = std::atoi(sizes[index + 1].c_str());
    if (next > 0) {
      size = next;
      ++index;
    }
  }
  return digits;
}

}  // namespace

bool IsCalendarDate(const LocalTime& time) { return ToCalendar(time).ok(); }

int64_t DayNumber(const LocalTime& time) {
  return std::chrono::sys_days(ToCalendar(time)).time_since_epoch().count();
}

std::string FormatDateTime(const LocalTime& time, const Locale& locale) {
  std::string result = FormatPicture(locale.short_date, time, locale);
  if (time.hour != 0 || time.minute != 0 || time.second != 0) {
    result += ' ' + FormatPicture(locale.time_format, time, locale);
  }
  return result;
}

bool IsDateTime(std::string_view text, const Locale& locale) {
  text = TrimBlanks(text);
  if (!TakePicture(text, locale.short_date, locale)) return false;
  if (text.empty()) return true;
  if (!text.starts_with(' ')) return false;
  text.remove_prefix(1);
  return TakePicture(text, locale.time_format, locale) && text.empty();
}

std::string FormatNumber(double value, int decimals, const Locale& locale) {
  const double scale = std::pow(10.0, decimals);
  const double rounded = std::floor(std::fabs(value) * scale + 0.5) / scale;
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", decimals, rounded);
  const std::string_view all = text;
  const size_t point = std::min(all.find('.'), all.size());
  std::string whole(all.substr(0, point));
  if (whole == "0" && decimals > 0 && !locale.leading_zero) whole.clear();
  std::string result = value < 0 && rounded != 0 ? "-" : "";
  result += GroupDigits(whole, locale);
  if (decimals > 0) result.append(locale.decimal).append(all.substr(point + 1));
  return result;
}

std::string FormatCount(uint64_t count, const Locale& locale) {
  return GroupDigits(std::to_string(count), locale);
}

}  // namespace quellix
