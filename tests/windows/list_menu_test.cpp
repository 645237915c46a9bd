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

struct ListMenuTest : testing::Test {
  // With its first row selected.
  OpenList Open(std::string_view name) const {
    const ListCase& row = ListNamed(name);
    const OpenList list(window, GetDlgItem(row.open(window), row.list));
    list.SelectFirst();
    return list;
  }
  void ChooseInMenu(const OpenList& list, wchar_t letter) const {
    PostMessageW(list.top, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list.list), -1);
    ASSERT_TRUE(window.AwaitMenu());
    PostMessageW(window.main(), WM_CHAR, letter, 1);
    EXPECT_TRUE(Await([&] { return !window.HasMenu(); })) << "the menu stays open";
  }
  const SeededLists seeded_;
  const QuellixWindow window;
};

TEST_F(ListMenuTest, OpensByTheRightButtonByShiftF10AndByTheMenuKey) {
  const OpenList list = Open("Results");
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
  const OpenList list = Open("Results");
  // Wine shows none of a file whose kind it does not know, which is told.
  ChooseInMenu(list, L'r');
  EXPECT_TRUE(window.Answer(L"Cannot show the properties of C:\\quellix-tests\\lists\\", IDOK));
  ChooseInMenu(list, L'o');
  const HWND folder = AwaitClass(L"ExplorerWClass");
  EXPECT_TRUE(Await([&] { return TextOf(folder).find(L"lists") != std::wstring::npos; }))
      << testing::PrintToString(TextOf(folder));
  PostMessageW(folder, WM_CLOSE, 0, 0);
}

TEST_F(ListMenuTest, HandsAKeyToTheRegistryEditor) {
  constexpr wchar_t kLast[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";
  const OpenList list = Open("AppPaths");
  ChooseInMenu(list, L'k');
  // Wine's editor is asked for a window of its own, which it does not know how to open.
  EXPECT_TRUE(Await([&] {
    return RegistryText(HKEY_CURRENT_USER, kLast, L"LastKey")
        .ends_with(L"\\CurrentVersion\\App Paths\\" + list.First());
  })) << testing::PrintToString(RegistryText(HKEY_CURRENT_USER, kLast, L"LastKey"));
}

}  // namespace
}  // namespace quellix::test
