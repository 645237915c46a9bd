#include "ui/group_heading.h"

#include <iterator>

#include "ui/handles.h"
#include "ui/looks.h"

namespace quellix {
namespace {

void DrawRule(HDC target, int left, const RECT& place) {
  const LONG middle = (place.top + place.bottom) / 2;
  const RECT rule{left, middle, place.right, middle + 1};
  FillRect(target, &rule, BrushOf(Paint::kLine));
}

}  // namespace

void DrawGroupHeading(const DRAWITEMSTRUCT& item, HBRUSH background) {
  wchar_t text[100];
  GetWindowTextW(item.hwndItem, text, static_cast<int>(std::size(text)));
  const UniqueFont font = BoldFontOf(item.hwndItem);
  const HGDIOBJ old_font = SelectObject(item.hDC, font.Get());
  FillRect(item.hDC, &item.rcItem, background);
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, ColorOf(Paint::kHeading));
  const UINT format = DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX;
  RECT words = item.rcItem;
  InflateRect(&words, -2, 0);
  DrawTextW(item.hDC, text, -1, &words, format);
  DrawTextW(item.hDC, text, -1, &words, format | DT_CALCRECT);
  DrawRule(item.hDC, words.right + 8, item.rcItem);
  SelectObject(item.hDC, old_font);
}

}  // namespace quellix
