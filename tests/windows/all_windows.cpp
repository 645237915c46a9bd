#include "all_windows.h"

#include <algorithm>

#include "list_windows.h"
#include "options_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

// That opens before another one.
HWND Above(HWND owner) {
  HWND opened = nullptr;
  EXPECT_TRUE(Await([&] {
    opened = GetLastActivePopup(owner);
    return opened != owner && IsWindowVisible(opened);
  }));
  return opened;
}

template <int kEntry>
HWND ByMenu(const QuellixWindow& window) {
  window.Choose(kEntry);
  return Above(window.main());
}

HWND Editor(const QuellixWindow& window) {
  const HWND manager = ByMenu<mnuManagePlugin>(window);
  PressIn(manager, mnuCreate);
  return Above(manager);
}

HWND Generator(const QuellixWindow& window) {
  const HWND editor = Editor(window);
  window.PressKey(GetDlgItem(editor, sstPlugin), VK_RIGHT);
  EXPECT_TRUE(Await([&] { return IsWindowVisible(GetDlgItem(editor, lstvRegistry)) != FALSE; }));
  Type(editor, txtRegistrySubkey, L"x");
  PressIn(editor, cmdGeneratesubkeys);
  return Above(editor);
}

HWND Trial(const QuellixWindow& window) {
  const HWND editor = Editor(window);
  PressIn(editor, cmdTry);
  return Above(editor);
}

HWND Reference(const QuellixWindow& window) {
  const HWND tool = ByMenu<mnuOrphanedApplicationPath>(window),
             list = GetDlgItem(tool, lstvInvalid);
  EXPECT_TRUE(Await([&] { return CountRows(list) > 0 && !IsEnabled(tool, cmdStop); }));
  for (const WPARAM key : {VK_END, VK_HOME}) window.PressKey(list, key);
  EXPECT_TRUE(AwaitEnabled(tool, cmdEdit));
  PressIn(tool, cmdEdit);
  return Above(tool);
}

// Those that have lists are opened as their lists are.
const WindowCase kWindows[] = {
    {"Main", [](const QuellixWindow& window) { return window.main(); }},
    {"Options", ByMenu<mnuOptions>},
    {"Backups", ByMenu<mnuBackups>},
    {"Cache", ByMenu<mnuIECache>},
    {"Users", ByMenu<mnuUsers>},
    {"WipeFree", ByMenu<mnuWipeFree>},
    {"About", ByMenu<mnuAbout>},
    {"Favorites", ByMenu<mnuFavorites>},
    {"Updates", ByMenu<mnuUpdates>},
    {"Plugins", ByMenu<mnuManagePlugin>},
    {"Editor", Editor},
    {"Generator", Generator},
    {"Trial", Trial},
    {"SharedDlls", ByMenu<mnuOrphanedDLL>},
    {"FileReferences", ByMenu<mnuOrphanedFilePath>},
    {"HelpFiles", ByMenu<mnuOrphanedHelpFile>},
    {"Components", ByMenu<mnuOrphanedActivex>},
    {"Reference", Reference},
    {"Countdown", ByMenu<mnuLogOff>},
    {"Log", [](const QuellixWindow& window) { return ListNamed("Log").open(window); }, true},
    {"Preview", [](const QuellixWindow& window) { return ListNamed("Preview").open(window); },
     true},
    {"Results", [](const QuellixWindow& window) { return ListNamed("Results").open(window); },
     true}};

RECT InParent(HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

std::string NameOf(HWND control) {
  return std::to_string(GetDlgCtrlID(control)) + " " + testing::PrintToString(TextOf(control));
}

// What may lie upon another: frames, and the drop-down part of boxes.
bool IsFrame(HWND control) {
  return IsOfClass(control, L"Button") &&
         (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

std::vector<HWND> ShownIn(HWND window) {
  std::vector<HWND> controls;
  for (HWND at = GetWindow(window, GW_CHILD); at; at = GetWindow(at, GW_HWNDNEXT)) {
    const RECT place = InParent(at);
    if (IsWindowVisible(at) && !IsRectEmpty(&place)) controls.push_back(at);
  }
  return controls;
}

class MessageFont {
 public:
  explicit MessageFont(HWND control) : control_(control), device_(GetDC(control)) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
    font_ = CreateFontIndirectW(&metrics.lfMessageFont);
    old_ = SelectObject(device_, font_);
  }
  ~MessageFont() {
    SelectObject(device_, old_);
    DeleteObject(font_);
    ReleaseDC(control_, device_);
  }
  MessageFont(const MessageFont&) = delete;
  MessageFont& operator=(const MessageFont&) = delete;

  // On one line, or as high as it is in a width.
  SIZE Measure(const std::wstring& text, UINT format, LONG width = 0) const {
    RECT room{0, 0, width, 0};
    DrawTextW(device_, text.c_str(), -1, &room,
              DT_CALCRECT | format | (width > 0 ? DT_WORDBREAK : DT_SINGLELINE));
    return {room.right, room.bottom};
  }

 private:
  HWND control_;
  HDC device_;
  HFONT font_;
  HGDIOBJ old_;
};

// What a control keeps beside its text, and whether that may stand on several lines.
struct TextPlace {
  LONG beside = -1;  // less than 0 for what has no text, or cuts it
  bool wraps = false;
};

TextPlace PlaceOfText(HWND control, LONG height) {
  const auto style = static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
  if (IsOfClass(control, L"Static")) {
    const bool is_cut = (style & SS_ELLIPSISMASK) != 0 || (style & SS_TYPEMASK) > SS_RIGHT;
    return {is_cut ? -1 : 0, height > 24};
  }
  if (IsOfClass(control, L"ComboBox")) return {(style & 3) == CBS_DROPDOWNLIST ? 20 : -1};
  if (!IsOfClass(control, L"Button")) return {};
  const DWORD kind = style & BS_TYPEMASK;
  return {kind <= BS_DEFPUSHBUTTON ? 6
          : kind == BS_GROUPBOX    ? 12
                                   : 17,
          (style & BS_MULTILINE) != 0};
}

void ExpectWholeText(HWND control) {
  const std::wstring text = TextOf(control);
  const RECT place = InParent(control);
  const LONG width = place.right - place.left, height = place.bottom - place.top;
  const TextPlace at = PlaceOfText(control, height);
  if (text.empty() || at.beside < 0) return;
  const bool is_plain =
      IsOfClass(control, L"Static") && (GetWindowLongW(control, GWL_STYLE) & SS_NOPREFIX) != 0;
  const MessageFont font(control);
  const LONG room = width - at.beside;
  const SIZE needs = font.Measure(text, is_plain ? DT_NOPREFIX : 0, at.wraps ? room : 0);
  EXPECT_LE(needs.cx, room) << NameOf(control) << " is cut at its end";
  EXPECT_LE(needs.cy, height) << NameOf(control) << " is cut below";
}

}  // namespace

std::span<const WindowCase> WindowCases() { return kWindows; }

// All controls lie within the window, and none upon another; pages are windows within it.
void ExpectRoom(HWND window) {
  RECT client{};
  GetClientRect(window, &client);
  const std::vector<HWND> controls = ShownIn(window);
  for (const HWND control : controls) {
    SCOPED_TRACE(NameOf(control));
    const RECT place = InParent(control);
    EXPECT_TRUE(place.left >= 0 && place.top >= 0) << place.left << ',' << place.top;
    EXPECT_LE(place.right, client.right);
    EXPECT_LE(place.bottom, client.bottom);
    if (IsOfClass(control, L"#32770")) ExpectRoom(control);
    for (const HWND other : controls) {
      if (other == control || IsFrame(control) || IsFrame(other)) continue;
      const RECT there = InParent(other);
      RECT common{};
      EXPECT_FALSE(IntersectRect(&common, &place, &there)) << "lies upon " << NameOf(other);
    }
  }
}

void ExpectWholeTexts(HWND window) {
  for (const HWND control : ShownIn(window)) {
    IsOfClass(control, L"#32770") ? ExpectWholeTexts(control) : ExpectWholeText(control);
  }
}

void ForEachPage(HWND window, const std::function<void()>& look) {
  const HWND pages = GetDlgItem(window, lstPages);
  for (int page = 0; pages && page < kOptionsPages; ++page) {
    SCOPED_TRACE(page);
    SendMessageW(pages, LB_SETCURSEL, static_cast<WPARAM>(page), 0);
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(lstPages, LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(pages));
    look();
  }
}

}  // namespace quellix::test
