// What a run tells while it takes its time, and how the session can end behind it.
#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

struct LongRunTest : testing::Test {
  void SetUp() override { ResetSandbox(); }
  static void WriteSettings(const std::string& general) {
    WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\n" + general);
  }
  static LRESULT Place(HWND bar) { return SendMessageW(bar, PBM_GETPOS, 0, 0); }
  // A bar that goes on, with figures beside it.
  static void ExpectMoving(HWND window, int bar, int label, const std::wstring& begins) {
    const HWND shown = GetDlgItem(window, bar);
    ASSERT_TRUE(Await([&] { return Shown(window, label).starts_with(begins); }))
        << testing::PrintToString(Shown(window, label));
    const LRESULT at = Place(shown);
    EXPECT_TRUE(Await([&] { return Place(shown) > at && IsWindowVisible(shown); }));
  }
};

TEST_F(LongRunTest, WipingOneLargeFileMovesTheBarAndStopTellsWhatWasDone) {
  WriteSettings("DelMethod=W\r\n");
  WriteBytes(TempFolder() / "large.tmp", std::string(1 << 20, 'x'));
  const QuellixWindow window;
  window.Click(chkTemp);
  window.Press(cmdClean);
  ExpectMoving(window.main(), pgClean, lblProgress, L"0 of 1, ");
  EXPECT_TRUE(Await([&] { return TextOf(window.main()).ends_with(L" % - Quellix"); }));
  EXPECT_FALSE(IsWindowVisible(window.Control(lblCleanDate)));
  window.Press(cmdStop);
  EXPECT_TRUE(AwaitText(window.main(), lblProgress, L"Stopped: 0 files removed so far, 0 Bytes."));
  EXPECT_TRUE(AwaitText(window.main(), lblStatus, L"Aborted by user"));
  EXPECT_EQ(TextOf(window.main()), L"Quellix");
  // Until the next run.
  WriteSettings("DelMethod=D\r\n");
  window.Press(cmdClean);
  EXPECT_TRUE(window.AwaitWindow(L"Cleaning log"));
  EXPECT_TRUE(Await([&] { return IsWindowVisible(window.Control(lblCleanDate)) != FALSE; }));
  EXPECT_FALSE(IsWindowVisible(window.Control(lblProgress)));
}

TEST_F(LongRunTest, AnEndOfTheSessionIsCountedDownAndCanBeCancelled) {
  WriteSettings("Ask=1\r\n");
  WriteBytes(TempFolder() / "a.tmp", "1");
  const std::pair<int, const wchar_t*> kRows[] = {
      {mnuPowrOff, L"The computer is turned off in "},
      {mnu_Restart, L"You are logged off by force in "},
      {mnuLogOff, L"You are logged off in "},
      {mnuShutDown, L"Windows is shut down in "},
      {mnuForceShutDOwn, L"You are logged off by force in "}};
  const QuellixWindow window;
  for (const auto& [entry, says] : kRows) {
    SCOPED_TRACE(entry);
    window.Choose(entry);
    const HWND countdown = window.AwaitWindow(L"Turn off computer");
    EXPECT_TRUE(AwaitPart(countdown, lblCountdown, says));
    EXPECT_TRUE(AwaitPart(countdown, lblCountdown, L" 29 seconds."));
    EXPECT_FALSE(IsWindowEnabled(window.main()));
    EXPECT_EQ(FocusOf(countdown), GetDlgItem(countdown, IDCANCEL)) << "Enter cancels it";
    PressIn(countdown, IDCANCEL);
    ASSERT_TRUE(AwaitGone(countdown));
    EXPECT_TRUE(IsWindowEnabled(window.main()));
  }
  // The same behind a cleaning, once.
  SendMessageW(window.Control(chkThenShutDown), BM_CLICK, 0, 0);
  window.Click(chkTemp);
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (1 Bytes) for good?", 100));
  const HWND countdown = window.AwaitWindow(L"Turn off computer");
  EXPECT_TRUE(AwaitPart(countdown, lblCountdown, L"The computer is turned off in "));
  EXPECT_FALSE(fs::exists(TempFolder() / "a.tmp"));
  PressIn(countdown, IDCANCEL);
  EXPECT_TRUE(AwaitGone(countdown));
  EXPECT_EQ(SendMessageW(window.Control(chkThenShutDown), BM_GETCHECK, 0, 0), BST_UNCHECKED);
}

TEST_F(LongRunTest, ManyRowsAreDeletedWithABarThatMoves) {
  constexpr int kMany = 3000;
  const fs::path junk = L"C:\\quellix-tests\\many";
  fs::remove_all(junk);
  WriteBytes(ProgramFolder() / "UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  for (int i = 0; i < kMany; ++i) WriteBytes(junk / (std::to_string(i) + ".qxj"), "123");
  const QuellixWindow window;
  window.Click(chkUnNecessaryFiles);
  window.Press(cmdClean);
  const HWND results = window.AwaitWindow(L"Search results");
  ASSERT_TRUE(Await([&] { return !IsEnabled(results, cmdAbort); }));
  ASSERT_EQ(CountRows(GetDlgItem(results, lstvDeletion)), kMany);
  PostMessageW(results, WM_COMMAND, mnuDeleteAll, 0);
  ASSERT_TRUE(Await([&] { return Place(GetDlgItem(results, pgDeletion)) > 0; }));
  ASSERT_TRUE(AwaitPart(results, lblDeletionState, L" of 3,000, "));
  PostMessageW(results, WM_COMMAND, cmdAbort, 0);
  ASSERT_TRUE(AwaitPart(results, lblDeletionState, L"Stopped: "));
  const int left = CountRows(GetDlgItem(results, lstvDeletion));
  EXPECT_TRUE(left > 0 && left < kMany) << left;
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(results, pgDeletion)));
  fs::remove_all(junk);
  fs::remove(ProgramFolder() / "UNFI.txt");
}

}  // namespace
}  // namespace quellix::test
