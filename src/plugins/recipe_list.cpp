#include "plugins/recipe_list.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/sha256.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/recipe_cost.h"
#include "plugins/recipe_folders.h"

namespace quellix::modPlugin {
namespace {

using Fields = std::vector<std::string>;

constexpr std::pair<std::string_view, std::string_view> kRoots[] = {
    {"HKCR", "HKEY_CLASSES_ROOT"},
    {"HKCU", "HKEY_CURRENT_USER"},
    {"HKLM", "HKEY_LOCAL_MACHINE"},
    {"HKU", "HKEY_USERS"},
    {"HKCC", "HKEY_CURRENT_CONFIG"}};

constexpr std::pair<std::string_view, std::string_view> kGroups[] = {
    {"3001", Mark("Internet Explorer")},
    {"3002", Mark("Windows Explorer")},
    {"3003", Mark("System")},
    {"3004", Mark("Advanced")},
    {"3005", Mark("Microsoft Edge")},
    {"3006", Mark("Microsoft Edge")},
    {"3021", Mark("Applications")},
    {"3022", Mark("Internet")},
    {"3023", Mark("Multimedia")},
    {"3024", Mark("Utilities")},
    {"3025", Mark("Windows")},
    {"3026", Mark("Firefox")},
    {"3027", Mark("Opera")},
    {"3028", Mark("Safari")},
    {"3029", Mark("Google Chrome")},
    {"3030", Mark("Thunderbird")},
    {"3031", Mark("Windows Store")},
    {"3033", Mark("Vivaldi")},
    {"3034", Mark("Brave")}};

constexpr std::pair<std::string_view, std::string_view> kBrowsers[] = {
    {"DET_CHROME", "%LocalAppData%\\Google\\Chrome*"},
    {"DET_MOZILLA", "%AppData%\\Mozilla\\Firefox"},
    {"DET_THUNDERBIRD", "%AppData%\\Thunderbird"},
    {"DET_OPERA", "%AppData%\\Opera*"}};

// Names that the list has for what every machine knows by another one.
constexpr std::pair<std::string_view, std::string_view> kVariables[] = {
    {"%Video%", "%Videos%"}, {"%CommonAppData%", "%ProgramData%"}};

constexpr std::string_view kBothSides[] = {"%ProgramFiles%", "%CommonProgramFiles%"};

template <size_t kCount>
std::string_view Translated(const std::pair<std::string_view, std::string_view> (&words)[kCount],
                            std::string_view word) {
  const auto found = std::ranges::find_if(
      words, [word](const auto& row) { return EqualsNoCase(row.first, word); });
  return found == std::end(words) ? std::string_view() : found->second;
}

std::string_view YesNo(bool flag) { return flag ? "Yes" : "No"; }

Fields FieldsOf(std::string_view value, char separator) {
  Fields fields = Split(value, separator);
  for (std::string& field : fields) field = TrimBlanks(field);
  return fields;
}

// "" when it begins with no root key, or names nothing below it.
std::string LongKey(const std::string& key) {
  const size_t end = std::min(key.find('\\'), key.size());
  const std::string root = UpCase(std::string_view(key).substr(0, end));
  std::string_view name = Translated(kRoots, root);
  if (name.empty() && RootKeyFromName(root) != 0) name = root;
  if (name.empty() || end + 1 >= key.size()) return {};
  return std::string(name) + key.substr(end);
}

// A key has no wildcards; only directly below the classes there is one of that name.
bool HasWildcard(std::string_view key) {
  size_t star = key.find('*');
  if (star == key.npos) return false;
  const std::string above = UpCase(key.substr(0, star)) + "|";
  const bool is_name = star + 1 == key.size() || key[star + 1] == '\\';
  if (is_name && (above == "HKEY_CLASSES_ROOT\\|" || above.ends_with("\\CLASSES\\|"))) {
    star = key.find('*', star + 1);
  }
  return star != key.npos;
}

// A variable that no name of a file has; one would be taken as it stands.
bool HasVariable(std::string_view name) { return std::ranges::count(name, '%') > 1; }

bool IsControl(unsigned char c) { return c < ' '; }

// Reads the keys of one entry, each as records of a plug-in.
class EntryReader {
 public:
  EntryReader(std::string name, size_t list, size_t line) {
    recipe_.name = std::move(name);
    recipe_.list = list;
    recipe_.line = line;
  }

  void Read(const IniLine& key, size_t line) {
    line_ = line;
    const std::string_view kind = key.name.substr(0, key.name.find_last_not_of("0123456789") + 1);
    const auto known = std::ranges::find_if(
        kKinds, [kind](const auto& row) { return EqualsNoCase(row.first, kind); });
    if (known == std::end(kKinds)) return Unknown(key.name);
    std::string value(key.value), why;
    const bool has_control = std::ranges::any_of(value, IsControl);
    std::ranges::replace_if(value, IsControl, ' ');
    const bool only_tells = known - kKinds >= kFirstThatTells;
    if (value.empty()) {
      why = Tr("it says nothing");
    } else if (has_control && !only_tells) {
      why = Tr("it holds a control character");
    } else {
      why = (this->*known->second)(value);
    }
    if (why.empty()) return;
    Block(known->first);
    // TRANSLATORS: A line of a list of recipes, and what is wrong with it: a clause.
    Remark(!only_tells, Tr("%1: %2.", std::string(key.name) + "=" + value, why));
  }

  // A line that is no key at all.
  void ReadOther(std::string_view raw, size_t line) {
    line_ = line;
    raw = raw.substr(0, raw.find_first_of("\r\n"));
    const size_t start = raw.find_first_not_of(" \t");
    if (start == raw.npos || raw[start] == ';') return;
    Unknown(raw.substr(start, 80));
  }

  ListedRecipe Take() {
    recipe_.contents = contents_;
    const std::string group = group_.empty() ? Mark("Others") : group_;
    Add({"D", recipe_.name});
    Add({"G", group});
    for (const Cost& cost : CostsOf(ParsePlugin(contents_))) {
      Add({"W", YesNo(cost.loses_data), Tr(cost.text)});
    }
    recipe_.plugin = ParsePlugin(contents_);
    return std::move(recipe_);
  }

 private:
  // Each adds records, or says why it adds none: a clause.
  using Reading = std::string (EntryReader::*)(const std::string& value);
  static const std::pair<std::string_view, Reading> kKinds[11];
  static constexpr ptrdiff_t kFirstThatTells = 7;  // the others name what goes, stays or is there

  void Add(std::initializer_list<std::string_view> fields) {
    std::string line;
    for (const std::string_view field : fields) {
      if (!line.empty()) line += kSeparator;
      line += field;
    }
    contents_ += line + "\r\n";
  }

  void Remark(bool is_fault, std::string text) {
    recipe_.remarks.push_back({line_, is_fault, std::move(text)});
  }

  // What it is to leave, or whether it is to run here, nobody knows: a record that never holds.
  // Whether there was something to block.
  bool Block(std::string_view kind) {
    const bool excludes = EqualsNoCase(kind.substr(0, 7), "Exclude");
    const bool detects = ContainsNoCase(kind, "Detect");
    if (excludes) Add({"X", "?", "?"});
    if (detects && EqualsNoCase(kind, "DetectOS")) Add({"T", "Version", "?", "?"});
    if (detects && !EqualsNoCase(kind, "DetectOS")) Add({"T", "File", "?"});
    return excludes || detects;
  }

  void Unknown(std::string_view name) {
    Remark(Block(name), Tr("%1 is no key of such a list.", name));
  }

  std::string Ignore(const std::string&) { return {}; }

  std::string ReadGroup(const std::string& value) {
    group_ = value;
    return {};
  }
  std::string ReadGroupNumber(const std::string& value) {
    if (group_.empty()) group_ = Translated(kGroups, value);
    return {};
  }
  std::string ReadWarning(const std::string& value) {
    recipe_.warning = value;
    return {};
  }

  std::string ReadDetect(const std::string& value) {
    const Fields fields = FieldsOf(value, '|');
    const std::string key = LongKey(fields[0]);
    if (key.empty() || fields.size() > 2) return Tr("it is no registry key");
    Add({"T", "Key", key, fields.size() > 1 ? fields[1] : ""});
    return {};
  }
  std::string ReadDetectFile(const std::string& value) {
    Add({"T", "File", PathOf(value)});
    return {};
  }
  std::string ReadDetectVersion(const std::string& value) {
    const Fields fields = FieldsOf(value, '|');
    if (fields.size() > 2) return Tr("it is no range of versions");
    Add({"T", "Version", fields.front(), fields.back()});
    return {};
  }
  std::string ReadDetectBrowser(const std::string& value) {
    const std::string_view place = Translated(kBrowsers, value);
    if (place.empty()) return Tr("nobody knows such a program");
    Add({"T", "File", place});
    return {};
  }

  std::string ReadFiles(const std::string& value) {
    const Fields fields = FieldsOf(value, '|');
    const std::string folder = PathOf(fields[0]), flag = fields.size() > 2 ? fields[2] : "";
    const Fields masks = fields.size() > 1 ? MasksOf(fields[1]) : Fields();
    const bool removes_self = EqualsNoCase(flag, "REMOVESELF");
    const bool recurses = removes_self || EqualsNoCase(flag, "RECURSE");
    if (folder.empty() || masks.empty()) return Tr("it names no files of a folder");
    if (fields.size() > 3 || (!recurses && !flag.empty())) return Tr("its flag is unknown");
    const bool both = std::ranges::any_of(
        kBothSides, [&](std::string_view side) { return ContainsNoCase(folder, side); });
    for (const std::string& mask : masks) {
      const bool takes_folders = removes_self || (recurses && (mask == "*.*" || mask == "*"));
      Add({"F", YesNo(recurses), YesNo(takes_folders), WithBackslash(folder) + mask,
           YesNo(removes_self), YesNo(both)});
    }
    return {};
  }

  std::string ReadKey(const std::string& value) {
    const size_t end = std::min(value.find('|'), value.size());
    const std::string key = LongKey(std::string(TrimBlanks(value.substr(0, end))));
    const bool is_value = end < value.size();
    if (key.empty()) return Tr("it is no registry key");
    if (HasWildcard(key)) return Tr("a key has no wildcards");
    if (is_value && end + 1 == value.size()) return Tr("it names no value");
    const std::string name = is_value ? value.substr(end + 1) : "";
    Add({"R", YesNo(!is_value), "No", key, name, YesNo(key.starts_with("HKEY_LOCAL_MACHINE"))});
    return {};
  }

  std::string ReadExclude(const std::string& value) {
    const Fields fields = FieldsOf(value, '|');
    if (fields.size() < 2 || fields[1].empty()) return Tr("it names nothing");
    const auto is = [&](std::string_view kind) { return EqualsNoCase(fields[0], kind); };
    if (is("REG")) {
      const std::string key = LongKey(fields[1]);
      if (key.empty() || HasWildcard(key) || fields.size() > 2) return Tr("it is no registry key");
      Add({"X", "Key", key});
      return {};
    }
    if (!is("FILE") && !is("PATH")) return Tr("it is none of FILE, PATH and REG");
    return ExcludeFiles(is("PATH"), fields);
  }

  std::string ExcludeFiles(bool below, const Fields& fields) {
    const std::string_view kind = below ? "Path" : "File";
    const std::string folder = PathOf(fields[1]);
    if (fields.size() > 3) return Tr("it says more than is known");
    if (fields.size() == 2 && !below && !folder.ends_with('\\')) {
      if (HasVariable(NamePart(folder))) return Tr("it names no file");
      Add({"X", kind, folder});
      return {};
    }
    const Fields masks = fields.size() > 2 ? MasksOf(fields[2]) : Fields{below ? "*.*" : ""};
    if (masks.empty() || masks[0].empty()) return Tr("it names no file");
    for (const std::string& mask : masks) Add({"X", kind, WithBackslash(folder) + mask});
    return {};
  }

  // None when one of them cannot be that of a file.
  static Fields MasksOf(std::string_view text) {
    Fields masks = FieldsOf(text, ';');
    std::erase(masks, "");
    const auto is_bad = [](const std::string& mask) {
      return !MayBeFileName(mask) || mask.find('\\') != mask.npos || HasVariable(mask);
    };
    return std::ranges::any_of(masks, is_bad) ? Fields() : masks;
  }

  static std::string PathOf(std::string path) {
    for (const auto& [name, known] : kVariables) path = ReplaceNoCase(path, name, known);
    return path;
  }

  ListedRecipe recipe_;
  std::string contents_, group_;
  size_t line_ = 0;
};

const std::pair<std::string_view, EntryReader::Reading> EntryReader::kKinds[11] = {
    {"FileKey", &EntryReader::ReadFiles},
    {"RegKey", &EntryReader::ReadKey},
    {"ExcludeKey", &EntryReader::ReadExclude},
    {"Detect", &EntryReader::ReadDetect},
    {"DetectFile", &EntryReader::ReadDetectFile},
    {"DetectOS", &EntryReader::ReadDetectVersion},
    {"SpecialDetect", &EntryReader::ReadDetectBrowser},
    {"LangSecRef", &EntryReader::ReadGroupNumber},
    {"Section", &EntryReader::ReadGroup},
    {"Warning", &EntryReader::ReadWarning},
    {"Default", &EntryReader::Ignore}};

// Of "[A [b] *]".
std::string NameOfHead(std::string_view line) {
  line = line.substr(line.find('[') + 1);
  std::string_view name = TrimBlanks(line.substr(0, line.rfind(']')));
  if (name.ends_with('*')) name = TrimBlanks(name.substr(0, name.size() - 1));
  std::string text(name);
  std::ranges::replace_if(text, IsControl, ' ');
  return text.empty() ? "Without a name" : text;
}

// How often a name came, in any case.
class Names {
 public:
  std::string Unique(const std::string& name) {
    size_t& times = times_[UpCase(name)];
    if (++times == 1) return name;
    std::string other;
    do {
      other = name + " (" + std::to_string(times++) + ")";
    } while (times_.contains(UpCase(other)));
    --times;
    times_[UpCase(other)] = 1;
    return other;
  }

 private:
  std::unordered_map<std::string, size_t> times_;
};

class ListReader {
 public:
  void Read(std::string_view text, const Pause& pause) {
    for (size_t number = 1; !text.empty() && !pause(); ++number) {
      const std::string_view raw = TakeLine(text);
      const IniLine line = ParseIniLine(raw);
      if (line.kind == IniLine::kSection) {
        End();
        entry_.emplace(names_.Unique(NameOfHead(raw)), list_, number);
      } else if (entry_ && line.kind == IniLine::kKey) {
        entry_->Read(line, number);
      } else if (entry_) {
        entry_->ReadOther(raw, number);
      }
    }
    End();
    ++list_;
  }
  std::vector<ListedRecipe> Take() { return std::move(recipes_); }

 private:
  void End() {
    if (entry_) recipes_.push_back(entry_->Take());
    entry_.reset();
  }

  Names names_;
  size_t list_ = 0;
  std::optional<EntryReader> entry_;
  std::vector<ListedRecipe> recipes_;
};

}  // namespace

std::vector<ListedRecipe> ParseRecipeLists(const std::vector<std::string>& texts,
                                           const Pause& pause) {
  ListReader reader;
  for (const std::string& text : texts) reader.Read(text, pause);
  return reader.Take();
}

std::string FingerprintOf(const ListedRecipe& recipe) {
  return Sha256(recipe.contents + recipe.warning);
}

}  // namespace quellix::modPlugin
