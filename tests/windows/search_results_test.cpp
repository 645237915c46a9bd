#include "list_windows.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kFiles = 42;

fs::path Junk() { return L"C:\\quellix-tests\\junk"; }

void Choose(HWND window, int entry) {
  SendMessageW(window, WM_COMMAND, static_cast<WPARAM>(entry), 0);
}

fs::path File(int number) {
  wchar_t name[32];
  swprintf(name, 32, L"%04d.qxj", number);
  return Junk() / (number % 2 ? L"odd" : L"even") / name;
}

using SearchResultsTest = SandboxTest;

// By the commands of the menu, up and down.
void ExpectSortedBySize(const QuellixWindow& window, HWND results, HWND list) {
  for (const int row : {kFiles - 1, 0}) {
    Choose(results, mnuSortResults + 1);
    EXPECT_EQ(window.RowText(list, row, 1), L"1000");
  }
}

TEST_F(SearchResultsTest, AChosenHalfIsDeletedButForWhatIsLocked) {
  WriteBytes(ProgramFolder() / "UNFI.txt", Fields("1|*.qxj|Ours\r\n"));
  for (int i = 0; i < kFiles; ++i) WriteBytes(File(i), std::string(i == 1 ? 1000 : 100, 'x'));
  const QuellixWindow window;
  const HWND results = ListNamed("Results").open(window), list = GetDlgItem(results, lstvDeletion);
  EXPECT_EQ(Shown(results, lblTotalFiles), L"Total Files: 42");
  EXPECT_FALSE(IsWindowEnabled(window.main()) || IsWindowVisible(GetDlgItem(results, lblRed)));
  EXPECT_EQ(window.RowText(list, 0, 5) + window.RowText(list, 0, 6), L"QXJUnnecessary Files");
  EXPECT_EQ(ExpectKeys(results, {L'f', L'r'}), 8u);
  auto lock = std::make_optional<HeldFile>(File(6));
  ExpectSortedBySize(window, results, list);
  PressKeys(results, {VK_MENU, L'I'});
  ASSERT_TRUE(AwaitFocus(results, txtFilter));
  TypeWord(results, L"even");
  ASSERT_TRUE(AwaitRows(list, kFiles / 2));
  Choose(results, cmdSelectAll);
  EXPECT_EQ(Shown(results, lstvDeletion + lblTotals), L"21 rows, 2.1 KB; 21 ticked, 2.1 KB");
  EXPECT_EQ(Shown(results, cmdDeleteSelected), L"&Delete ticked (21, 2.1 KB)");
  PressKeys(results, {VK_MENU, L'D'});
  EXPECT_TRUE(AwaitText(results, lblTotalFiles, L"Files Found: 22"));
  EXPECT_TRUE(IsWindowVisible(GetDlgItem(results, lblRed)));
  ASSERT_EQ(CountRows(list), 1);
  EXPECT_EQ(window.RowText(list, 0, 0), File(6).filename().wstring());
  EXPECT_FALSE(IsRowTicked(list, 0));
  for (int i = 0; i < kFiles; ++i) ASSERT_EQ(fs::exists(File(i)), i % 2 != 0 || i == 6) << i;
  // The reason stands below the list for the row with the focus.
  window.PressKey(list, VK_END);
  EXPECT_TRUE(Await([&] { return !Shown(results, lblDeletionState).empty(); }));
  lock.reset();
  Choose(results, mnuDeleteAll);
  EXPECT_EQ(CountRows(list), 0);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));
  PressKeys(results, {VK_MENU, L'X'});
  EXPECT_TRUE(
      Shown(window.AwaitWindow(L"Cleaning log"), txtLog)
          .starts_with(L"Unnecessary files....Files Deleted: 21 Space Gained: 2.05 KB\r\n"));
  EXPECT_TRUE(IsWindowEnabled(window.main()));
  EXPECT_TRUE(fs::exists(File(1))) << "closing deletes nothing";
}

}  // namespace
}  // namespace quellix::test
