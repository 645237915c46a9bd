#include <wctype.h>

#include <array>
#include <clocale>

#include "platform/text.h"

namespace quellix {
namespace {

using Table = std::array<char16_t, 0x10000>;

// Windows maps within the first plane only, never from beyond ASCII into it (dotless i, long s),
// and knows no capital form of the micro sign and the Georgian letters.
bool HasOwnCase(wint_t c, wint_t upper) {
  if (c == 0xB5 || (c >= 0x10D0 && c <= 0x10FF)) return true;
  return upper > 0xFFFF || (upper < 0x80 && c >= 0x80);
}

Table MakeTable() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  Table table;
  for (wint_t c = 0; c < table.size(); ++c) {
    const wint_t upper = locale ? towupper_l(c, locale) : towupper(c);
    table[c] = static_cast<char16_t>(HasOwnCase(c, upper) ? c : upper);
  }
  if (locale) freelocale(locale);
  return table;
}

}  // namespace

char32_t UpCase(char32_t character) {
  static const Table table = MakeTable();
  return character < table.size() ? table[character] : character;
}

}  // namespace quellix
