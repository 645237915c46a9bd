// Seeing before cleaning: the preview, the question, the list of a run, and the runs before it.
#include <gtest/gtest.h>

#include "ui/resource.h"
#include "windows/quellix_window.h"

namespace quellix::test {
namespace {

constexpr const char* kSettings = "[General]\r\nDelMethod=D\r\nAsk=1\r\nKeepLogs=5\r\n";

struct FrmPreviewTest : testing::Test {
  void SetUp() override {
    ResetSandbox();
    fs::remove_all(ProgramFolder() / "Logs");
    WriteBytes(ProgramFolder() / "Settings.ini", kSettings);
    for (const char* name : {"a.tmp", "b.tmp", "c.doc"}) WriteBytes(TempFolder() / name, "12345");
  }
  void TearDown() override {
    fs::remove(ProgramFolder() / "keep.txt");
    fs::remove_all(ProgramFolder() / "Logs");
  }
  static bool Exists(const char* name) { return fs::exists(TempFolder() / name); }
  static HWND OpenPreview(const QuellixWindow& window) {
    window.Press(cmdPreview);
    return window.AwaitWindow(L"Preview");
  }
  // The row of a file; -1 for none.
  static int RowOf(const QuellixWindow& window, HWND list, std::wstring_view name) {
    for (int row = 0; row < CountRows(list); ++row) {
      if (window.RowText(list, row, 0).ends_with(name)) return row;
    }
    return -1;
  }
  // Puts the keyboard on a row.
  static void SelectRow(const QuellixWindow& window, HWND list, int row) {
    window.PressKey(list, VK_HOME);
    for (int i = 0; i < row; ++i) window.PressKey(list, VK_DOWN);
  }
};

TEST_F(FrmPreviewTest, OnlyWhatIsTickedGoesAndOnlyWhenItWasConfirmed) {
  const QuellixWindow window;
  window.Click(chkTemp);
  const HWND preview = OpenPreview(window), list = GetDlgItem(preview, lstvRun);
  EXPECT_EQ(CountRows(list), 3);
  EXPECT_EQ(Shown(preview, lblRunSummary), L"3 entries to be removed, 15 Bytes.");
  EXPECT_EQ(window.RowText(list, 0, 5), L"to be deleted");
  ExpectKeys(preview);
  Type(preview, txtFilter, L"B.TMP");
  EXPECT_TRUE(Await([&] { return CountRows(list) == 1; }));
  Type(preview, txtFilter, L"");
  EXPECT_TRUE(Await([&] { return CountRows(list) == 3; }));
  SelectRow(window, list, RowOf(window, list, L"b.tmp"));
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(AwaitText(preview, lblRunSummary, L"2 entries to be removed, 10 Bytes."));
  EXPECT_FALSE(IsRowTicked(list, RowOf(window, list, L"b.tmp")));
  SelectRow(window, list, RowOf(window, list, L"c.doc"));
  PressIn(preview, cmdKeepEntry);
  EXPECT_TRUE(AwaitText(preview, lblRunSummary, L"1 entry to be removed, 5 Bytes."));
  EXPECT_NE(ReadBytes(ProgramFolder() / "keep.txt").find("c.doc"), std::string::npos);

  WriteBytes(TempFolder() / "came later.tmp", "1");
  PressIn(preview, cmdCleanTicked);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (5 Bytes) for good?", IDCANCEL));
  EXPECT_TRUE(Exists("a.tmp") && IsWindow(preview));
  constexpr int kYes = 100;
  PressIn(preview, cmdCleanTicked);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (5 Bytes) for good?", kYes));
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_FALSE(Exists("a.tmp"));
  EXPECT_TRUE(Exists("b.tmp") && Exists("c.doc") && Exists("came later.tmp"));
  EXPECT_FALSE(IsWindow(preview));
  EXPECT_NE(Shown(log, txtLog).find(L"not in the preview: 1"), std::wstring::npos);
}

TEST_F(FrmPreviewTest, CleanAsksFirstAndShowsWhatGoes) {
  const QuellixWindow window;
  window.Click(chkTemp);
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"Delete 3 files (15 Bytes) for good?", IDCANCEL));
  EXPECT_TRUE(Await([&] { return window.IsEnabled(cmdClean); }));
  EXPECT_TRUE(Exists("a.tmp") && Exists("b.tmp") && Exists("c.doc"));
  constexpr int kShow = 101;
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"Delete 3 files (15 Bytes) for good?", kShow));
  const HWND preview = window.AwaitWindow(L"Preview");
  window.PressKey(GetDlgItem(preview, lstvRun), VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(preview));
  // A letter by itself starts nothing.
  for (const wchar_t letter : {L'c', L'v', L's'}) {
    PostMessageW(window.Control(lstvItems), WM_CHAR, static_cast<WPARAM>(letter), 0);
  }
  SendMessageW(window.main(), WM_NULL, 0, 0);
  EXPECT_TRUE(!window.HasWindow(L"Preview") && Exists("a.tmp"));
  // What can be had back needs no question.
  EXPECT_TRUE(window.Close());
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nDelMethod=R\r\nAsk=1\r\n");
  const QuellixWindow recycling;
  recycling.Press(cmdClean);
  EXPECT_TRUE(recycling.AwaitWindow(L"Cleaning log") && !Exists("a.tmp"));
}

TEST_F(FrmPreviewTest, TheLogListsTheEntriesAndTheRunsBefore) {
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nKeepLogs=5\r\n");
  {
    const QuellixWindow window;
    window.Click(chkTemp);
    window.Press(cmdClean);
    const HWND log = window.AwaitWindow(L"Cleaning log"), list = GetDlgItem(log, lstvRun);
    EXPECT_EQ(CountRows(list), 3);
    EXPECT_EQ(Shown(log, lblRunSummary), L"3 entries removed, 15 Bytes.");
    EXPECT_EQ(window.RowText(list, 0, 5), L"deleted");
    ExpectKeys(log);
  }
  const QuellixWindow window;
  window.Press(cmdClean);
  const HWND log = window.AwaitWindow(L"Cleaning log"), runs = GetDlgItem(log, cboRuns);
  EXPECT_EQ(CountRows(GetDlgItem(log, lstvRun)), 0);
  ASSERT_EQ(SendMessageW(runs, CB_GETCOUNT, 0, 0), 3);  // the last run, which is kept too
  SendMessageW(runs, CB_SETCURSEL, 2, 0);
  SendMessageW(log, WM_COMMAND, MAKEWPARAM(cboRuns, CBN_SELCHANGE), reinterpret_cast<LPARAM>(runs));
  EXPECT_EQ(CountRows(GetDlgItem(log, lstvRun)), 3);
  EXPECT_EQ(Shown(log, lblFiles), L"3");
}

}  // namespace
}  // namespace quellix::test
