// The menu of every list, opened in each way there is, and what its commands do.
#include "list_windows.h"

#include "ui/resource.h"

namespace quellix::test {
namespace {

// A window of another program, by its class; null for none.
HWND AwaitClass(const wchar_t* name) {
  HWND window = nullptr;
  Await([&] { return (window = FindWindowW(name, nullptr)) != nullptr; });
  return window;
}

// The letters of its commands.
void ChooseByLetter(const OpenList& list, wchar_t letter) {
  PostMessageW(list.window.main(), WM_CHAR, letter, 1);
  EXPECT_TRUE(Await([&] { return !list.window.HasMenu(); })) << "the menu stays open";
}

struct ListMenuTest : testing::Test {
  const SeededLists seeded_;
};

TEST_F(ListMenuTest, OpensByTheRightButtonByShiftF10AndByTheMenuKey) {
  const QuellixWindow window;
  const ListCase& row = ListNamed("Results");
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  list.SelectFirst();
  const auto expect_menu = [&](const char* way) {
    EXPECT_TRUE(window.AwaitMenu()) << way;
    PostMessageW(window.main(), WM_KEYDOWN, VK_ESCAPE, 1);
    EXPECT_TRUE(Await([&] { return !window.HasMenu(); })) << way;
  };
  PressKeys(list.top, {VK_SHIFT, VK_F10});
  expect_menu("Shift+F10");
  PressKeys(list.top, {VK_APPS});
  expect_menu("menu key");
  RECT place{};
  GetWindowRect(list.list, &place);
  SetCursorPos(place.left + 60, place.top + 40);
  INPUT clicks[2]{};
  clicks[0].type = clicks[1].type = INPUT_MOUSE;
  clicks[0].mi.dwFlags = MOUSEEVENTF_RIGHTDOWN;
  clicks[1].mi.dwFlags = MOUSEEVENTF_RIGHTUP;
  SendInput(2, clicks, sizeof(INPUT));
  expect_menu("right button");
}

TEST_F(ListMenuTest, OpensTheFolderAndAsksForTheProperties) {
  const QuellixWindow window;
  const ListCase& row = ListNamed("Results");
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  list.SelectFirst();
  const auto choose = [&](wchar_t letter) {
    PostMessageW(list.top, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list.list), -1);
    ASSERT_TRUE(window.AwaitMenu());
    ChooseByLetter(list, letter);
  };
  // Wine shows none of a file whose kind it does not know, which is told.
  choose(L'r');
  EXPECT_TRUE(window.Answer(L"Cannot show the properties of C:\\quellix-tests\\lists\\", IDOK));
  choose(L'o');
  const HWND folder = AwaitClass(L"ExplorerWClass");
  EXPECT_TRUE(Await([&] { return TextOf(folder).find(L"lists") != std::wstring::npos; }))
      << testing::PrintToString(TextOf(folder));
  PostMessageW(folder, WM_CLOSE, 0, 0);
}

TEST_F(ListMenuTest, HandsAKeyToTheRegistryEditor) {
  constexpr wchar_t kLast[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";
  const QuellixWindow window;
  const ListCase& row = ListNamed("AppPaths");
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  list.SelectFirst();
  PostMessageW(list.top, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list.list), -1);
  ASSERT_TRUE(window.AwaitMenu());
  ChooseByLetter(list, L'k');
  // Wine's editor is asked for a window of its own, which it does not know how to open.
  EXPECT_TRUE(Await([&] {
    return RegistryText(HKEY_CURRENT_USER, kLast, L"LastKey")
        .ends_with(L"\\CurrentVersion\\App Paths\\" + list.First());
  })) << testing::PrintToString(RegistryText(HKEY_CURRENT_USER, kLast, L"LastKey"));
}

}  // namespace
}  // namespace quellix::test
