#include "plugins/ini_outline.h"

#include <unordered_map>
#include <unordered_set>

#include "platform/profile_strings.h"
#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

class Outline {
 public:
  void Read(const IniLine& line) {
    if (line.kind == IniLine::kSection) {
      Enter(line.name);
    } else if (line.kind == IniLine::kKey && !line.name.empty() && !sections_.empty()) {
      AddKey(line.name);
    }
  }
  std::vector<IniSection> Take() { return std::move(sections_); }

 private:
  void Enter(std::string_view name) {
    const auto [place, is_new] = places_.try_emplace(UpCase(name), sections_.size());
    if (is_new) {
      sections_.push_back({std::string(name), {}});
      keys_.emplace_back();
    }
    current_ = place->second;
  }

  void AddKey(std::string_view key) {
    if (keys_[current_].insert(UpCase(key)).second) sections_[current_].keys.emplace_back(key);
  }

  std::vector<IniSection> sections_;
  std::vector<std::unordered_set<std::string>> keys_;  // of each section, in upper case
  std::unordered_map<std::string, size_t> places_;     // of sections, by name in upper case
  size_t current_ = 0;
};

}  // namespace

std::vector<IniSection> OutlineIni(std::string_view text) {
  Outline outline;
  while (!text.empty()) outline.Read(ParseIniLine(TakeLine(text)));
  return outline.Take();
}

}  // namespace quellix::modPlugin
