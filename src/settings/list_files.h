#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// Lists in the program folder, one entry a line, CR LF. `name` is without a path.

// The entries of `name` or, when it does not exist, of `default_name`; none when neither does.
// Read as UTF-8 or, where that fails, in the ANSI code page. Throws Error when the file is there
// but cannot be read.
std::vector<std::string> ReadListFile(const Machine& machine, std::string_view name,
                                      std::string_view default_name = {});

// Replaces the file. Throws Error; the old file then stays.
void WriteListFile(const Machine& machine, std::string_view name,
                   const std::vector<std::string>& entries);

// An entry with a tick: a line of fields with \x01 between, "1" for ticked, the text, a
// description.
struct ListRow {
  bool ticked = false;
  std::string text = {};
  std::string description = {};
  bool operator==(const ListRow&) const = default;
};
// A line without \x01 was written by hand: its entry is not ticked.
ListRow ParseListRow(std::string_view line);
std::string FormatListRow(const ListRow& row);

}  // namespace quellix
