#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kFiles = 42;
constexpr wchar_t kTitle[] = L"Search results";

fs::path Junk() { return L"C:\\quellix-tests\\junk"; }

fs::path File(int number) {
  wchar_t name[32];
  swprintf(name, 32, L"%04d.qxj", number);
  return Junk() / (number % 2 ? L"odd" : L"even") / name;
}

struct SearchResultsTest : testing::Test {
  void SetUp() override {
    ResetSandbox();
    fs::remove_all(Junk());
    WriteBytes(ProgramFolder() / "UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  }
  void TearDown() override {
    fs::remove(ProgramFolder() / "UNFI.txt");
    fs::remove_all(Junk());
  }

  // Opens the window by a run of the item alone and waits for the search to end.
  HWND Search(const QuellixWindow& window) {
    window.Click(chkUnNecessaryFiles);
    window.Press(cmdClean);
    const HWND results = window.AwaitWindow(kTitle);
    EXPECT_TRUE(Await([&] { return !IsEnabled(results, cmdAbort); })) << "the search goes on";
    return results;
  }
  static void Choose(HWND window, int entry) {
    SendMessageW(window, WM_COMMAND, static_cast<WPARAM>(entry), 0);
  }
};

TEST_F(SearchResultsTest, AChosenHalfIsDeletedButForWhatIsLocked) {
  for (int i = 0; i < kFiles; ++i) WriteBytes(File(i), std::string(100, 'x'));
  const QuellixWindow window;
  const HWND results = Search(window), list = GetDlgItem(results, lstvDeletion);
  EXPECT_EQ(Shown(results, lblTotalFiles), L"Total Files: 42");
  EXPECT_FALSE(IsWindowEnabled(window.main()) || IsWindowVisible(GetDlgItem(results, lblRed)));
  EXPECT_EQ(window.RowText(list, 0, 5) + window.RowText(list, 0, 6), L"QXJUnnecessary Files");
  EXPECT_EQ(ExpectKeys(results, {L'f', L'r'}), 8u);
  auto lock = std::make_optional<HeldFile>(File(6));
  Type(results, txtFilter, L"\\EVEN\\");
  ASSERT_TRUE(Await([&] { return CountRows(list) == kFiles / 2; }));
  Choose(results, cmdSelectAll);
  EXPECT_EQ(Shown(results, lstvDeletion + lblTotals), L"21 rows, 2.1 KB; 21 ticked, 2.1 KB");
  EXPECT_EQ(Shown(results, cmdDeleteSelected), L"&Delete ticked (21, 2.1 KB)");
  PressIn(results, cmdDeleteSelected);
  EXPECT_TRUE(AwaitText(results, lblTotalFiles, L"Files Found: 22"));
  EXPECT_TRUE(IsWindowVisible(GetDlgItem(results, lblRed)));
  ASSERT_EQ(CountRows(list), 1);
  EXPECT_EQ(window.RowText(list, 0, 0), File(6).filename().wstring());
  EXPECT_FALSE(IsRowTicked(list, 0));
  for (int i = 0; i < kFiles; ++i) ASSERT_EQ(fs::exists(File(i)), i % 2 != 0 || i == 6) << i;
  // The reason stands below the list for the row with the focus.
  SetForegroundWindow(results);
  window.PressKey(list, VK_END);
  EXPECT_TRUE(Await([&] { return !Shown(results, lblDeletionState).empty(); }));
  lock.reset();
  Choose(results, mnuDeleteAll);
  EXPECT_EQ(CountRows(list), 0);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));
  PressIn(results, cmdExit);
  EXPECT_TRUE(
      Shown(window.AwaitWindow(L"Cleaning log"), txtLog)
          .starts_with(L"Unnecessary files....Files Deleted: 21 Space Gained: 2.05 KB\r\n"));
  EXPECT_TRUE(IsWindowEnabled(window.main()));
}

TEST_F(SearchResultsTest, RowsAreSortedAndWidthsKept) {
  WriteBytes(File(1), "1");
  WriteBytes(File(2), std::string(1000, '2'));
  WriteBytes(File(3), std::string(20, '3'));
  {
    const QuellixWindow window;
    const HWND results = Search(window);
    const HWND list = GetDlgItem(results, lstvDeletion);
    ASSERT_EQ(CountRows(list), 3);
    Choose(results, mnuSortResults + 1);
    EXPECT_EQ(window.RowText(list, 2, 1), L"1000");
    EXPECT_EQ(window.RowText(list, 1, 1), L"20");
    Choose(results, mnuSortResults + 1);
    EXPECT_EQ(window.RowText(list, 0, 1), L"1000");
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 4, 333);
    window.PressKey(list, VK_ESCAPE);
    EXPECT_TRUE(window.AwaitWindow(L"Cleaning log"));
  }
  const QuellixWindow window;
  const HWND results = Search(window);
  EXPECT_EQ(SendMessageW(GetDlgItem(results, lstvDeletion), LVM_GETCOLUMNWIDTH, 4, 0), 333);
  EXPECT_EQ(CountRows(GetDlgItem(results, lstvDeletion)), 3) << "closing deletes nothing";
}

}  // namespace
}  // namespace quellix::test
