#include "plugins/ini_outline.h"

#include <unordered_map>
#include <unordered_set>

#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

class Outline {
 public:
  void Read(std::string_view line) {
    line = Trimmed(line);
    if (line.starts_with('[')) {
      Enter(Trimmed(line.substr(1, line.find(']') - 1)));
    } else if (!line.starts_with(';') && !sections_.empty()) {
      AddKey(line);
    }
  }
  std::vector<IniSection> Take() { return std::move(sections_); }

 private:
  static std::string_view Trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
  }

  void Enter(std::string_view name) {
    const auto [place, is_new] = places_.try_emplace(UpCase(name), sections_.size());
    if (is_new) {
      sections_.push_back({std::string(name), {}});
      keys_.emplace_back();
    }
    current_ = place->second;
  }

  void AddKey(std::string_view line) {
    const size_t end = line.find('=');
    const std::string_view key = Trimmed(line.substr(0, end));
    if (end == std::string_view::npos || key.empty()) return;
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
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    outline.Read(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return outline.Take();
}

}  // namespace quellix::modPlugin
