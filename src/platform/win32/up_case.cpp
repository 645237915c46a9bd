#include <windows.h>

#include <numeric>
#include <vector>

#include "platform/text.h"

namespace quellix {
namespace {

constexpr char32_t kFirstSurrogate = 0xD800, kBehindSurrogates = 0xE000, kBehindTable = 0x10000;

void MapPart(std::vector<wchar_t>& table, char32_t begin, char32_t end) {
  const int length = static_cast<int>(end - begin);
  const std::vector<wchar_t> source(table.begin() + begin, table.begin() + end);
  LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, source.data(), length, table.data() + begin,
                length, nullptr, nullptr, 0);
}

// One call for the whole plane: a call for each character would cost more than the comparison.
std::vector<wchar_t> MakeTable() {
  std::vector<wchar_t> table(kBehindTable);
  std::iota(table.begin(), table.end(), L'\0');
  MapPart(table, 0, kFirstSurrogate);
  MapPart(table, kBehindSurrogates, kBehindTable);
  return table;
}

}  // namespace

// Beyond the basic plane Windows' file names and registry know no case.
char32_t UpCase(char32_t character) {
  if (character < 0x80) return character >= 'a' && character <= 'z' ? character - 0x20 : character;
  static const std::vector<wchar_t> table = MakeTable();
  return character < kBehindTable ? table[character] : character;
}

}  // namespace quellix
