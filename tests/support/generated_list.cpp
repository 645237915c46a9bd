#include "support/generated_list.h"

#include <array>
#include <random>

namespace quellix {
namespace {

constexpr size_t kEntries = 4067, kKeys = 14118, kMasks = 17681, kKeysOfSeveralMasks = 1224;
constexpr size_t kFlat = 66;  // keys for a file of a folder that all share
constexpr size_t kRegistryKeys = 3677, kValues = 2453;
constexpr size_t kRefused[] = {100, 2000, 3000};

enum Flag { kNone, kRecurse, kRemoveSelf };
enum Wildcard { kNo, kWhole, kPart, kLastPart };

using Counts = std::vector<std::pair<std::string, size_t>>;
const Counts kVariables = [] {
  std::istringstream text(
      "%LocalAppData% 7991 %AppData% 2926 %ProgramFiles% 1204 %ProgramData% 808 %UserProfile% 680 "
      "%WinDir% 264 %SystemDrive% 184 %CommonProgramFiles% 29 %Public% 27 %LocalLowAppData% 2 "
      "%Temp% 2 %Documents% 1");
  Counts counts(12);
  for (auto& [name, count] : counts) text >> name >> count;
  return counts;
}();

// Each value as often as it is to come, in an order that is always the same.
template <class Value>
std::vector<Value> Deal(const std::vector<std::pair<Value, size_t>>& counts, unsigned seed) {
  std::vector<Value> deck;
  for (const auto& [value, count] : counts) deck.insert(deck.end(), count, value);
  std::mt19937 random(seed);
  for (size_t i = deck.size(); i > 1; --i) std::swap(deck[i - 1], deck[random() % i]);
  return deck;
}

std::string Fitting(std::string mask, const std::string& text) {
  if (mask == "*.*" || mask == "*") return text + ".any";
  const size_t star = mask.find('*');
  return star == mask.npos ? mask : mask.replace(star, 1, text);
}

bool IsAll(const std::string& mask) { return mask == "*.*" || mask == "*"; }

// Both folders that a variable stands for.
Names SidesOf(const std::string& path) {
  for (const char* variable : {"%ProgramFiles", "%CommonProgramFiles"}) {
    const std::string name = std::string(variable) + "%";
    if (path.starts_with(name))
      return {path, std::string(variable) + "(x86)%" + path.substr(name.size())};
  }
  return {path};
}

struct FileKey {
  std::string variable;
  Flag flag;
  Wildcard wildcard;
  Names masks;
};

class Generator {
 public:
  std::vector<GeneratedEntry> Generate() {
    Begin();
    DealFileKeys();
    for (size_t i = 0; i < kRegistryKeys; ++i) AddRegistryKey(EntryFor(i * 7), i);
    AddExclusions();
    for (size_t i = 0; i < kEntries; ++i) AddDetection(i);
    list_[kRefused[0]].text += "FileKey1=%AppData%|*.*|RECURSE\r\n";
    list_[kRefused[1]].text += "RegKey1=HKLM\\Software\\Classes\\QxRefused\r\n";
    list_[kRefused[2]].text += "FileKey1=%UserProfile%\\*|*.*|REMOVESELF\r\n";
    return std::move(list_);
  }

 private:
  void Begin() {
    list_.resize(kEntries);
    for (size_t i = 0; i < kEntries; ++i) {
      GeneratedEntry& entry = list_[i];
      entry.name = "Qx " + std::to_string(i);
      entry.is_refused = std::ranges::find(kRefused, i) != std::end(kRefused);
      entry.text = "[" + entry.name + " *]\r\n";
      entry.text +=
          i < 2230 ? "LangSecRef=" + std::to_string(3021 + i % 5) + "\r\n" : "Section=Games\r\n";
      if (i % 900 == 1) entry.text += "Warning=Careful.\r\n";
    }
  }

  // Never one that is refused.
  size_t EntryFor(size_t number) const {
    number %= kEntries;
    return list_[number].is_refused ? number + 1 : number;
  }

  void DealFileKeys() {
    const auto variables = Deal<std::string>(kVariables, 1);
    const auto flags = Deal<Flag>({{kNone, 6412}, {kRecurse, 2184}, {kRemoveSelf, 5522}}, 2);
    const auto wildcards =
        Deal<Wildcard>({{kWhole, 3197}, {kPart, 1122}, {kLastPart, 1445}, {kNo, kKeys - 5764}}, 3);
    size_t flat = 0, further = kMasks - kKeys;
    for (size_t i = 0; i < kKeys; ++i) {
      FileKey key{variables[i], flags[i], wildcards[i], {MaskOf(i)}};
      const bool has_several = i % (kKeys / kKeysOfSeveralMasks) == 0 && further > 0;
      for (size_t more = has_several ? std::min<size_t>(further, 3) : 0; more > 0; --more) {
        key.masks.push_back("m" + std::to_string(more) + "*.qx");
        --further;
      }
      const bool is_flat = flat < kFlat && key.flag == kNone && key.wildcard == kNo &&
                           (key.variable == "%WinDir%" || key.variable == "%UserProfile%" ||
                            key.variable == "%ProgramFiles%");
      if (is_flat) further += key.masks.size() - 1;
      is_flat ? AddFlat(EntryFor(i), key, flat++) : Add(EntryFor(i), key, i);
    }
  }

  // Where an entry's places lie: some fifty of them together.
  std::string OwnOf(size_t at) const {
    return "\\Maker " + std::to_string(at / 50) + "\\" + list_[at].name;
  }

  static std::string MaskOf(size_t number) {
    constexpr std::array kSome = {"*.*",   "*.log", "*",        "*.*",
                                  "*.tmp", "*.*",   "last.dat", "old*.bak"};
    return kSome[number % kSome.size()];
  }

  std::string Numbered(size_t entry, const char* kind) {
    size_t& number = numbers_[{entry, kind}];
    return std::string(kind) + std::to_string(++number) + "=";
  }

  void AddFlat(size_t at, const FileKey& key, size_t number) {
    GeneratedEntry& entry = list_[at];
    const std::string stem = "qx" + std::to_string(number);
    const std::string mask = number % 2 == 0 ? stem + "*.log" : stem + ".history";
    entry.text += Numbered(at, "FileKey") + key.variable + "|" + mask + "\r\n";
    for (const std::string& side : SidesOf(key.variable)) {
      entry.gone.push_back(side + "\\" + Fitting(mask, "a"));
      entry.kept.push_back(side + "\\x" + Fitting(mask, "a"));
    }
  }

  // "%X%\Maker\Qx entry\key\instance\Cache" or, with the wildcard in the last name, "...\Cache*".
  void Add(size_t at, const FileKey& key, size_t number) {
    GeneratedEntry& entry = list_[at];
    const std::string home = key.variable + OwnOf(at) + "\\k" + std::to_string(number);
    const struct {
      std::string pattern;
      Names fitting, other;
    } kShapes[] = {{"\\Cache", {"\\Cache"}, {"\\Cache2"}},
                   {"\\*\\Cache", {"\\one\\Cache", "\\two.x\\Cache"}, {"\\one\\Cache2"}},
                   {"\\Prof*\\Cache", {"\\Profile\\Cache", "\\prof 2\\Cache"}, {"\\pro\\Cache"}},
                   {"\\Cache*", {"\\Cache", "\\cache_2"}, {"\\aCache"}}};
    const auto& shape = kShapes[key.wildcard];
    constexpr const char* kFlags[] = {"", "|RECURSE", "|REMOVESELF"};
    std::string masks;
    for (const std::string& mask : key.masks) masks += (masks.empty() ? "" : ";") + mask;
    entry.text +=
        Numbered(at, "FileKey") + home + shape.pattern + "|" + masks + kFlags[key.flag] + "\r\n";
    for (const std::string& side : SidesOf(home)) {
      for (const std::string& fitting : shape.fitting) AddTree(entry, key, side + fitting);
      for (const std::string& other : shape.other)
        entry.kept.push_back(side + other + "\\last.dat");
    }
    if (key.wildcard == kNo && key.flag != kNone && IsAll(key.masks[0]) &&
        SidesOf(home).size() == 1) {
      may_exclude_.emplace_back(at, home + "\\Cache");
    }
  }

  static void AddTree(GeneratedEntry& entry, const FileKey& key, const std::string& folder) {
    const bool takes_all = std::ranges::any_of(key.masks, IsAll);
    for (const std::string& mask : key.masks) {
      entry.gone.push_back(folder + "\\" + Fitting(mask, "x"));
      (key.flag == kNone ? entry.kept : entry.gone)
          .push_back(folder + "\\sub\\" + Fitting(mask, "x"));
    }
    if (!takes_all) entry.kept.push_back(folder + "\\neighbour.kept");
    const bool sub_goes = key.flag == kRemoveSelf || (key.flag == kRecurse && takes_all);
    const bool itself_goes = key.flag == kRemoveSelf && takes_all;
    (sub_goes ? entry.gone_folders : entry.left_folders).push_back(folder + "\\sub");
    (itself_goes ? entry.gone_folders : entry.left_folders).push_back(folder);
  }

  void AddRegistryKey(size_t at, size_t number) {
    GeneratedEntry& entry = list_[at];
    const bool is_value = number < kValues, is_machine = number % 20 == 0;
    const std::string root = is_machine ? "HKLM\\" : "HKCU\\";
    const std::string key = "Software" + OwnOf(at) + "\\k" + std::to_string(number);
    entry.text += Numbered(at, "RegKey") + root + key + (is_value ? "|v" : "") + "\r\n";
    const std::string other = "Software\\Wow6432Node" + key.substr(8);
    for (const std::string& side : is_machine ? Names{key, other} : Names{key}) {
      entry.gone_values.push_back(root + side + "|v");
      (is_value ? entry.kept_values : entry.gone_values).push_back(root + side + "|w");
      if (!is_value) entry.gone_values.push_back(root + side + "\\sub|v");
      entry.kept_values.push_back(root + side + "x|v");
    }
    if (!is_value && !is_machine && excluded_keys_ < 4) {
      ++excluded_keys_;
      entry.text += Numbered(at, "ExcludeKey") + "REG|HKCU\\" + key + "\\keep\r\n";
      entry.kept_values.push_back("HKCU\\" + key + "\\keep|v");
    }
  }

  // 51 of single files, 31 of folders.
  void AddExclusions() {
    for (size_t i = 0; i < 82; ++i) {
      const auto& [at, folder] = may_exclude_[i * 5];
      GeneratedEntry& entry = list_[at];
      const bool is_file = i < 51;
      const std::string kept = is_file ? folder + "\\keep.me" : folder + "\\safe\\in\\keep.me";
      entry.text +=
          Numbered(at, "ExcludeKey") +
          (is_file ? "FILE|" + folder + "\\|keep.me" : "PATH|" + folder + "\\safe\\|*.*") + "\r\n";
      entry.kept.push_back(kept);
      if (std::erase(entry.gone_folders, folder) > 0) entry.left_folders.push_back(folder);
    }
  }

  void AddDetection(size_t at) {
    GeneratedEntry& entry = list_[at];
    const bool by_file = at < 3319 && !entry.kept.empty(),
               by_key = at >= kEntries - 748 || at < 696;
    if (by_file) {
      const std::string& path = entry.kept.back();
      const size_t end = path.find("\\k");
      const std::string place = end == path.npos ? path : path.substr(0, end);
      const bool by_pattern = at % 10 == 0;
      entry.text += Numbered(at, "DetectFile") +
                    (by_pattern ? place.substr(0, place.size() - 1) + "*" : place) + "\r\n";
    }
    if (by_key) {
      entry.text += Numbered(at, "Detect") + "HKCU\\Software" + OwnOf(at) + "\r\n";
      entry.kept_values.push_back("HKCU\\Software" + OwnOf(at) + "|here");
    }
  }

  std::vector<GeneratedEntry> list_;
  std::map<std::pair<size_t, std::string>, size_t> numbers_;
  std::vector<std::pair<size_t, std::string>> may_exclude_;
  size_t excluded_keys_ = 0;
};

}  // namespace

std::vector<GeneratedEntry> GenerateList() { return Generator().Generate(); }

std::string TextOf(const std::vector<GeneratedEntry>& list) {
  std::string text = "; generated\r\n";
  for (const GeneratedEntry& entry : list) text += "\r\n" + entry.text;
  return text;
}

}  // namespace quellix
