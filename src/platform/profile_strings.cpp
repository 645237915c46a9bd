#include "platform/profile_strings.h"

#include "platform/text.h"

namespace quellix {
namespace {

std::string_view TrimSpace(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::string_view Unquoted(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

// Where a key stands in the text of an INI file.
struct Place {
  size_t section_end = std::string::npos;  // where a new key of the section goes
  size_t line = std::string::npos;         // start of the key's line
  size_t line_end = 0;                     // its end, before the line break
  std::string_view value;
};

Place PlaceOf(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inside = false;
  for (std::string_view rest = text; !rest.empty();) {
    const size_t at = text.size() - rest.size();
    const std::string_view raw = TakeLine(rest);
    const IniLine line = ParseIniLine(raw);
    if (line.kind == IniLine::kSection) {
      if (inside) break;
      inside = EqualsNoCase(line.name, section);
    } else if (inside && line.kind == IniLine::kKey && EqualsNoCase(line.name, key)) {
      place.line = at;
      place.line_end = at + raw.find_last_not_of("\r\n") + 1;
      place.value = Unquoted(line.value);
      return place;
    }
    if (inside && !TrimSpace(raw).empty()) place.section_end = at + raw.size();
  }
  return place;
}

std::string LineBreakAfter(std::string_view text) {
  return text.empty() || text.ends_with('\n') ? "" : "\r\n";
}

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

bool IsUtf16(std::string_view bytes) {
  return bytes.starts_with(kUtf16Mark) && bytes.size() % 2 == 0;
}

// The bytes without those lines of the sections of a name that `goes` names, the header line among
// them.
std::string WithoutLines(std::string_view bytes, std::string_view section,
                         const std::function<std::string(std::string_view raw)>& decode,
                         const std::function<bool(const IniLine& line)>& goes) {
  const size_t mark = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  std::string kept(bytes.substr(0, mark));
  bool inside = false;
  for (std::string_view rest = bytes.substr(mark); !rest.empty();) {
    const std::string_view raw = TakeLine(rest);
    const std::string decoded = decode(raw);
    const IniLine line = ParseIniLine(decoded);
    if (line.kind == IniLine::kSection) inside = EqualsNoCase(line.name, section);
    if (!inside || !goes(line)) kept += raw;
  }
  return kept;
}

}  // namespace

std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  const std::string_view raw = text.substr(0, std::min(line.size() + 1, text.size()));
  text.remove_prefix(raw.size());
  return raw;
}

IniLine ParseIniLine(std::string_view line) {
  line = TrimSpace(line);
  if (line.starts_with('[')) {
    return {IniLine::kSection, TrimSpace(line.substr(1, line.find(']') - 1)), {}};
  }
  const size_t equals = line.find('=');
  if (line.starts_with(';') || equals == std::string_view::npos) return {};
  return {IniLine::kKey, TrimSpace(line.substr(0, equals)), TrimSpace(line.substr(equals + 1))};
}

std::string DecodeText(std::string_view bytes, System& system) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  return IsUtf8(bytes) ? std::string(bytes) : system.FromAnsi(bytes);
}

std::string DecodeIni(std::string_view bytes, System& system) {
  return IsUtf16(bytes) ? FromUtf16Bytes(bytes.substr(kUtf16Mark.size()))
                        : DecodeText(bytes, system);
}

std::optional<std::string_view> IniText::Find(std::string_view section,
                                              std::string_view key) const {
  const Place place = PlaceOf(text_, section, key);
  if (place.line == std::string::npos) return std::nullopt;
  return place.value;
}

void IniText::Set(const IniEntry& entry) {
  const Place place = PlaceOf(text_, entry.section, entry.key);
  const std::string line = entry.key + "=" + entry.value;
  if (place.line != std::string::npos) {
    text_.replace(place.line, place.line_end - place.line, line);
  } else if (place.section_end != std::string::npos) {
    const auto before = LineBreakAfter(std::string_view(text_).substr(0, place.section_end));
    text_.insert(place.section_end, before + line + "\r\n");
  } else {
    text_ += LineBreakAfter(text_) + "[" + entry.section + "]\r\n" + line + "\r\n";
  }
}

IniText ReadIni(FileSystem& files, System& system, std::string_view file) {
  return IniText(DecodeIni(files.ReadWholeFile(file).value_or(""), system));
}

std::optional<std::string> IniFiles::Read(std::string_view file, std::string_view section,
                                          std::string_view key) {
  try {
    const IniText ini = ReadIni(files_, system_, file);
    const auto value = ini.Find(section, key);
    return value ? std::optional(std::string(*value)) : std::nullopt;
  } catch (const Error&) {
    return std::nullopt;
  }
}

void IniFiles::Write(std::string_view file, std::span<const IniEntry> entries) {
  IniText ini = ReadIni(files_, system_, file);
  const std::string old = ini.text();
  for (const IniEntry& entry : entries) ini.Set(entry);
  if (ini.text() != old) files_.WriteWholeFile(file, ini.text());
}

bool IniFiles::DeleteLines(std::string_view file, std::string_view section, const LineTest& goes) {
  const std::string bytes = files_.ReadWholeFile(file).value_or("");
  std::string kept;
  if (IsUtf16(bytes)) {
    const auto as_it_is = [](std::string_view raw) { return std::string(raw); };
    kept = std::string(kUtf16Mark) +
           ToUtf16Bytes(WithoutLines(DecodeIni(bytes, system_), section, as_it_is, goes));
  } else {
    const bool is_utf8 = IsUtf8(bytes);
    kept = WithoutLines(
        bytes, section,
        [&](std::string_view raw) { return is_utf8 ? std::string(raw) : system_.FromAnsi(raw); },
        goes);
  }
  if (kept == bytes) return false;
  // As the system's own calls do; on some disks the file could be replaced all the same.
  const std::optional<FileInfo> info = files_.Look(file);
  if (info && (info->attributes & kReadOnly)) {
    throw Error(Error::Kind::kDenied, Say("The file is read-only: %1", file));
  }
  files_.WriteWholeFile(file, kept);
  return true;
}

bool IniFiles::DeleteKey(std::string_view file, std::string_view section, std::string_view key) {
  if (section.empty() || key.empty()) return false;
  return DeleteLines(file, section, [key](const IniLine& line) {
    return line.kind == IniLine::kKey && EqualsNoCase(line.name, key);
  });
}

bool IniFiles::DeleteSection(std::string_view file, std::string_view section) {
  return !section.empty() && DeleteLines(file, section, [](const IniLine&) { return true; });
}

}  // namespace quellix
