// Every window on the smallest screens: 800x600 at 100 %, and 1366x768 at 150 %.
#include <gtest/gtest.h>

#include <algorithm>

#include "list_windows.h"
#include "options_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr SIZE kSmall{800, 600}, kLarge{1366 * 2 / 3, 768 * 2 / 3};  // in pixels at 96 DPI

struct WindowCase {
  const char* name;
  HWND (*open)(const QuellixWindow& window);
};

template <int kEntry>
HWND ByMenu(const QuellixWindow& window) {
  window.Choose(kEntry);
  HWND opened = nullptr;
  EXPECT_TRUE(Await([&] { return (opened = GetLastActivePopup(window.main())) != window.main(); }));
  return opened;
}

HWND Editor(const QuellixWindow& window) {
  PressIn(ByMenu<mnuManagePlugin>(window), mnuCreate);
  return window.AwaitWindow(L"Plugin: NoName");
}

HWND Generator(const QuellixWindow& window) {
  const HWND editor = Editor(window);
  window.PressKey(GetDlgItem(editor, sstPlugin), VK_RIGHT);
  EXPECT_TRUE(Await([&] { return IsWindowVisible(GetDlgItem(editor, lstvRegistry)) != FALSE; }));
  Type(editor, txtRegistrySubkey, L"x");
  PressIn(editor, cmdGeneratesubkeys);
  return window.AwaitWindow(L"Generate keys");
}

HWND Trial(const QuellixWindow& window) {
  PressIn(Editor(window), cmdTry);
  return window.AwaitWindow(L"Try it");
}

HWND Reference(const QuellixWindow& window) {
  const HWND tool = ByMenu<mnuOrphanedApplicationPath>(window),
             list = GetDlgItem(tool, lstvInvalid);
  EXPECT_TRUE(AwaitPart(tool, lblStatus, L"orphaned"));
  for (const WPARAM key : {VK_END, VK_HOME}) window.PressKey(list, key);
  EXPECT_TRUE(AwaitEnabled(tool, cmdEdit));
  PressIn(tool, cmdEdit);
  return window.AwaitWindow(L"Edit application path");
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
    {"Log", [](const QuellixWindow& window) { return ListNamed("Log").open(window); }},
    {"Preview", [](const QuellixWindow& window) { return ListNamed("Preview").open(window); }},
    {"Results", [](const QuellixWindow& window) { return ListNamed("Results").open(window); }}};

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

SIZE SizeOf(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  return {place.right - place.left, place.bottom - place.top};
}

struct SmallScreenTest : testing::TestWithParam<WindowCase> {
  const SeededLists seeded_;
};

TEST_P(SmallScreenTest, FitsAndKeepsRoomForAllThatIsInIt) {
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nAsk=1\r\nDelMethod=B\r\n");
  const QuellixWindow program;
  const HWND window = GetParam().open(program);
  ASSERT_TRUE(window && IsWindowVisible(window));
  ExpectRoom(window);
  // As small as it goes.
  const bool is_sizable = (GetWindowLongW(window, GWL_STYLE) & WS_THICKFRAME) != 0;
  if (is_sizable) SetWindowPos(window, nullptr, 0, 0, 1, 1, SWP_NOMOVE | SWP_NOZORDER);
  const SIZE least = SizeOf(window);
  EXPECT_LE(least.cx, std::min(kSmall.cx, kLarge.cx));
  EXPECT_LE(least.cy, std::min(kSmall.cy, kLarge.cy));
  ExpectRoom(window);
  if (!GetDlgItem(window, lstPages)) return;
  const HWND pages = GetDlgItem(window, lstPages);
  for (int page = 0; page < kOptionsPages; ++page) {
    SCOPED_TRACE(page);
    SendMessageW(pages, LB_SETCURSEL, static_cast<WPARAM>(page), 0);
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(lstPages, LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(pages));
    ExpectRoom(window);
  }
}

INSTANTIATE_TEST_SUITE_P(Windows, SmallScreenTest, testing::ValuesIn(kWindows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace quellix::test
