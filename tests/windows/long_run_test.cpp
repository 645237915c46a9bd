// What a run tells while it takes its time, and how the session can end behind it.
#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

using LongRunTest = SandboxTest;

LRESULT Place(HWND bar) { return SendMessageW(bar, PBM_GETPOS, 0, 0); }

TEST_F(LongRunTest, WipingOneLargeFileMovesTheBarAndStopTellsWhatWasDone) {
  SeedEndlessRun();
  const QuellixWindow window;
  window.Press(cmdClean);
  const HWND bar = window.Control(pgClean);
  ASSERT_TRUE(AwaitPart(window.main(), lblProgress, L"0 of 1, "));
  const LRESULT at = Place(bar);
  EXPECT_TRUE(Await([&] { return Place(bar) > at && IsWindowVisible(bar); }));
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
    const HWND countdown = window.Open(entry, L"Turn off computer");
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
  ASSERT_TRUE(window.Answer(L"Delete 1 file (1 Bytes) for good?", kYes));
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
  WriteBytes(ProgramFolder() / "UNFI.txt", Fields("1|*.qxj|Ours\r\n"));
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
}

}  // namespace
}  // namespace quellix::test
