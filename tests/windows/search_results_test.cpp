#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kFiles = 420;
constexpr int kLocked = 7;  // every so many
constexpr wchar_t kTitle[] = L"Search results";

std::filesystem::path Junk() { return L"C:\\quellix-tests\\junk"; }

std::filesystem::path File(int number) {
  wchar_t name[32];
  swprintf(name, 32, L"%04d.qxj", number);
  return Junk() / (number % 2 ? L"odd" : L"even") / name;
}

class SearchResultsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    std::filesystem::remove_all(Junk());
    WriteBytes(ProgramFolder() / "UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  }
  void TearDown() override {
    std::filesystem::remove(ProgramFolder() / "UNFI.txt");
    std::filesystem::remove_all(Junk());
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
  for (int i = 0; i < kFiles; ++i) WriteBytes(File(i), std::string(10, 'x'));
  const QuellixWindow window;
  const HWND results = Search(window);
  ASSERT_TRUE(results);
  const HWND list = GetDlgItem(results, lstvDeletion);
  EXPECT_EQ(Shown(results, lblTotalFiles), L"Total Files: 420");
  EXPECT_FALSE(IsWindowEnabled(window.main()));
  EXPECT_EQ(window.RowText(list, 0, 5), L"QXJ");
  EXPECT_EQ(window.RowText(list, 0, 6), L"Unnecessary Files");
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));
  EXPECT_EQ(ExpectKeys(results, {L'f', L'r'}), 8u);

  std::set<std::wstring> locked;
  std::vector<HANDLE> handles;
  for (int i = 0; i < kFiles; i += 2 * kLocked) {
    locked.insert(File(i).filename().wstring());
    handles.push_back(CreateFileW(File(i).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(handles.back(), INVALID_HANDLE_VALUE);
  }
  Type(results, txtFilter, L"\\EVEN\\");
  ASSERT_TRUE(Await([&] { return CountRows(list) == kFiles / 2; }));
  Choose(results, cmdSelectAll);
  EXPECT_EQ(Shown(results, lblShown), L"210 ticked, 210 shown");
  PressIn(results, cmdDeleteSelected);
  const std::wstring left = L"Files Found: " + std::to_wstring(kFiles / 2 + locked.size());
  EXPECT_TRUE(Await([&] { return Shown(results, lblTotalFiles) == left; }))
      << ::testing::PrintToString(Shown(results, lblTotalFiles));
  EXPECT_TRUE(IsWindowVisible(GetDlgItem(results, lblRed)));
  ASSERT_EQ(CountRows(list), static_cast<int>(locked.size()));
  for (int row = 0; row < CountRows(list); ++row) {
    EXPECT_TRUE(locked.contains(window.RowText(list, row, 0)));
    EXPECT_FALSE(IsRowTicked(list, row));
  }
  for (int i = 0; i < kFiles; ++i) {
    const bool stays = i % 2 != 0 || locked.contains(File(i).filename().wstring());
    ASSERT_EQ(std::filesystem::exists(File(i)), stays) << i;
  }
  // The reason stands below the list for the row with the focus.
  SetForegroundWindow(results);
  window.PressKey(list, VK_END);
  EXPECT_TRUE(Await([&] { return !Shown(results, lblDeletionState).empty(); }));

  for (const HANDLE handle : handles) CloseHandle(handle);
  Choose(results, mnuDeleteAll);
  EXPECT_EQ(CountRows(list), 0);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));
  EXPECT_TRUE(std::filesystem::is_empty(Junk() / "even"));
  PressIn(results, cmdExit);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  ASSERT_TRUE(log);
  EXPECT_EQ(
      Shown(log, txtLog).find(L"Unnecessary files....Files Deleted: 210 Space Gained: 2.05 KB\r\n"),
      0u)
      << ::testing::PrintToString(Shown(log, txtLog));
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
