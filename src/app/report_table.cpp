#include "app/report_table.h"

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace quellix {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchemaVersion = 2;

constexpr int64_t kFiletimesASecond = 10'000'000, kFrom1601To1970 = 11'644'473'600;  // seconds

Json ToJson(const ReportCell& cell) {
  return std::visit(
      [](const auto& value) -> Json {
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
          return nullptr;
        } else {
          return value;
        }
      },
      cell);
}

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ToCsv(const ReportCell& cell) {
  if (std::holds_alternative<std::monostate>(cell)) return {};
  const auto* const text = std::get_if<std::string>(&cell);
  if (text == nullptr) return Dump(ToJson(cell));
  if (text->find_first_of("\",\r\n") == std::string::npos) return *text;
  std::string quoted = "\"";
  for (const char c : *text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

}  // namespace

// Row by row: of a million rows no second copy is made.
void WriteJson(std::ostream& out, const ReportTable& table, int exit_code) {
  const Json head = {{"schema", "quellixctl"},
                     {"version", kSchemaVersion},
                     {"command", table.command},
                     {"exitCode", exit_code}};
  Json summary = Json::object();
  for (const auto& [name, cell] : table.summary) summary[std::string(name)] = ToJson(cell);
  std::string text = Dump(head);
  text.back() = ',';
  out << text << "\n\"summary\":" << Dump(summary) << ",\n\"rows\":[";
  for (size_t i = 0; i < table.count; ++i) {
    const std::vector<ReportCell> cells = table.row(i);
    Json row = Json::object();
    for (size_t c = 0; c < cells.size(); ++c) row[std::string(table.columns[c])] = ToJson(cells[c]);
    out << (i == 0 ? "\n" : ",\n") << Dump(row);
  }
  out << (table.count == 0 ? "]}\n" : "\n]}\n");
}

void WriteCsv(std::ostream& out, const ReportTable& table) {
  for (size_t c = 0; c < table.columns.size(); ++c) out << (c == 0 ? "" : ",") << table.columns[c];
  out << '\n';
  for (size_t i = 0; i < table.count; ++i) {
    const std::vector<ReportCell> cells = table.row(i);
    for (size_t c = 0; c < cells.size(); ++c) out << (c == 0 ? "" : ",") << ToCsv(cells[c]);
    out << '\n';
  }
}

ReportCell LocalTimeCell(const LocalTime& time) {
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", time.year, time.month, time.day,
                time.hour, time.minute, time.second);
  return text;
}

ReportCell TimeCell(int64_t filetime) {
  if (filetime <= 0) return {};
  using std::chrono::seconds, std::chrono::sys_days;
  const std::chrono::sys_seconds time{seconds(filetime / kFiletimesASecond - kFrom1601To1970)};
  const sys_days midnight = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss clock(time - midnight);
  const auto number = [](auto part) { return static_cast<int>(unsigned{part}); };
  return std::get<std::string>(
             LocalTimeCell({.year = static_cast<int>(day.year()),
                            .month = number(day.month()),
                            .day = number(day.day()),
                            .hour = static_cast<int>(clock.hours().count()),
                            .minute = static_cast<int>(clock.minutes().count()),
                            .second = static_cast<int>(clock.seconds().count())})) +
         "Z";
}

int64_t FiletimeOf(std::string_view iso_time) {
  LocalTime time;
  if (std::sscanf(std::string(iso_time).c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ", &time.year,
                  &time.month, &time.day, &time.hour, &time.minute, &time.second) != 6 ||
      !IsCalendarDate(time)) {
    return 0;
  }
  constexpr int64_t kSecondsADay = 86'400;
  const int64_t seconds = DayNumber(time) * kSecondsADay + time.hour * 3600 + time.minute * 60 +
                          time.second + kFrom1601To1970;
  return seconds * kFiletimesASecond;
}

ReportCell TextCell(std::string_view text) {
  return text.empty() ? ReportCell() : ReportCell(std::string(text));
}

}  // namespace quellix
