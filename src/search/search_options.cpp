#include "search/search_options.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "platform/text.h"
#include "settings/list_files.h"
#include "settings/numbers.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr std::string_view kFile = "srch.txt";

// The fields of the lines, blanks between them; what is not there is "".
class Fields {
 public:
  explicit Fields(std::vector<std::string> lines) : lines_(std::move(lines)) {}

  std::string Line(size_t line) const { return line < lines_.size() ? lines_[line] : ""; }
  std::string Text(size_t line, size_t field) const {
    const std::vector<std::string> fields = Split(Line(line), ' ');
    return field < fields.size() ? fields[field] : "";
  }
  template <typename Number>
  void Read(size_t line, size_t field, Number& value) const {
    const std::optional<double> number = ToNumber(Text(line, field));
    if (!number) return;
    // A fraction is not 0, and not 1 either.
    const bool is_check = std::fabs(*number) < 1 && *number != 0;
    const double whole = is_check ? 2 : std::nearbyint(*number);
    if (std::fabs(whole) <= std::numeric_limits<Number>::max()) value = static_cast<Number>(whole);
  }
  void Read(size_t line, size_t field, bool& value) const {
    const std::string text = Text(line, field);
    if (EqualsNoCase(text, "True")) value = true;
    if (EqualsNoCase(text, "False")) value = false;
    if (const std::optional<double> number = ToNumber(text)) value = *number != 0;
  }

 private:
  std::vector<std::string> lines_;
};

// The numbers of a text but those of times, which have a colon beside them.
std::vector<std::string> DateNumbers(std::string_view text) {
  std::vector<std::string> numbers;
  for (size_t at = 0; at < text.size();) {
    const size_t start = text.find_first_of("0123456789", at);
    if (start == text.npos) break;
    at = std::min(text.find_first_not_of("0123456789", start), text.size());
    const bool is_time =
        (start > 0 && text[start - 1] == ':') || (at < text.size() && text[at] == ':');
    if (!is_time) numbers.emplace_back(text.substr(start, at - start));
  }
  return numbers;
}

int ToInt(const std::string& digits) { return digits.size() > 4 ? 0 : std::stoi(digits); }

// Two digits are of the years 1930 to 2029, as Windows takes them.
int FullYear(const std::string& digits) {
  const int year = ToInt(digits);
  if (digits.size() > 2) return year;
  return year + (year < 30 ? 2000 : 1900);
}

bool IsDate(const LocalTime& date) { return date.year >= 100 && IsCalendarDate(date); }

// Three numbers in the order of the user's short date or, where that makes no date, with the year
// first or with day and month the other way round: the file may come from another locale.
std::optional<LocalTime> ToDate(const std::string* numbers, const Locale& locale) {
  const std::string& picture = locale.short_date;
  const size_t y = picture.find('y'), m = picture.find('M'), d = picture.find('d');
  const bool year_first = numbers[0].size() > 2 || (numbers[2].size() <= 2 && y < m && y < d);
  const std::string* const rest = numbers + (year_first ? 1 : 0);
  LocalTime date;
  date.year = FullYear(numbers[year_first ? 0 : 2]);
  date.month = ToInt(rest[0]);
  date.day = ToInt(rest[1]);
  if (!year_first && d < m) std::swap(date.month, date.day);
  if (!IsDate(date)) std::swap(date.month, date.day);
  return IsDate(date) ? std::optional(date) : std::nullopt;
}

void ReadDates(const std::string& line, const Locale& locale, SearchOptions& options) {
  const size_t blank = line.find(' ');
  if (blank == line.npos) return;
  const std::vector<std::string> numbers = DateNumbers(std::string_view(line).substr(blank));
  if (numbers.size() != 6) return;
  options.first_date = ToDate(&numbers[0], locale);
  options.second_date = ToDate(&numbers[3], locale);
}

std::string DateText(const std::optional<LocalTime>& date, const LocalTime& otherwise,
                     const Locale& locale) {
  LocalTime day = date.value_or(otherwise);
  day.hour = day.minute = day.second = 0;  // midnight is written without its time
  return FormatDateTime(day, locale);
}

std::string Join(std::initializer_list<std::string> fields) {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : " ") + field;
  return line;
}

std::string Text(bool value) { return value ? "True" : "False"; }

}  // namespace

SearchOptions ParseSearchOptions(std::vector<std::string> lines, const Locale& locale) {
  const Fields fields(std::move(lines));
  SearchOptions options;
  options.drives = fields.Line(0);
  fields.Read(1, 0, options.file_reference);
  fields.Read(1, 1, options.path_reference);
  fields.Read(2, 0, options.date);
  ReadDates(fields.Line(2), locale, options);
  fields.Read(3, 0, options.size);
  fields.Read(3, 1, options.size_equals);
  fields.Read(3, 2, options.size_minimum);
  fields.Read(3, 3, options.size_maximum);
  fields.Read(3, 4, options.size_kb);
  fields.Read(4, 0, options.read_only);
  fields.Read(4, 1, options.hidden);
  fields.Read(4, 2, options.system);
  return options;
}

SearchOptions LoadSearchOptions(const Machine& machine) {
  if (!machine.files.Look(FoundPath(machine, kFile))) return {};
  return ParseSearchOptions(ReadListFile(machine, kFile), machine.system.UserLocale());
}

std::vector<std::string> SearchOptionLines(const SearchOptions& options, const Locale& locale,
                                           const LocalTime& now) {
  const auto number = [](auto value) { return std::to_string(value); };
  return {options.drives.value_or(""),
          Join({number(options.file_reference), number(options.path_reference)}),
          Join({number(options.date), DateText(options.first_date, now, locale),
                DateText(options.second_date, now, locale)}),
          Join({number(options.size), Text(options.size_equals), Text(options.size_minimum),
                Text(options.size_maximum), number(options.size_kb)}),
          Join({number(options.read_only), number(options.hidden), number(options.system)})};
}

void SaveSearchOptions(const Machine& machine, const SearchOptions& options) {
  WriteListFile(machine, kFile,
                SearchOptionLines(options, machine.system.UserLocale(), machine.system.Now()));
}

std::string JoinDrives(const std::vector<std::string>& entries) {
  std::string line;
  for (const std::string& entry : entries) line += " " + entry;
  return line;
}

std::string FormatFileTime(System& system, int64_t filetime) {
  const LocalTime time = system.ToLocalTime(filetime);
  char text[64];
  std::snprintf(text, sizeof text, "%02d/%02d/%04d %d:%02d:%02d %s", time.month, time.day,
                time.year, time.hour % 12 == 0 ? 12 : time.hour % 12, time.minute, time.second,
                time.hour < 12 ? "AM" : "PM");
  return text;
}

}  // namespace quellix
