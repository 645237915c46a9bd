#include "settings/list_files.h"

#include "platform/profile_strings.h"
#include "platform/text.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr char kSeparator = '\x01';

}  // namespace

std::vector<std::string> ReadListFile(const Machine& machine, std::string_view name,
                                      std::string_view default_name) {
  std::optional<std::string> bytes = machine.files.ReadWholeFile(FoundPath(machine, name));
  if (!bytes && !default_name.empty()) {
    bytes = machine.files.ReadWholeFile(FoundPath(machine, default_name));
  }
  if (!bytes || bytes->empty()) return {};
  std::vector<std::string> entries = Split(DecodeText(*bytes, machine.system), '\n');
  if (entries.back().empty()) entries.pop_back();  // behind the last line end
  for (std::string& entry : entries) {
    if (entry.ends_with('\r')) entry.pop_back();
  }
  return entries;
}

void WriteListFile(const Machine& machine, std::string_view name,
                   const std::vector<std::string>& entries) {
  std::string text;
  for (const std::string& entry : entries) text += entry + "\r\n";
  MakeProgramFolder(machine);
  machine.files.WriteWholeFile(OwnPath(machine, name), text);
}

ListRow ParseListRow(std::string_view line) {
  const std::vector<std::string> fields = Split(line, kSeparator);
  if (fields.size() == 1) return {.text = fields[0]};
  ListRow row{fields[0] == "1", fields[1]};
  for (size_t i = 2; i < fields.size(); ++i) {
    row.description += (row.description.empty() ? "" : " ") + fields[i];
  }
  return row;
}

std::string FormatListRow(const ListRow& row) {
  return (row.ticked ? "1" : "0") + std::string(1, kSeparator) + row.text + kSeparator +
         row.description;
}

}  // namespace quellix
