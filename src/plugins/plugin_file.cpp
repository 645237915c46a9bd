#include "plugins/plugin_file.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/profile_strings.h"
#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

constexpr size_t kMostFields = 6;

bool IsYes(std::string_view flag) { return flag == "Yes"; }

std::string_view YesNo(bool flag) { return flag ? "Yes" : "No"; }

std::string Line(std::initializer_list<std::string_view> fields) {
  std::string line;
  for (const std::string_view field : fields) {
    if (!line.empty()) line += kSeparator;
    line += field;
  }
  return line + "\r\n";
}

// A line may have millions of separators; those behind the last field of any kind do not count.
std::vector<std::string> SplitFields(std::string_view line) {
  std::vector<std::string> fields;
  for (size_t end = line.find(kSeparator); end != line.npos && fields.size() < kMostFields;
       end = line.find(kSeparator)) {
    fields.emplace_back(line.substr(0, end));
    line.remove_prefix(end + 1);
  }
  fields.emplace_back(line);
  return fields;
}

}  // namespace

void ReadLines(std::string_view text, const std::function<void(const Record&)>& visit) {
  for (size_t number = 1; !text.empty(); ++number) {
    const size_t end = std::min(text.find_first_of("\r\n"), text.size());
    visit({number, SplitFields(text.substr(0, end))});
    const size_t line_break = text.substr(end).starts_with("\r\n") ? 2 : 1;
    text.remove_prefix(std::min(end + line_break, text.size()));
  }
}

size_t FieldsOf(std::string_view kind) {
  if (kind == "D") return 2;
  if (kind == "F") return 4;
  if (kind == "R") return 5;
  return kind == "I" ? 6 : 0;
}

bool IsComplete(const Record& record) {
  const size_t needed = FieldsOf(record.fields[0]);
  return needed != 0 && record.fields.size() >= needed &&
         std::ranges::none_of(record.fields, [](const std::string& field) {
           return field.find('\0') != std::string::npos;
         });
}

FileEntry ToFileEntry(const Record& record) {
  return {IsYes(record.fields[1]), IsYes(record.fields[2]), record.fields[3]};
}

RegistryEntry ToRegistryEntry(const Record& record) {
  return {IsYes(record.fields[1]), IsYes(record.fields[2]), record.fields[3], record.fields[4]};
}

IniEntry ToIniEntry(const Record& record) {
  return {record.fields[1], record.fields[2], IsYes(record.fields[3]), record.fields[4],
          record.fields[5]};
}

Plugin ParsePlugin(std::string_view text) {
  Plugin plugin;
  ReadLines(text, [&plugin](const Record& record) {
    if (!IsComplete(record)) return;
    const std::string& kind = record.fields[0];
    if (kind == "D") plugin.description = record.fields[1];
    if (kind == "F") plugin.files.push_back(ToFileEntry(record));
    if (kind == "R") plugin.registry.push_back(ToRegistryEntry(record));
    if (kind == "I") plugin.ini.push_back(ToIniEntry(record));
  });
  return plugin;
}

std::string FormatPlugin(const Plugin& plugin) {
  std::string text = Line({"D", plugin.description});
  for (const FileEntry& entry : plugin.files) {
    text += Line({"F", YesNo(entry.recurse), YesNo(entry.delete_subfolders), entry.location});
  }
  for (const RegistryEntry& entry : plugin.registry) {
    text += Line({"R", YesNo(entry.delete_subkey), YesNo(entry.recurse_delete), entry.key,
                  entry.value_name});
  }
  for (const IniEntry& entry : plugin.ini) {
    text += Line({"I", entry.file_name, entry.section, YesNo(entry.delete_section), entry.key,
                  entry.folder});
  }
  return text;
}

std::optional<Plugin> LoadPluginFile(const Machine& machine, std::string_view path) {
  const std::optional<std::string> bytes = machine.files.ReadWholeFile(path);
  if (!bytes) return std::nullopt;
  return ParsePlugin(DecodeText(*bytes, machine.system));
}

std::string ReadDescription(const Machine& machine, std::string_view path) {
  const std::optional<std::string> bytes = machine.files.ReadWholeFile(path);
  if (!bytes) throw Error(Error::Kind::kMissing, "There is no such plug-in.");
  std::optional<std::string> description;
  ReadLines(DecodeText(*bytes, machine.system), [&description](const Record& record) {
    const bool has = record.fields[0] == "D" && record.fields.size() > 1;
    if (has && !description) description = record.fields[1];
  });
  return description.value_or("");
}

void SavePluginFile(const Machine& machine, std::string_view path, const Plugin& plugin) {
  machine.files.WriteWholeFile(path, FormatPlugin(plugin));
}

uint32_t RootKeyFromName(std::string_view name) {
  const auto found = std::ranges::find(kRootKeys, name);
  if (found == std::end(kRootKeys)) return 0;
  return 0x80000000u + static_cast<uint32_t>(found - std::begin(kRootKeys));
}

}  // namespace quellix::modPlugin
