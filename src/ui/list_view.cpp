#include "ui/list_view.h"

#include <algorithm>

#include <uxtheme.h>
#include <vssym32.h>

#include "platform/win32/win32_text.h"
#include "ui/clipboard.h"
#include "ui/dpi.h"
#include "ui/looks.h"

namespace quellix {
namespace {

using UniqueTheme = Unique<NullHandleTraits<HTHEME, CloseThemeData>>;

// By Box, from kOff on: as the theme calls it, and as Windows draws it without one.
constexpr struct {
  int state;
  UINT classic;
} kBoxes[] = {{CBS_UNCHECKEDNORMAL, DFCS_BUTTONCHECK},
              {CBS_CHECKEDNORMAL, DFCS_BUTTONCHECK | DFCS_CHECKED},
              {CBS_MIXEDNORMAL, DFCS_BUTTON3STATE | DFCS_CHECKED},
              {CBS_UNCHECKEDDISABLED, DFCS_BUTTONCHECK | DFCS_INACTIVE},
              {CBS_CHECKEDDISABLED, DFCS_BUTTONCHECK | DFCS_CHECKED | DFCS_INACTIVE}};

// What a heading needs beside its words, in 96-DPI units.
constexpr int kAroundTitle = 14;

// As long as the list itself goes on with a name that is typed.
constexpr ULONGLONG kMillisecondsOfTyping = 1000;

bool IsOn(Box box) { return box == Box::kOn || box == Box::kSome; }
bool IsOff(Box box) { return box == Box::kOff || box == Box::kSome; }

}  // namespace

UniqueImages MakeBoxImages(HWND window, int dpi) {
  const int side = Scale(16, dpi), count = static_cast<int>(std::size(kBoxes));
  const UniqueTheme theme(OpenThemeData(window, L"BUTTON"));
  const HDC screen = GetDC(window), memory = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, side * count, side);
  const HGDIOBJ old = SelectObject(memory, bitmap);
  RECT all{0, 0, side * count, side};
  FillRect(memory, &all, BrushOf(Paint::kPaper));
  for (int i = 0; i < count; ++i) {
    RECT place{i * side, 0, (i + 1) * side, side};
    InflateRect(&place, -Scale(1, dpi), -Scale(1, dpi));
    if (theme) {
      DrawThemeBackground(theme.Get(), memory, BP_CHECKBOX, kBoxes[i].state, &place, nullptr);
    } else {
      const bool is_dimmed = (kBoxes[i].classic & DFCS_INACTIVE) != 0;
      DrawFrameControl(memory, &place, DFC_BUTTON, kBoxes[i].classic | DFCS_FLAT);
      FrameRect(memory, &place, BrushOf(is_dimmed ? Paint::kDimmed : Paint::kText));
    }
  }
  SelectObject(memory, old);
  UniqueImages images(ImageList_Create(side, side, ILC_COLOR32, count, 0));
  ImageList_Add(images.Get(), bitmap, nullptr);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(window, screen);
  return images;
}

void ListView::Attach(HWND list, std::span<const Column> columns, Provider provider) {
  list_ = list;
  provider_ = std::move(provider);
  order_.reset();
  chosen_.reset();
  footer_ = {};
  SetWindowSubclass(list, PaintHeadings, 2, 0);
  TakeLooks();
  OrderRows(0);
  ListView_SetExtendedListViewStyle(
      list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_HEADERDRAGDROP);
  for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_SUBITEM | LVCF_FMT;
    column.fmt = columns[i].number ? LVCFMT_RIGHT : LVCFMT_LEFT;
    std::wstring title = Wide(Tr(columns[i].title));
    column.pszText = title.data();
    column.iSubItem = i;
    ListView_InsertColumn(list, i, &column);
  }
}

void ListView::SetCheckBoxes(IsTicked is_ticked, Toggle toggle) {
  const auto box_of = [is_ticked = std::move(is_ticked)](int row) {
    return is_ticked(row) ? Box::kOn : Box::kOff;
  };
  ShowBoxes(box_of, std::move(toggle));
}

void ListView::SetBoxes(BoxOf box_of, Toggle toggle) {
  has_own_boxes_ = true;
  ShowBoxes(std::move(box_of), std::move(toggle));
}

void ListView::ShowBoxes(BoxOf box_of, Toggle toggle) {
  box_of_ = std::move(box_of);
  toggle_ = std::move(toggle);
  ListView_SetExtendedListViewStyleEx(list_, LVS_EX_CHECKBOXES, LVS_EX_CHECKBOXES);
  ListView_SetCallbackMask(list_, LVIS_STATEIMAGEMASK);
}

void ListView::SetMarks(IsMarked is_marked) {
  SetLooks([is_marked = std::move(is_marked)](int row) {
    return is_marked(row) ? RowLook::kMarked : RowLook::kPlain;
  });
}

void ListView::SetTips(Tip tip) {
  tip_ = std::move(tip);
  ListView_SetExtendedListViewStyleEx(list_, LVS_EX_INFOTIP, LVS_EX_INFOTIP);
}

void ListView::SetResolution(int dpi, std::span<const Column> columns, std::span<const int> icons) {
  for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
    const std::wstring title = Wide(Tr(columns[i].title));
    const int words = ListView_GetStringWidth(list_, title.c_str()) + Scale(kAroundTitle, dpi);
    ListView_SetColumnWidth(list_, i, std::max(Scale(columns[i].width, dpi), words));
  }
  heading_font_.Reset();
  TakeLooks();
  if (has_own_boxes_) {
    UniqueImages boxes = MakeBoxImages(list_, dpi);
    ListView_SetImageList(list_, boxes.Get(), LVSIL_STATE);
    boxes_ = std::move(boxes);
  }
  if (icons.empty()) return;
  const int side = Scale(16, dpi);
  UniqueImages images(
      ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, static_cast<int>(icons.size()), 0));
  for (const int id : icons) {
    ImageList_AddIcon(images.Get(), LoadProgramIcon(id, side, side).Get());
  }
  SetImages(std::move(images));
}

void ListView::SetImages(UniqueImages images) {
  ListView_SetImageList(list_, images.Get(), LVSIL_SMALL);
  images_ = std::move(images);
}

void ListView::SetRows(int count) {
  OrderRows(static_cast<size_t>(count));
  ListView_SetItemCountEx(list_, count, LVSICF_NOSCROLL);
  ListView_SetItemState(list_, -1, 0, LVIS_SELECTED);
  InvalidateRect(list_, nullptr, TRUE);
  Recount();
}

// Where the list sorts itself, what comes stands at the end until it is sorted anew.
void ListView::GrowTo(int count) {
  for (auto row = static_cast<uint32_t>(rows_.size()); order_ && row < static_cast<uint32_t>(count);
       ++row) {
    rows_.push_back(row);
    places_.push_back(row);
  }
  ListView_SetItemCountEx(list_, count, LVSICF_NOSCROLL | LVSICF_NOINVALIDATEALL);
  Recount();
}

std::vector<size_t> ListView::SelectedRows() const {
  std::vector<size_t> rows;
  for (int place = -1; (place = ListView_GetNextItem(list_, place, LVNI_SELECTED)) >= 0;) {
    rows.push_back(static_cast<size_t>(RowAt(place)));
  }
  if (order_) std::ranges::sort(rows);
  return rows;
}

void ListView::Select(size_t row, bool is_shown) {
  const int index = PlaceOf(row);
  ListView_SetItemState(list_, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  if (is_shown) ListView_EnsureVisible(list_, index, FALSE);
}

void ListView::FillWith(int column, int minimum) {
  RECT client;
  GetClientRect(list_, &client);
  // Room for a scroll bar is kept whether it shows or not, so that it brings no second one.
  const bool scrolls = (GetWindowLongW(list_, GWL_STYLE) & WS_VSCROLL) != 0;
  int width = client.right - (scrolls ? 0 : GetSystemMetrics(SM_CXVSCROLL));
  for (int i = Header_GetItemCount(ListView_GetHeader(list_)); i-- > 0;) {
    if (i != column) width -= ListView_GetColumnWidth(list_, i);
  }
  ListView_SetColumnWidth(list_, column, std::max(width, minimum));
}

void ListView::ShowOrder(int column, bool descending) {
  const HWND header = ListView_GetHeader(list_);
  for (int i = Header_GetItemCount(header); i-- > 0;) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    Header_GetItem(header, i, &item);
    item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
    if (i == column) item.fmt |= descending ? HDF_SORTDOWN : HDF_SORTUP;
    Header_SetItem(header, i, &item);
  }
}

POINT ListView::MenuPlace(POINT screen) const {
  if (screen.x != -1 || screen.y != -1) return screen;
  const int row = std::max(ListView_GetNextItem(list_, -1, LVNI_FOCUSED), 0);
  RECT place{};
  ListView_GetItemRect(list_, row, &place, LVIR_LABEL);
  POINT corner{place.left, place.bottom};
  ClientToScreen(list_, &corner);
  return corner;
}

std::vector<std::wstring> ListView::Titles() const {
  const HWND header = ListView_GetHeader(list_);
  std::vector<std::wstring> titles;
  for (int i = 0; i < Header_GetItemCount(header); ++i) {
    wchar_t title[128] = {};
    HDITEMW item{};
    item.mask = HDI_TEXT;
    item.pszText = title;
    item.cchTextMax = static_cast<int>(std::size(title));
    Header_GetItem(header, i, &item);
    titles.emplace_back(title);
  }
  return titles;
}

void ListView::CopySelected() const {
  const int columns = Header_GetItemCount(ListView_GetHeader(list_));
  std::wstring text;
  for (int place = -1; (place = ListView_GetNextItem(list_, place, LVNI_SELECTED)) >= 0;) {
    for (int column = 0; column < columns; ++column) {
      text += (column == 0 ? L"" : L"\t") + provider_(RowAt(place), column).text;
    }
    text += L"\r\n";
  }
  if (!text.empty()) PutIntoClipboard(GetParent(list_), text);
}

bool ListView::CanTick(bool ticked) const {
  if (!toggle_) return false;
  return std::ranges::any_of(SelectedRows(), [&](size_t row) {
    const Box box = box_of_(static_cast<int>(row));
    return ticked ? IsOff(box) : IsOn(box);
  });
}

void ListView::TickSelected(bool ticked) {
  for (const size_t row : SelectedRows()) {
    const Box box = box_of_(static_cast<int>(row));
    if (ticked ? IsOff(box) : IsOn(box)) ToggleRow(static_cast<int>(row));
  }
  Refresh();
}

void ListView::Erase() {
  if (CanErase()) erase_();
}

bool ListView::OnNotify(NMHDR& header, LRESULT& result) {
  if (header.hwndFrom != list_) return false;
  switch (header.code) {
    case LVN_GETDISPINFOW:
      Answer(reinterpret_cast<NMLVDISPINFOW&>(header).item);
      return true;
    case LVN_GETINFOTIPW: {
      auto& tip = reinterpret_cast<NMLVGETINFOTIPW&>(header);
      if (tip_) lstrcpynW(tip.pszText, tip_(RowAt(tip.iItem)).c_str(), tip.cchTextMax);
      return true;
    }
    case NM_CUSTOMDRAW:
      result = Paint(reinterpret_cast<NMLVCUSTOMDRAW&>(header));
      return true;
    case LVN_ODFINDITEMW: {
      const auto& find = reinterpret_cast<const NMLVFINDITEMW&>(header);
      const bool is_text = (find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) != 0;
      typed_at_ = GetTickCount64();
      result = is_text ? Find(find.lvfi.psz, find.iStart) : -1;
      return true;
    }
    case LVN_COLUMNCLICK:
      SortBy(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem);
      return true;
    case NM_CLICK:
    case NM_DBLCLK:  // the second of two
      return OnClick(reinterpret_cast<const NMITEMACTIVATE&>(header));
    case LVN_KEYDOWN:
      return OnKey(reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey);
    default:
      return false;
  }
}

bool ListView::OnKey(WORD key) {
  const bool control = GetKeyState(VK_CONTROL) < 0;
  if (key == VK_SPACE && toggle_) {
    if (GetTickCount64() - typed_at_ < kMillisecondsOfTyping) return false;  // within a name
    ToggleSelected();
  } else if (key == VK_DELETE && erase_) {
    Erase();
  } else if (key == 'A' && control) {
    SelectAll();
  } else if (key == 'C' && control) {
    CopySelected();
  } else {
    return false;
  }
  return true;
}

void ListView::Answer(LVITEMW& item) const {
  if (item.mask & (LVIF_TEXT | LVIF_IMAGE)) {
    const Cell cell = provider_(RowAt(item.iItem), item.iSubItem);
    if (item.mask & LVIF_TEXT) lstrcpynW(item.pszText, cell.text.c_str(), item.cchTextMax);
    if (item.mask & LVIF_IMAGE) item.iImage = cell.image;
  }
  if ((item.mask & LVIF_STATE) && box_of_) {
    item.state = INDEXTOSTATEIMAGEMASK(static_cast<UINT>(box_of_(RowAt(item.iItem))));
    item.stateMask = LVIS_STATEIMAGEMASK;
  }
}

LRESULT ListView::Paint(NMLVCUSTOMDRAW& draw) {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      return (look_of_ ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT) |
             (footer_.is_attached() ? CDRF_NOTIFYPOSTPAINT : CDRF_DODEFAULT);
    case CDDS_ITEMPREPAINT:
      return PaintRow(draw);
    case CDDS_POSTPAINT:
      footer_.PaintEmpty(draw.nmcd.hdc);
      return CDRF_DODEFAULT;
    default:
      return CDRF_DODEFAULT;
  }
}

LRESULT ListView::PaintRow(NMLVCUSTOMDRAW& draw) {
  switch (look_of_(RowAt(static_cast<int>(draw.nmcd.dwItemSpec)))) {
    case RowLook::kMarked:
      draw.clrText = ColorOf(Paint::kMarked);
      break;
    case RowLook::kDimmed:
      draw.clrText = ColorOf(Paint::kDimmed);
      break;
    case RowLook::kHeading:
      if (!heading_font_) heading_font_ = BoldFontOf(list_);
      SelectObject(draw.nmcd.hdc, heading_font_.Get());
      return CDRF_NEWFONT;
    case RowLook::kPlain:
      break;
  }
  return CDRF_DODEFAULT;
}

bool ListView::OnClick(const NMITEMACTIVATE& click) {
  if (!toggle_) return false;
  LVHITTESTINFO hit{};
  hit.pt = click.ptAction;
  const int row = ListView_HitTest(list_, &hit);
  if (row < 0 || hit.flags != LVHT_ONITEMSTATEICON) return false;
  ToggleRow(RowAt(row));
  Refresh();
  return true;
}

// Screen readers learn of a box by an event of its own.
void ListView::ToggleRow(int row) {
  toggle_(row);
  NotifyWinEvent(EVENT_OBJECT_STATECHANGE, list_, OBJID_CLIENT,
                 PlaceOf(static_cast<size_t>(row)) + 1);
}

void ListView::ToggleSelected() {
  const int focused = FocusedRow();
  if (focused < 0) return;
  const Box box = box_of_(focused);
  if (CountSelected() == 0) ToggleRow(focused);
  for (const size_t row : SelectedRows()) {
    const int index = static_cast<int>(row);
    if (box_of_(index) == box) ToggleRow(index);
  }
  Refresh();
}

}  // namespace quellix
