#include "ui/group_heading.h"

#include <iterator>

#include "ui/handles.h"

namespace quellix {
namespace {

bool IsEnter(WPARAM key, LPARAM message) {
  return key == VK_RETURN && message &&
         reinterpret_cast<const MSG*>(message)->message == WM_KEYDOWN;
}

// The button's own procedure is kept in its user data: the subclasses of the common controls look
// up a window property at every message, which slows down the start.
LRESULT CALLBACK HeadingProcedure(HWND button, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_GETDLGCODE:
      if (IsEnter(wparam, lparam)) return DLGC_WANTMESSAGE;
      break;
    case WM_KEYDOWN:
      if (wparam != VK_RETURN) break;
      SendMessageW(button, BM_CLICK, 0, 0);
      return 0;
    case WM_SETCURSOR:
      SetCursor(LoadCursorW(nullptr, IDC_HAND));
      return TRUE;
  }
  const auto own = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(button, GWLP_USERDATA));
  return CallWindowProcW(own, button, message, wparam, lparam);
}

UniqueFont HeadingFont(HWND control, bool is_link) {
  LOGFONTW description{};
  const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
  GetObjectW(font, sizeof(description), &description);
  description.lfWeight = FW_BOLD;
  description.lfUnderline = is_link;
  return UniqueFont(CreateFontIndirectW(&description));
}

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

void MakeGroupHeading(HWND button) {
  SetWindowLongPtrW(button, GWLP_USERDATA, GetWindowLongPtrW(button, GWLP_WNDPROC));
  SetWindowLongPtrW(button, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HeadingProcedure));
}

void DrawGroupHeading(const DRAWITEMSTRUCT& item, HBRUSH background) {
  wchar_t text[100];
  GetWindowTextW(item.hwndItem, text, static_cast<int>(std::size(text)));
  const auto font = HeadingFont(item.hwndItem, item.CtlType == ODT_BUTTON);
  const HGDIOBJ old_font = SelectObject(item.hDC, font.Get());
  FillRect(item.hDC, &item.rcItem, background);
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, HeadingColor());
  const UINT prefix = item.itemState & ODS_NOACCEL ? DT_HIDEPREFIX : 0;
  const UINT format = DT_SINGLELINE | DT_VCENTER | prefix;
  RECT words = item.rcItem;
  InflateRect(&words, -2, 0);
  DrawTextW(item.hDC, text, -1, &words, format);
  DrawTextW(item.hDC, text, -1, &words, format | DT_CALCRECT);
  const RECT focus{item.rcItem.left, item.rcItem.top, words.right + 2, item.rcItem.bottom};
  DrawRule(item.hDC, focus.right + 6, item.rcItem);
  const bool shows_focus = (item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT);
  if (shows_focus) DrawFocusRect(item.hDC, &focus);
  SelectObject(item.hDC, old_font);
}

}  // namespace quellix
