// The colours of lists, which Windows does not darken by itself.
#include <algorithm>

#include "ui/dpi.h"
#include "ui/list_view.h"
#include "ui/looks.h"

namespace quellix {
namespace {

// The arrow of the column that sorts, at the top in the middle, as Windows draws it.
void DrawArrow(HDC target, const RECT& place, bool down) {
  const int middle = (place.left + place.right) / 2, size = (place.bottom - place.top) / 6;
  const int top = place.top + 2, bottom = top + size;
  const POINT up_arrow[] = {{middle - size, bottom}, {middle + size, bottom}, {middle, top}};
  const POINT down_arrow[] = {{middle - size, top}, {middle + size, top}, {middle, bottom}};
  const HGDIOBJ brush = SelectObject(target, GetStockObject(DC_BRUSH)),
                pen = SelectObject(target, GetStockObject(NULL_PEN));
  SetDCBrushColor(target, ColorOf(Paint::kDimmed));
  Polygon(target, down ? down_arrow : up_arrow, 3);
  SelectObject(target, brush);
  SelectObject(target, pen);
}

void DrawHeading(HWND header, const NMCUSTOMDRAW& draw) {
  wchar_t text[128] = {};
  HDITEMW item{};
  item.mask = HDI_TEXT | HDI_FORMAT;
  item.pszText = text;
  item.cchTextMax = static_cast<int>(std::size(text));
  Header_GetItem(header, static_cast<int>(draw.dwItemSpec), &item);
  RECT place = draw.rc;
  FillRect(draw.hdc, &place, BrushOf(Paint::kFace));
  const RECT edge{place.right - 1, place.top, place.right, place.bottom};
  FillRect(draw.hdc, &edge, BrushOf(Paint::kLine));
  if (item.fmt & (HDF_SORTUP | HDF_SORTDOWN)) {
    DrawArrow(draw.hdc, place, (item.fmt & HDF_SORTDOWN) != 0);
  }
  InflateRect(&place, -(place.bottom - place.top) / 4, 0);
  SetBkMode(draw.hdc, TRANSPARENT);
  SetTextColor(draw.hdc, ColorOf(Paint::kText));
  const bool at_right = (item.fmt & HDF_JUSTIFYMASK) == HDF_RIGHT;
  DrawTextW(
      draw.hdc, text, -1, &place,
      DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX | (at_right ? DT_RIGHT : DT_LEFT));
}

// Behind the last heading, which Windows paints in a light colour after all others.
void DrawRest(HWND header, const NMCUSTOMDRAW& draw) {
  RECT rest{};
  GetClientRect(header, &rest);
  for (int i = Header_GetItemCount(header); i-- > 0;) {
    RECT place{};
    Header_GetItemRect(header, i, &place);
    rest.left = std::max(rest.left, place.right);
  }
  if (rest.left < rest.right) FillRect(draw.hdc, &rest, BrushOf(Paint::kFace));
}

// For NM_CUSTOMDRAW of headings.
LRESULT PaintHeading(const NMCUSTOMDRAW& draw) {
  switch (draw.dwDrawStage) {
    case CDDS_PREPAINT:
      FillRect(draw.hdc, &draw.rc, BrushOf(Paint::kFace));
      return CDRF_NOTIFYITEMDRAW | CDRF_NOTIFYPOSTPAINT;
    case CDDS_ITEMPREPAINT:
      DrawHeading(draw.hdr.hwndFrom, draw);
      return CDRF_SKIPDEFAULT;
    case CDDS_POSTPAINT:
      DrawRest(draw.hdr.hwndFrom, draw);
      return CDRF_DODEFAULT;
    default:
      return CDRF_DODEFAULT;
  }
}

}  // namespace

// What headings ask of their list; outside the dark they are Windows' own.
LRESULT CALLBACK ListView::PaintHeadings(HWND list, UINT message, WPARAM wparam, LPARAM lparam,
                                         UINT_PTR id, DWORD_PTR) {
  if (message == WM_NCDESTROY) RemoveWindowSubclass(list, PaintHeadings, id);
  if (message == WM_NOTIFY && IsDark()) {
    const auto& header = *reinterpret_cast<const NMHDR*>(lparam);
    const auto& draw = *reinterpret_cast<const NMCUSTOMDRAW*>(lparam);
    if (header.code == NM_CUSTOMDRAW && header.hwndFrom == ListView_GetHeader(list))
      return PaintHeading(draw);
  }
  return DefSubclassProc(list, message, wparam, lparam);
}

void ListView::TakeLooks() const {
  ListView_SetBkColor(list_, ColorOf(Paint::kPaper));
  ListView_SetTextBkColor(list_, ColorOf(Paint::kPaper));
  ListView_SetTextColor(list_, ColorOf(Paint::kText));
}

}  // namespace quellix
