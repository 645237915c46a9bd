#include "ui/text_room.h"

#include <algorithm>
#include <string>

#include "ui/dpi.h"
#include "ui/handles.h"

namespace quellix {
namespace {

enum class Kind { kOther, kLine, kParagraph, kPush, kBox, kFrame, kChoice, kTabs };

bool IsOfClass(HWND control, const wchar_t* wanted) {
  wchar_t name[32] = {};
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  return lstrcmpiW(name, wanted) == 0;
}

// The device of a control, with its font.
class Paper {
 public:
  explicit Paper(HWND control) : control_(control), device_(GetDC(control)) {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    if (font) old_ = SelectObject(device_, font);
  }
  ~Paper() {
    if (old_) SelectObject(device_, old_);
    ReleaseDC(control_, device_);
  }
  Paper(const Paper&) = delete;
  Paper& operator=(const Paper&) = delete;

  // In a width, or on one line.
  SIZE Measure(const std::wstring& text, UINT format, int width = 0) const {
    RECT room{0, 0, width, 0};
    DrawTextW(device_, text.c_str(), -1, &room,
              DT_CALCRECT | format | (width > 0 ? DT_WORDBREAK : DT_SINGLELINE));
    return {room.right, room.bottom};
  }
  int LineHeight() const {
    TEXTMETRICW metrics{};
    GetTextMetricsW(device_, &metrics);
    return metrics.tmHeight;
  }

 private:
  HWND control_;
  HDC device_;
  HGDIOBJ old_ = nullptr;
};

std::wstring TextOf(HWND control) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
  text.resize(
      static_cast<size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
  return text;
}

SIZE SizeOf(HWND control) {
  RECT place;
  GetWindowRect(control, &place);
  return {place.right - place.left, place.bottom - place.top};
}

Kind KindOfButton(DWORD style) {
  switch (style & BS_TYPEMASK) {
    case BS_GROUPBOX:
      return Kind::kFrame;
    case BS_PUSHBUTTON:
    case BS_DEFPUSHBUTTON:
      return Kind::kPush;
    case BS_OWNERDRAW:
      return Kind::kOther;
    default:
      return Kind::kBox;
  }
}

Kind KindOfStatic(HWND control, DWORD style) {
  const DWORD type = style & SS_TYPEMASK;
  const bool is_text = type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT;
  if (!is_text || (style & SS_ELLIPSISMASK) != 0) return Kind::kOther;
  const int line = Paper(control).LineHeight();
  return SizeOf(control).cy >= line * 3 / 2 ? Kind::kParagraph : Kind::kLine;
}

Kind KindOf(HWND control) {
  const auto style = static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
  if (IsOfClass(control, WC_BUTTONW)) return KindOfButton(style);
  if (IsOfClass(control, WC_STATICW)) return KindOfStatic(control, style);
  if (IsOfClass(control, WC_COMBOBOXW) && (style & 3) == CBS_DROPDOWNLIST) return Kind::kChoice;
  return IsOfClass(control, WC_TABCONTROLW) ? Kind::kTabs : Kind::kOther;
}

UINT FormatOf(HWND control, Kind kind) {
  const bool is_static = kind == Kind::kLine || kind == Kind::kParagraph;
  const bool is_plain = (GetWindowLongW(control, GWL_STYLE) & SS_NOPREFIX) != 0;
  return is_static && is_plain ? DT_NOPREFIX : 0;
}

// Around the words, in 96-DPI units: borders, the box, the arrow.
int PaddingOf(Kind kind) {
  switch (kind) {
    case Kind::kPush:
      return 14;
    case Kind::kBox:
      return 22;
    case Kind::kFrame:
      return 20;
    case Kind::kChoice:
      return 28;
    default:
      return 2;
  }
}

// Chinese and Japanese may go to the next line behind each character.
size_t EndOfWord(const std::wstring& text, size_t at) {
  constexpr wchar_t kFirstIdeograph = 0x2E80;
  for (; at < text.size() && text[at] != L' '; ++at) {
    if (text[at] >= kFirstIdeograph) return at + 1;
  }
  return at;
}

int WidestWord(const Paper& paper, const std::wstring& text, UINT format) {
  int widest = 0;
  for (size_t at = 0; at < text.size();) {
    const size_t end = EndOfWord(text, at);
    if (end > at) {
      widest = std::max<int>(widest, paper.Measure(text.substr(at, end - at), format).cx);
    }
    at = std::max(end, at + 1);
  }
  return widest;
}

// The messages by which a box tells its rows.
struct RowMessages {
  UINT count, length, text;
};

int WidestOf(HWND box, const Paper& paper, const RowMessages& ask) {
  int widest = 0;
  for (LRESULT i = SendMessageW(box, ask.count, 0, 0); i-- > 0;) {
    const auto row = static_cast<WPARAM>(i);
    const LRESULT length = SendMessageW(box, ask.length, row, 0);
    std::wstring text(static_cast<size_t>(std::max<LRESULT>(length, 0)) + 1, L'\0');
    SendMessageW(box, ask.text, row, reinterpret_cast<LPARAM>(text.data()));
    widest = std::max<int>(widest, paper.Measure(text.c_str(), DT_NOPREFIX).cx);
  }
  return widest;
}

int WidthOfTabs(HWND tabs) {
  RECT last{};
  TabCtrl_GetItemRect(tabs, TabCtrl_GetItemCount(tabs) - 1, &last);
  return last.right;
}

// Screens and fonts of other resolutions differ a little.
int WithReserve(int width) { return width + width / 40; }

}  // namespace

TextRoom TextRoomOf(HWND control) {
  const Kind kind = KindOf(control);
  if (kind == Kind::kOther) return {};
  if (kind == Kind::kTabs) return {.width = WithReserve(WidthOfTabs(control)) + 4};
  const Paper paper(control);
  const int padding = Scale(PaddingOf(kind), DpiOf(control));
  if (kind == Kind::kChoice) {
    constexpr RowMessages kAsk{CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT};
    return {.width = WithReserve(WidestOf(control, paper, kAsk)) + padding};
  }
  const std::wstring text = TextOf(control);
  if (text.empty()) return {};
  const UINT format = FormatOf(control, kind);
  if (kind == Kind::kParagraph) {
    const int width = static_cast<int>(SizeOf(control).cx);
    return {.width = width, .height = WrappedHeight(control, width), .wraps = true};
  }
  const SIZE size = paper.Measure(text, format);
  TextRoom room{.width = WithReserve(static_cast<int>(size.cx)) + padding,
                .height = static_cast<int>(size.cy)};
  if (kind != Kind::kFrame) room.wrapped = WidestWord(paper, text, format) + padding;
  room.is_button = kind == Kind::kPush;
  return room;
}

int WidestRow(HWND list_box) {
  constexpr RowMessages kAsk{LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT};
  return WithReserve(WidestOf(list_box, Paper(list_box), kAsk)) +
         Scale(PaddingOf(Kind::kChoice), DpiOf(list_box));
}

int WrappedHeight(HWND control, int width) {
  const Kind kind = KindOf(control);
  const int padding = Scale(PaddingOf(kind), DpiOf(control));
  const Paper paper(control);
  const int room = std::max(1, width * 40 / 41 - padding);
  const int height =
      static_cast<int>(paper.Measure(TextOf(control), FormatOf(control, kind), room).cy);
  return kind == Kind::kPush ? height + padding / 2 : height;
}

void Wrap(HWND control) {
  if (!IsOfClass(control, WC_BUTTONW)) return;
  const LONG style = GetWindowLongW(control, GWL_STYLE);
  SetWindowLongW(control, GWL_STYLE, style | BS_MULTILINE);
}

}  // namespace quellix
