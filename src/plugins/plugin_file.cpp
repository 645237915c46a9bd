#include "plugins/plugin_file.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/profile_strings.h"
#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

constexpr size_t kMostFields = 6;

constexpr struct {
  std::string_view kind;
  size_t fields;
} kKinds[] = {{"D", 2}, {"F", 4}, {"R", 5}, {"I", 6}, {"X", 3},
              {"T", 3}, {"G", 2}, {"W", 3}, {"P", 2}};

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

// Flags that older files lack stand behind what they have, and only as far as they say something.
std::string LaterFlags(std::initializer_list<bool> flags) {
  std::string text, held_back;
  for (const bool flag : flags) {
    held_back.append(1, kSeparator).append(YesNo(flag));
    if (flag) text += std::exchange(held_back, {});
  }
  return text;
}

bool HasFlag(const Record& record, size_t field) {
  return record.fields.size() > field && IsYes(record.fields[field]);
}

void Take(const Record& record, Plugin& plugin) {
  const std::string& kind = record.fields[0];
  if (kind == "D") plugin.description = record.fields[1];
  if (kind == "F") plugin.files.push_back(ToFileEntry(record));
  if (kind == "R") plugin.registry.push_back(ToRegistryEntry(record));
  if (kind == "I") plugin.ini.push_back(ToIniEntry(record));
  if (kind == "G") plugin.group = record.fields[1];
  if (kind == "P") plugin.programs.push_back(record.fields[1]);
  if (kind == "X") {
    if (auto exclusion = ToExclusion(record)) plugin.exclusions.push_back(std::move(*exclusion));
  }
  if (kind == "T") {
    if (auto detection = ToDetection(record)) plugin.detections.push_back(std::move(*detection));
  }
  if (kind == "W") {
    plugin.loses_data = plugin.loses_data || IsYes(record.fields[1]);
    plugin.cost.append(plugin.cost.empty() ? "" : "; ").append(record.fields[2]);
  }
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

// Records that an editor's lists do not hold.
bool IsOther(const Record& record) {
  const std::string& kind = record.fields[0];
  return record.fields.size() > 1 && kind.size() == 1 && kind[0] >= 'A' && kind[0] <= 'Z' &&
         kind.find_first_of("DFRI") == kind.npos && record.text.find('\0') == record.text.npos;
}

}  // namespace

void ReadLines(std::string_view text, const std::function<void(const Record&)>& visit) {
  for (size_t number = 1; !text.empty(); ++number) {
    const size_t end = std::min(text.find_first_of("\r\n"), text.size());
    visit({number, SplitFields(text.substr(0, end)), text.substr(0, end)});
    const size_t line_break = text.substr(end).starts_with("\r\n") ? 2 : 1;
    text.remove_prefix(std::min(end + line_break, text.size()));
  }
}

size_t FieldsOf(std::string_view kind) {
  for (const auto& known : kKinds) {
    if (known.kind == kind) return known.fields;
  }
  return 0;
}

bool IsComplete(const Record& record) {
  const size_t needed = FieldsOf(record.fields[0]);
  return needed != 0 && record.fields.size() >= needed &&
         std::ranges::none_of(record.fields, [](const std::string& field) {
           return field.find('\0') != std::string::npos;
         });
}

FileEntry ToFileEntry(const Record& record) {
  return {IsYes(record.fields[1]), IsYes(record.fields[2]), record.fields[3], HasFlag(record, 4),
          HasFlag(record, 5)};
}

RegistryEntry ToRegistryEntry(const Record& record) {
  return {IsYes(record.fields[1]), IsYes(record.fields[2]), record.fields[3], record.fields[4],
          HasFlag(record, 5)};
}

IniEntry ToIniEntry(const Record& record) {
  return {record.fields[1], record.fields[2], IsYes(record.fields[3]), record.fields[4],
          record.fields[5]};
}

std::optional<Exclusion> ToExclusion(const Record& record) {
  using enum Exclusion::Kind;
  const std::string &kind = record.fields[1], &place = record.fields[2];
  if (kind == "File") return Exclusion{kFile, place};
  if (kind == "Path") return Exclusion{kPath, place};
  return kind == "Key" ? std::optional(Exclusion{kKey, place}) : std::nullopt;
}

std::optional<Detection> ToDetection(const Record& record) {
  using enum Detection::Kind;
  const std::string &kind = record.fields[1], &place = record.fields[2];
  const std::string last = record.fields.size() > 3 ? record.fields[3] : "";
  if (kind == "File") return Detection{kFile, place, ""};
  if (kind == "Key") return Detection{kKey, place, last};
  return kind == "Version" ? std::optional(Detection{kVersion, place, last}) : std::nullopt;
}

Plugin ParsePlugin(std::string_view text) {
  Plugin plugin;
  ReadLines(text, [&plugin](const Record& record) {
    if (IsOther(record)) plugin.others.emplace_back(record.text);
    const bool is_complete = IsComplete(record);
    if (is_complete) Take(record, plugin);
    const bool is_exclusion = record.fields[0] == "X" && record.fields.size() > 1;
    if (is_exclusion && (!is_complete || !ToExclusion(record))) plugin.has_unknown_exclusion = true;
  });
  return plugin;
}

std::string FormatPlugin(const Plugin& plugin) {
  std::string text = Line({"D", plugin.description});
  for (const FileEntry& entry : plugin.files) {
    text += Line({"F", YesNo(entry.recurse), YesNo(entry.delete_subfolders),
                  entry.location + LaterFlags({entry.remove_self, entry.both_sides})});
  }
  for (const RegistryEntry& entry : plugin.registry) {
    text += Line({"R", YesNo(entry.delete_subkey), YesNo(entry.recurse_delete), entry.key,
                  entry.value_name + LaterFlags({entry.both_views})});
  }
  for (const IniEntry& entry : plugin.ini) {
    text += Line({"I", entry.file_name, entry.section, YesNo(entry.delete_section), entry.key,
                  entry.folder});
  }
  for (const std::string& line : plugin.others) text += line + "\r\n";
  return text;
}

std::optional<Plugin> LoadPluginFile(const Machine& machine, std::string_view path) {
  const std::optional<std::string> bytes = machine.files.ReadWholeFile(path);
  if (!bytes) return std::nullopt;
  return ParsePlugin(DecodeText(*bytes, machine.system));
}

std::string ReadDescription(const Machine& machine, std::string_view path) {
  const std::optional<std::string> bytes = machine.files.ReadWholeFile(path);
  if (!bytes) throw Error(Error::Kind::kMissing, Say("There is no such file or folder: %1", path));
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
