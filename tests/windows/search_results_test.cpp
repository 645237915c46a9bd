#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kFiles = 5000;
constexpr int kLocked = 7;  // every so many
constexpr wchar_t kTitle[] = L"Search results";

std::filesystem::path Junk() { return L"C:\\quellix-tests\\junk"; }

std::filesystem::path File(int number) {
  wchar_t name[32];
  swprintf(name, 32, L"%04d.qxj", number);
  return Junk() / (number % 2 ? L"odd" : L"even") / name;
}

int Count(HWND list) { return static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)); }

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
    const auto has_ended = [&] { return !IsWindowEnabled(GetDlgItem(results, cmdAbort)); };
    EXPECT_TRUE(Await(has_ended) || Await(has_ended) || Await(has_ended)) << "the search goes on";
    return results;
  }
  static std::wstring Text(HWND window, int id) { return TextOf(GetDlgItem(window, id)); }
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
  EXPECT_EQ(Text(results, lblTotalFiles), L"Total Files: 5000");
  EXPECT_FALSE(IsWindowEnabled(window.main()));
  EXPECT_EQ(window.RowText(list, 0, 5), L"QXJ");
  EXPECT_EQ(window.RowText(list, 0, 6), L"Unnecessary Files");
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));

  std::set<std::wstring> locked;
  std::vector<HANDLE> handles;
  for (int i = 0; i < kFiles; i += 2 * kLocked) {
    locked.insert(File(i).filename().wstring());
    handles.push_back(CreateFileW(File(i).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(handles.back(), INVALID_HANDLE_VALUE);
  }
  SendMessageW(GetDlgItem(results, txtFilter), WM_SETTEXT, 0,
               reinterpret_cast<LPARAM>(L"\\EVEN\\"));
  ASSERT_TRUE(Await([&] { return Count(list) == kFiles / 2; }));
  Choose(results, cmdSelectAll);
  EXPECT_EQ(Text(results, lblShown), L"2500 ticked, 2500 shown");
  PressIn(results, cmdDeleteSelected);
  const std::wstring left = L"Files Found: " + std::to_wstring(kFiles / 2 + locked.size());
  EXPECT_TRUE(Await([&] { return Text(results, lblTotalFiles) == left; }))
      << ::testing::PrintToString(Text(results, lblTotalFiles));
  EXPECT_TRUE(IsWindowVisible(GetDlgItem(results, lblRed)));
  ASSERT_EQ(Count(list), static_cast<int>(locked.size()));
  for (int row = 0; row < Count(list); ++row) {
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
  EXPECT_TRUE(Await([&] { return !Text(results, lblDeletionState).empty(); }));

  for (const HANDLE handle : handles) CloseHandle(handle);
  Choose(results, mnuDeleteAll);
  EXPECT_EQ(Count(list), 0);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, lblRed)));
  EXPECT_TRUE(std::filesystem::is_empty(Junk() / "even"));
  PressIn(results, cmdExit);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  ASSERT_TRUE(log);
  EXPECT_EQ(TextOf(GetDlgItem(log, txtLog))
                .find(L"Unnecessary files....Files Deleted: 2500 Space Gained: 24.41 KB\r\n"),
            0u)
      << ::testing::PrintToString(TextOf(GetDlgItem(log, txtLog)));
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
    ASSERT_EQ(Count(list), 3);
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
  EXPECT_EQ(Count(GetDlgItem(results, lstvDeletion)), 3) << "closing deletes nothing";
}

TEST_F(SearchResultsTest, EveryControlHasAKeyOfItsOwnAndATabStop) {
  WriteBytes(File(1), "1");
  const QuellixWindow window;
  const HWND results = Search(window);
  ASSERT_TRUE(results);
  std::set<HWND> reached;
  for (HWND at = GetDlgItem(results, cmdExit); reached.insert(at).second;) {
    at = GetNextDlgTabItem(results, at, FALSE);
  }
  std::set<wchar_t> letters = {L'f', L'r'};  // the menus
  const std::set<int> labels = {lblTotalFiles, lblShown, lblFilter, lblRed, lblDeletionState};
  for (HWND control = GetWindow(results, GW_CHILD); control;
       control = GetWindow(control, GW_HWNDNEXT)) {
    const int id = GetDlgCtrlID(control);
    SCOPED_TRACE(id);
    EXPECT_EQ(reached.contains(control), !labels.contains(id) && IsWindowEnabled(control));
    const std::wstring text = TextOf(control);
    const size_t ampersand = text.find(L'&');
    if (ampersand == text.npos) continue;
    EXPECT_TRUE(letters.insert(static_cast<wchar_t>(towlower(text[ampersand + 1]))).second);
  }
  EXPECT_EQ(letters.size(), 8u);
}

}  // namespace
}  // namespace quellix::test
