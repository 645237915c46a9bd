// Recipes of the user's own list in the main window.
#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kName = 0, kNote = 3;
const fs::path kFolder = L"C:\\quellix-tests\\recipes";

struct RecipesTest : SandboxTest {
  RecipesTest() {
    for (const char* name : {"a.log", "b.log", "key4.db"}) WriteBytes(kFolder / name, "12345");
  }
  static std::string Entry(const std::string& name, const std::string& mask) {
    return "[" + name + " *]\r\nSection=Games\r\nFileKey1=" + kFolder.string() + "|" + mask +
           "\r\n";
  }
  static void Keep(const std::string& list) { WriteBytes(ProgramFolder() / "Winapp2.ini", list); }
  // The last row of the list, once it has that name.
  static int LastRow(const QuellixWindow& window, std::wstring_view name) {
    const HWND list = window.Control(lstvItems);
    const auto last = [&] { return CountRows(list) - 1; };
    EXPECT_TRUE(Await([&] { return window.RowText(list, last(), kName) == name; }));
    return last();
  }
  static std::wstring Note(const QuellixWindow& window, int row) {
    return window.RowText(window.Control(lstvItems), row, kNote);
  }
  static void Keys(const QuellixWindow& window, std::initializer_list<WPARAM> keys) {
    for (const WPARAM key : keys) window.PressKey(window.Control(lstvItems), key);
  }
};

TEST_F(RecipesTest, FoundOnesAreTickedSeenAndCleanedByTheKeyboard) {
  Keep(Entry("One", "a.log") + Entry("Two & more", "b.log"));
  const QuellixWindow window;
  const int row = LastRow(window, L"Two & more");
  const HWND list = window.Control(lstvItems);
  EXPECT_EQ(window.RowText(list, row - 2, kName), L"Games");
  EXPECT_EQ(window.RowText(list, row - 3, kName), L"Programs found here");
  Keys(window, {VK_END, VK_SPACE});
  EXPECT_TRUE(Await([&] { return Note(window, row).starts_with(L"new or changed"); }));
  EXPECT_TRUE(AwaitPart(window.main(), txtItem, L"\\b.log"));
  window.Press(cmdClean);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_TRUE(AwaitPart(log, txtLog, L"Two & more is not cleaned: it is new"));
  EXPECT_TRUE(CloseAndAwait(log) && fs::exists(kFolder / "b.log"));
  window.Press(cmdPreview);
  const HWND preview = window.AwaitWindow(L"Preview");
  EXPECT_EQ(CountRows(GetDlgItem(preview, lstvRun)), 1);
  EXPECT_EQ(Note(window, row), L"");
  PressIn(preview, cmdCleanTicked);
  EXPECT_TRUE(AwaitPart(window.AwaitWindow(L"Cleaning log"), txtLog,
                        L"Two & more: Files Deleted: 1 Space Gained: 5 Bytes"));
  EXPECT_TRUE(!fs::exists(kFolder / "b.log") && fs::exists(kFolder / "a.log"));
  EXPECT_TRUE(window.Close());
  EXPECT_NE(ReadBytes(ProgramFolder() / "recipes.txt").find("1\x01Two & more\x01"),
            std::string::npos);
}

TEST_F(RecipesTest, WhatCannotBeHadAgainIsAskedAboutOnceAndASingleOneHasAMenu) {
  Keep(Entry("Keys", "key4.db") + Entry("One", "a.log"));
  const QuellixWindow window;
  const int row = LastRow(window, L"One");
  const HWND list = window.Control(lstvItems);
  Keys(window, {VK_END, VK_UP, VK_SPACE});
  EXPECT_TRUE(Await([&] { return Note(window, row - 1).starts_with(L"new or changed"); }));
  PostMessageW(window.main(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list), -1);
  ASSERT_TRUE(window.AwaitMenu());
  PostMessageW(window.main(), WM_CHAR, L'v', 1);
  const HWND preview = window.AwaitWindow(L"Preview");
  EXPECT_EQ(CountRows(GetDlgItem(preview, lstvRun)), 1);
  EXPECT_TRUE(CloseAndAwait(preview));
  window.Press(cmdClean);
  ASSERT_TRUE(window.AwaitMessage(L"Clean all the same?"));
  ASSERT_TRUE(window.Answer(L"This cannot be had again:\nKeys: keys and certificates", IDCANCEL));
  EXPECT_TRUE(fs::exists(kFolder / "key4.db"));
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"This cannot be had again", kShow));
  const HWND again = window.AwaitWindow(L"Preview");
  PressIn(again, cmdCleanTicked);
  ASSERT_TRUE(window.Answer(L"This cannot be had again", kYes));
  EXPECT_TRUE(Await([&] { return !fs::exists(kFolder / "key4.db"); }));
  EXPECT_TRUE(fs::exists(kFolder / "a.log"));
}

TEST_F(RecipesTest, WhatIsSelectedStaysSoAndWhereItIsWhenTheListIsFoundAnew) {
  // What is ticked comes last but one, and is another each time.
  const auto list_of = [](int first, int without, const std::string& mask) {
    std::string entries;
    for (int i = first; i < 59; ++i) {
      if (i != without) entries += Entry("Q" + std::to_string(i), "b.log");
    }
    return entries + Entry("Q59", mask) + Entry("Q60", "b.log");
  };
  Keep(list_of(20, 0, "a.log"));
  const QuellixWindow window;
  const HWND list = window.Control(lstvItems);
  const int last = LastRow(window, L"Q60");
  Keys(window, {VK_END, VK_UP, VK_SPACE, VK_UP, VK_UP});
  const auto selected = [list] { return ListView_GetNextItem(list, -1, LVNI_SELECTED); };
  const auto name_at = [&](int row) { return window.RowText(list, row, kName); };
  const int place = selected() - ListView_GetTopIndex(list);
  EXPECT_EQ(name_at(selected()), L"Q57");
  const auto look = [&](int rows) {  // which finds that the list has changed
    window.Press(cmdPreview);
    EXPECT_TRUE(CloseAndAwait(window.AwaitWindow(L"Preview")));
    EXPECT_TRUE(Await([&] { return CountRows(list) == rows; }));
  };
  Keep(list_of(12, 0, "a.*"));
  look(last + 9);
  EXPECT_EQ(name_at(selected()), L"Q57");
  EXPECT_EQ(selected() - ListView_GetTopIndex(list), place);
  Keep(list_of(10, 57, "?.log"));
  look(last + 10);
  EXPECT_EQ(selected(), -1) << "no other takes its place";
  EXPECT_EQ(name_at(last + 7), L"Q58");
}

// A run that is begun while a long list is looked through comes first; the rows come after it.
TEST_F(RecipesTest, AnEndlessListKeepsNobodyWaiting) {
  std::string list = Entry("zz", "a.log");
  while (list.size() < 2u << 20) list += Entry("No such", "a.log") + "DetectFile=C:\\none\\x*\r\n";
  Keep(list);
  WriteBytes(TempFolder() / "junk.tmp", "12345");
  const QuellixWindow window;
  window.Click(chkTemp);
  window.Press(cmdClean);
  EXPECT_TRUE(AwaitPart(window.AwaitWindow(L"Cleaning log"), txtLog, L"Files Deleted: 1"));
  LastRow(window, L"zz");
  EXPECT_TRUE(window.Close());
  const QuellixWindow closing;
  EXPECT_TRUE(closing.Close());
}

}  // namespace
}  // namespace quellix::test
