#include "plugins/recipe_folders.h"

#include <algorithm>

#include "platform/text.h"
#include "run/known_folders.h"

namespace quellix::modPlugin {
namespace {

std::string ProgramFiles(const Machine& machine) {
  std::string folder = machine.system.Environment("ProgramFiles").value_or("");
  if (!folder.empty()) return folder;
  const std::string system_folder = machine.system.SystemFolder();
  if (system_folder.size() < 2 || system_folder[1] != ':') return {};
  return system_folder.substr(0, 2) + "\\Program Files";
}

// Where an older Windows, or one of 32 bits, has what the variable stands for.
constexpr std::pair<std::string_view, std::string_view> kElsewhere[] = {
    {"ProgramFiles", "%PROGDIR%"},
    {"ProgramFiles(x86)", "%PROGDIR%"},
    {"ProgramW6432", "%PROGDIR%"},
    {"CommonProgramFiles", "%PROGDIR%\\Common Files"},
    {"CommonProgramFiles(x86)", "%ProgramFiles(x86)%\\Common Files"},
    {"CommonProgramW6432", "%ProgramW6432%\\Common Files"},
    {"ProgramData", "%ALLUSERSPROFILE%\\Application Data"},
    {"Public", "%ALLUSERSPROFILE%"},
    {"LocalAppData", "%USERPROFILE%\\Local Settings\\Application Data"},
};

std::optional<std::string> ValueOf(const Machine& machine, std::string_view name) {
  if (auto value = machine.system.Environment(name)) return value;
  if (auto folder = KnownFolder(machine, name)) return folder;
  for (const auto& [variable, text] : kElsewhere) {
    if (EqualsNoCase(variable, name)) return ExpandPluginPath(machine, text);
  }
  return std::nullopt;
}

constexpr struct {
  std::string_view variable;
  std::string_view sides[3];
} kSides[] = {{"%PROGDIR%", {"%PROGDIR%", "%ProgramFiles(x86)%", "%ProgramW6432%"}},
              {"%ProgramFiles%", {"%ProgramFiles%", "%ProgramFiles(x86)%", "%ProgramW6432%"}},
              {"%CommonProgramFiles%",
               {"%CommonProgramFiles%", "%CommonProgramFiles(x86)%", "%CommonProgramW6432%"}}};

std::vector<std::string> Sides(std::string_view text) {
  for (const auto& [variable, sides] : kSides) {
    if (!ContainsNoCase(text, variable)) continue;
    std::vector<std::string> texts;
    for (const std::string_view side : sides) {
      texts.push_back(ReplaceNoCase(text, variable, side));
    }
    return texts;
  }
  return {std::string(text)};
}

bool IsDrive(std::string_view text) {
  const char upper = text.empty() ? '\0' : static_cast<char>(text[0] & ~0x20);
  return text.size() == 2 && upper >= 'A' && upper <= 'Z' && text[1] == ':';
}

class FolderSearch {
 public:
  FolderSearch(FileSystem& files, const PathPattern& pattern, const Pause& pause)
      : files_(files), pattern_(pattern), pause_(pause) {}

  std::vector<std::string> Find() {
    Descend(pattern_.start, 0);
    return std::move(found_);
  }

 private:
  // What lies behind a wildcard has to be there, and so is no deeper than the disk is.
  void Descend(std::string folder, size_t depth, bool behind_wildcard = false) {
    const std::vector<std::string>& names = pattern_.names;
    for (; depth < names.size() && !HasNameWildcards(names[depth]); ++depth) {
      folder += "\\" + names[depth];
      if (behind_wildcard && !IsRealFolder(folder)) return;
    }
    if (depth == names.size()) {
      found_.push_back(std::move(folder));
      return;
    }
    if (pause_()) return;
    for (const std::string& name : SubFolders(folder, names[depth])) {
      Descend(folder + "\\" + name, depth + 1, true);
    }
  }

  bool IsRealFolder(const std::string& folder) {
    const std::optional<FileInfo> info = files_.Look(folder, Detail::kKind);
    return info && info->is_folder && !info->is_link;
  }

  std::vector<std::string> SubFolders(const std::string& folder, const std::string& mask) {
    std::vector<std::string> names;
    files_.Enumerate(folder + "\\", Detail::kKind, [&](const Entry& entry) {
      const bool fits = entry.info.is_folder && !entry.info.is_link;
      if (fits && MatchesMask(entry.name, mask)) names.emplace_back(entry.name);
      return true;
    });
    return names;
  }

  FileSystem& files_;
  const PathPattern& pattern_;
  const Pause& pause_;
  std::vector<std::string> found_;
};

}  // namespace

std::string ExpandPluginPath(const Machine& machine, std::string_view text) {
  const struct {
    const char* name;
    std::string (*folder)(const Machine&);
  } kVariables[] = {{"%PROGDIR%", ProgramFiles},
                    {"%SYSDIR%", [](const Machine& of) { return of.system.SystemFolder(); }},
                    {"%WINDIR%", [](const Machine& of) { return of.system.WindowsFolder(); }}};
  std::string result(text);
  for (const auto& variable : kVariables) {
    if (!ContainsNoCase(result, variable.name)) continue;
    const std::string folder = variable.folder(machine);
    if (folder.empty()) return {};
    result = ReplaceNoCase(result, variable.name, folder);
  }
  return ExpandVariables(result,
                         [&machine](std::string_view name) { return ValueOf(machine, name); });
}

std::vector<std::string> ExpandFolder(const Machine& machine, std::string_view text,
                                      bool both_sides) {
  if (text.find('%') == text.npos) return {std::string(text)};
  std::vector<std::string> folders;
  for (const std::string& side : both_sides ? Sides(text) : std::vector{std::string(text)}) {
    std::string folder = ExpandPluginPath(machine, side);
    const auto is_same = [&](const std::string& other) { return EqualsNoCase(folder, other); };
    if (!folder.empty() && std::ranges::none_of(folders, is_same)) {
      folders.push_back(std::move(folder));
    }
  }
  return folders;
}

bool MayBeFileName(std::string_view mask) {
  return mask.find_first_of("\"<>|:/") == mask.npos && !mask.ends_with(' ');
}

bool FitsAnything(std::string_view mask) {
  return HasNameWildcards(mask) && mask.find_first_not_of("*?.") == mask.npos;
}

std::optional<std::vector<std::string>> NamesOfPath(std::string_view path) {
  std::vector<std::string> names;
  for (std::string& name : Split(path, '\\')) {
    if (name.empty()) continue;
    const size_t last = name.find_last_not_of(" .");
    if (last == std::string::npos) return std::nullopt;
    if (name.find_first_of("\"<>|:") != std::string::npos) return std::nullopt;
    if (!HasNameWildcards(name)) name.resize(last + 1);
    names.push_back(std::move(name));
  }
  return names;
}

bool HasNameWildcards(std::string_view name) { return name.find_first_of("*?") != name.npos; }

bool PathPattern::HasWildcards() const { return std::ranges::any_of(names, HasNameWildcards); }

std::optional<PathPattern> ParsePattern(std::string path) {
  std::ranges::replace(path, '/', '\\');
  const bool is_share = path.starts_with("\\\\");
  PathPattern pattern{path.substr(0, 2), {}};
  const bool has_drive =
      IsDrive(pattern.start) && path.substr(2, 1).find_first_not_of('\\') == std::string::npos;
  if (!is_share && !has_drive) return std::nullopt;
  auto names = NamesOfPath(path.substr(2));
  if (!names) return std::nullopt;
  if (is_share) {
    if (names->size() < 2 || std::any_of(names->begin(), names->begin() + 2, HasNameWildcards)) {
      return std::nullopt;
    }
    pattern.start += (*names)[0] + "\\" + (*names)[1];
    names->erase(names->begin(), names->begin() + 2);
  }
  pattern.names = std::move(*names);
  return pattern;
}

std::vector<std::string> FindMatches(FileSystem& files, const PathPattern& pattern,
                                     const Pause& pause) {
  return FolderSearch(files, pattern, pause).Find();
}

bool HasMatch(FileSystem& files, PathPattern pattern) {
  if (pattern.names.empty()) return files.Look(pattern.start + "\\", Detail::kKind).has_value();
  const std::string last = pattern.names.back();
  pattern.names.pop_back();
  for (const std::string& folder : FindMatches(files, pattern)) {
    if (!HasNameWildcards(last)) {
      if (files.Look(folder + "\\" + last, Detail::kKind)) return true;
      continue;
    }
    bool found = false;
    files.Enumerate(folder + "\\", Detail::kKind, [&](const Entry& entry) {
      found = MatchesMask(entry.name, last);
      return !found;
    });
    if (found) return true;
  }
  return false;
}

}  // namespace quellix::modPlugin
