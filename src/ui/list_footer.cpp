#include "ui/list_footer.h"

#include <utility>

#include "platform/win32/win32_text.h"
#include "ui/control_text.h"
#include "ui/looks.h"
#include "ui/resource.h"

namespace quellix {
namespace {

int HeightOf(HWND line) {
  const HDC screen = GetDC(line);
  const HGDIOBJ old =
      SelectObject(screen, reinterpret_cast<HFONT>(SendMessageW(line, WM_GETFONT, 0, 0)));
  TEXTMETRICW metrics{};
  GetTextMetricsW(screen, &metrics);
  SelectObject(screen, old);
  ReleaseDC(line, screen);
  return metrics.tmHeight + metrics.tmHeight / 4;
}

void PlaceBelow(HWND list, HWND line) {
  RECT place{};
  GetWindowRect(list, &place);
  MapWindowPoints(nullptr, GetParent(list), reinterpret_cast<POINT*>(&place), 2);
  const int height = HeightOf(line);
  SetWindowPos(line, nullptr, place.left, place.bottom + height / 8, place.right - place.left,
               height - height / 8, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

// The list is given its place by its window, and leaves the line its part of it.
LRESULT CALLBACK ListFooter::Follow(HWND list, UINT message, WPARAM wparam, LPARAM lparam,
                                    UINT_PTR id, DWORD_PTR data) {
  const auto line = reinterpret_cast<HWND>(data);
  switch (message) {
    case WM_WINDOWPOSCHANGING: {
      auto& place = *reinterpret_cast<WINDOWPOS*>(lparam);
      if ((place.flags & SWP_NOSIZE) == 0) place.cy -= HeightOf(line);
      break;
    }
    case WM_WINDOWPOSCHANGED: {
      const LRESULT result = DefSubclassProc(list, message, wparam, lparam);
      PlaceBelow(list, line);
      if (ListView_GetItemCount(list) == 0) InvalidateRect(list, nullptr, TRUE);
      return result;
    }
    case WM_SHOWWINDOW:
      ShowWindow(line, wparam ? SW_SHOWNA : SW_HIDE);
      break;
    case WM_NCDESTROY:
      RemoveWindowSubclass(list, Follow, id);
      break;
  }
  return DefSubclassProc(list, message, wparam, lparam);
}

void ListFooter::Attach(HWND list, const Locale& locale) {
  list_ = list;
  locale_ = locale;
  const bool is_shown = (GetWindowLongW(list, GWL_STYLE) & WS_VISIBLE) != 0;
  const DWORD style = WS_CHILD | SS_NOPREFIX | SS_ENDELLIPSIS | (is_shown ? WS_VISIBLE : 0);
  const auto number = static_cast<UINT_PTR>(GetDlgCtrlID(list) + lblTotals);
  line_ = CreateWindowW(L"STATIC", L"", style, 0, 0, 0, 0, GetParent(list),
                        reinterpret_cast<HMENU>(number), GetModuleHandleW(nullptr), nullptr);
  SendMessageW(line_, WM_SETFONT, static_cast<WPARAM>(SendMessageW(list, WM_GETFONT, 0, 0)), FALSE);
  RECT place{};
  GetWindowRect(list, &place);
  SetWindowSubclass(list, Follow, 1, reinterpret_cast<DWORD_PTR>(line_));
  SetWindowPos(list, nullptr, 0, 0, place.right - place.left, place.bottom - place.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void ListFooter::SetButton(HWND button, std::function<bool()> may) {
  button_ = {button, ControlText(button), std::move(may)};
}

// An empty list tells why by its own text, too: that is what is heard of it.
void ListFooter::Show(const ListTotals& totals) const {
  if (!line_) return;
  ShowControlText(line_, TotalsText(totals, locale_));
  ShowControlText(list_, totals.rows == 0 && why_empty_ ? why_empty_() : "");
  if (totals.rows == 0) InvalidateRect(list_, nullptr, TRUE);
  ShowButton(totals);
}

void ListFooter::ShowButton(const ListTotals& totals) const {
  if (!button_.window) return;
  ShowControlText(button_.window, TickedCaption(button_.caption, totals, locale_));
  const bool can = totals.ticked > 0 && (!button_.may || button_.may());
  EnableWithFocus(button_.window, can, list_);
}

void ListFooter::PaintEmpty(HDC target) const {
  if (!why_empty_ || ListView_GetItemCount(list_) > 0) return;
  RECT room{}, head{}, words{};
  GetClientRect(list_, &room);
  if (const HWND header = ListView_GetHeader(list_)) GetClientRect(header, &head);
  room.top = head.bottom;
  InflateRect(&room, -12, -4);
  const std::wstring text = Wide(why_empty_());
  const UINT format = DT_CENTER | DT_WORDBREAK | DT_NOPREFIX;
  words = room;
  const int height = DrawTextW(target, text.c_str(), -1, &words, format | DT_CALCRECT);
  room.top += std::max<int>(0, (room.bottom - room.top - height) / 3);
  SetBkMode(target, TRANSPARENT);
  SetTextColor(target, ColorOf(Paint::kDimmed));
  DrawTextW(target, text.c_str(), -1, &room, format);
}

}  // namespace quellix
