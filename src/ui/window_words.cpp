#include "ui/window_words.h"

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"

namespace quellix {
namespace {

void TranslateText(HWND window) { ShowControlText(window, Tr(ControlText(window))); }

void TranslateMenu(HMENU menu) {
  for (int i = GetMenuItemCount(menu); i-- > 0;) {
    const auto place = static_cast<UINT>(i);
    wchar_t text[200] = {};
    GetMenuStringW(menu, place, text, static_cast<int>(std::size(text)), MF_BYPOSITION);
    std::wstring shown = Wide(Tr(Narrow(text)));
    MENUITEMINFOW item{};
    item.cbSize = sizeof(item);
    item.fMask = MIIM_STRING;
    item.dwTypeData = shown.data();
    if (shown != text) SetMenuItemInfoW(menu, place, TRUE, &item);
    if (const HMENU below = GetSubMenu(menu, i)) TranslateMenu(below);
  }
}

}  // namespace

void TranslateWindow(HWND window) {
  TranslateText(window);
  for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    TranslateText(child);
  }
  const bool is_child = (GetWindowLongW(window, GWL_STYLE) & WS_CHILD) != 0;
  if (const HMENU menu = is_child ? nullptr : GetMenu(window)) TranslateMenu(menu);
}

UniqueMenu LoadProgramMenu(int id) {
  UniqueMenu menu(LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id)));
  TranslateMenu(menu.Get());
  return menu;
}

}  // namespace quellix
