#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/locale.h"

namespace quellix {

// Nothing, a truth, a count (bytes as such), or text in UTF-8.
using ReportCell = std::variant<std::monostate, bool, uint64_t, std::string>;

// What a command lists, in the form that other programs read: docs/quellixctl.schema.json. The
// names of commands, columns and fields are stable; further ones may come.
struct ReportTable {
  std::string_view command;
  std::vector<std::string_view> columns;
  size_t count = 0;
  std::function<std::vector<ReportCell>(size_t row)> row;  // a cell a column
  // About all of them.
  std::vector<std::pair<std::string_view, ReportCell>> summary;
};

// The whole as one object. Bytes that are no UTF-8 are replaced.
void WriteJson(std::ostream& out, const ReportTable& table, int exit_code);
// The rows behind a line of column names, as RFC 4180 has it, but with the line ends of the stream.
void WriteCsv(std::ostream& out, const ReportTable& table);

// "2026-11-22T08:30:00Z" of a FILETIME; nothing of 0.
ReportCell TimeCell(int64_t filetime);
int64_t FiletimeOf(std::string_view iso_time);  // the other way; 0 of what is no such time
// The same in the machine's own time, without "Z".
ReportCell LocalTimeCell(const LocalTime& time);
// Text, or nothing for "".
ReportCell TextCell(std::string_view text);

}  // namespace quellix
