#include "ui/group_heading.h"

#include <iterator>

#include "ui/handles.h"

namespace quellix {
namespace {

// The program's own colour, unless the user needs high contrast.
COLORREF HeadingColor() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof(contrast);
  SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0);
  const bool is_high = (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
  return is_high ? GetSysColor(COLOR_WINDOWTEXT) : RGB(0x0b, 0x6e, 0x75);
}

void DrawRule(HDC target, int left, const RECT& place) {
  const LONG middle = (place.top + place.bottom) / 2;
  const RECT rule{left, middle, place.right, middle + 1};
  FillRect(target, &rule, GetSysColorBrush(COLOR_3DSHADOW));
}

}  // namespace

void DrawGroupHeading(const DRAWITEMSTRUCT& item, HBRUSH background) {
  wchar_t text[100];
  GetWindowTextW(item.hwndItem, text, static_cast<int>(std::size(text)));
  const UniqueFont font = BoldFontOf(item.hwndItem);
  const HGDIOBJ old_font = SelectObject(item.hDC, font.Get());
  FillRect(item.hDC, &item.rcItem, background);
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, HeadingColor());
  const UINT format = DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX;
  RECT words = item.rcItem;
  InflateRect(&words, -2, 0);
  DrawTextW(item.hDC, text, -1, &words, format);
  DrawTextW(item.hDC, text, -1, &words, format | DT_CALCRECT);
  DrawRule(item.hDC, words.right + 8, item.rcItem);
  SelectObject(item.hDC, old_font);
}

}  // namespace quellix
