#include "app/nearest_language.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix {
namespace {

std::string Plain(std::string_view tag) {
  std::string plain = UpCase(tag);
  std::ranges::replace(plain, '_', '-');
  return plain;
}

// Chinese is written in two ways, which countries tell where the script does not.
bool IsTraditional(std::string_view plain) {
  return plain.find("-HANT") != plain.npos || plain.find("-TW") != plain.npos ||
         plain.find("-HK") != plain.npos || plain.find("-MO") != plain.npos;
}

std::string_view Stem(std::string_view plain) { return plain.substr(0, plain.find('-')); }

bool Serves(const std::string& known, const std::string& wanted) {
  const std::string a = Plain(known), b = Plain(wanted);
  return Stem(a) == Stem(b) && (Stem(a) != "ZH" || IsTraditional(a) == IsTraditional(b));
}

}  // namespace

bool IsSameLanguage(std::string_view a, std::string_view b) { return Plain(a) == Plain(b); }

std::string NearestLanguage(std::span<const std::string> wanted,
                            std::span<const std::string> known) {
  for (const std::string& wish : wanted) {
    if (Stem(Plain(wish)) == "EN") return "";
    auto found = std::ranges::find_if(
        known, [&](const std::string& language) { return IsSameLanguage(language, wish); });
    if (found == known.end()) {
      found = std::ranges::find_if(
          known, [&](const std::string& language) { return Serves(language, wish); });
    }
    if (found != known.end()) return *found;
  }
  return "";
}

}  // namespace quellix
