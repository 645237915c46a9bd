
#include <map>

#include "opener.h"

namespace quellix::test {
namespace {

struct FrmBackupsTest : SandboxTest {
  FrmBackupsTest() {
    WriteSettings("DelMethod=B\r\n");
    for (const auto& [path, bytes] : files_) WriteBytes(path, bytes);
  }

  // Cleans, and opens the window by the keys of the menu bar.
  static HWND CleanAndOpen(const QuellixWindow& window) {
    window.Click(chkTemp);
    window.Press(cmdClean);
    SendMessageW(window.AwaitWindow(L"Cleaning log"), WM_CLOSE, 0, 0);
    return Open(window);
  }
  static HWND Open(const QuellixWindow& window) {
    PostMessageW(window.main(), WM_SYSCOMMAND, SC_KEYMENU, 't');
    EXPECT_TRUE(window.AwaitMenu());
    window.PressKey(window.main(), VK_RETURN);
    return window.AwaitWindow(L"Backups");
  }
  // Restores everything over what is there, with this answer to each question.
  static void RestoreOver(const QuellixWindow& window, HWND backups, int answer, int questions) {
    PressIn(backups, cmdRestoreAll);
    for (int asked = 0; asked < questions; ++asked) {
      const HWND question = window.AwaitWindow(L"Replace the file?");
      EXPECT_NE(Shown(question, txtTarget).find(TempFolder().wstring()), std::wstring::npos);
      PressIn(question, answer);
      ASSERT_TRUE(AwaitGone(question));
    }
  }

  const std::map<fs::path, std::string> files_ = {
      {TempFolder() / "a.view", std::string(512, 'a')},
      {TempFolder() / "empty.tmp", ""},
      {TempFolder() / "nested" / "deep" / "b.tmp", std::string("\0\r\n\x1A\xFF", 5)},
      {TempFolder() / L"\u6771\u4eac.tmp", std::string(100000, 'c')}};
};

TEST_F(FrmBackupsTest, WhatWasCleanedIsListedAndComesBack) {
  const QuellixWindow window;
  const HWND backups = CleanAndOpen(window);
  ASSERT_TRUE(fs::is_empty(TempFolder()));
  const HWND archives = GetDlgItem(backups, lstvArchives);
  const HWND entries = GetDlgItem(backups, lstvEntries);
  ASSERT_EQ(CountRows(archives), 1);
  EXPECT_EQ(window.RowText(archives, 0, 0) + window.RowText(archives, 0, 2), L"C:4");
  EXPECT_EQ(window.RowText(archives, 0, 4), L"Whole");
  ASSERT_EQ(CountRows(entries), 4);
  const std::wstring first = TempFolder() / "a.view";
  EXPECT_EQ(window.RowText(entries, 0, 0), first.substr(3));
  EXPECT_EQ(window.RowText(entries, 0, 1), L"512");

  EXPECT_FALSE(IsEnabled(backups, cmdRestoreSelected) || IsEnabled(backups, cmdView));
  window.PressKey(entries, VK_HOME);
  window.PressKey(entries, VK_SPACE);
  ASSERT_TRUE(AwaitEnabled(backups, cmdRestoreSelected));
  PressIn(backups, cmdRestoreSelected);
  EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"1 file restored to C:\\"));
  EXPECT_EQ(ReadBytes(first), files_.at(first));
  EXPECT_FALSE(fs::exists(TempFolder() / "empty.tmp"));

  WriteBytes(first, "written since");
  RestoreOver(window, backups, IDNO, 1);
  EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"3 files restored to C:\\, 1 left"));
  EXPECT_EQ(ReadBytes(first), "written since");
  RestoreOver(window, backups, IDYES, 4);
  EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"4 files restored to C:\\."));
  for (const auto& [path, bytes] : files_) EXPECT_EQ(ReadBytes(path), bytes) << path;
}

// The window answers while it restores; Esc, and closing it, end that before the next file.
TEST_F(FrmBackupsTest, ARestoreIsStopped) {
  for (const char* name : {"1", "2", "3", "4", "5"})
    WriteBytes(TempFolder() / "large" / name, std::string(32 << 20, 'n'));
  WriteSettings("DelMethod=B\r\n[Backup]\r\nOverwrite=Always\r\n");
  const QuellixWindow window;
  const HWND backups = CleanAndOpen(window);
  for (const bool by_key : {true, false}) {
    EXPECT_FALSE(IsEnabled(backups, cmdStopRestore));
    PressIn(backups, cmdRestoreAll);
    ASSERT_TRUE(AwaitEnabled(backups, cmdStopRestore));
    EXPECT_FALSE(IsEnabled(backups, lstvArchives) || IsEnabled(backups, cmdDeleteArchive));
    EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"Restoring "));
    if (by_key) {
      window.PressKey(GetDlgItem(backups, cmdStopRestore), VK_ESCAPE);
    } else {
      PostMessageW(backups, WM_CLOSE, 0, 0);
    }
    EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"; stopped at your wish.") && IsWindow(backups));
    EXPECT_TRUE(IsEnabled(backups, lstvArchives) && IsEnabled(backups, cmdRestoreAll));
    if (!by_key) break;
    size_t whole = 0;
    for (const auto& file : fs::recursive_directory_iterator(TempFolder()))
      whole += file.is_regular_file();
    EXPECT_LT(whole, files_.size() + 5);
    EXPECT_TRUE(Shown(backups, txtOutcome).starts_with(std::to_wstring(whole) + L" file"));
  }
}

TEST_F(FrmBackupsTest, AFileIsViewedAndAnArchiveDeletedAfterAQuestion) {
  const QuellixWindow window;
  ASSERT_TRUE(CloseAndAwait(CleanAndOpen(window)));
  const HWND backups = Open(window);
  EXPECT_TRUE(AwaitFocus(backups, lstvArchives)) << "also the second time";
  const fs::path copy = L"C:\\quellix-tests\\viewed", first = TempFolder() / "a.view";
  WriteBytes(copy, "");
  const Opener opener(L".view", L"cmd.exe /c copy \"%1\" \"" + copy.wstring() + L"\"");
  window.PressKey(GetDlgItem(backups, lstvEntries), VK_HOME);
  window.PressKey(GetDlgItem(backups, lstvEntries), VK_SPACE);
  ASSERT_TRUE(AwaitEnabled(backups, cmdView));
  PressIn(backups, cmdView);
  EXPECT_TRUE(
      AwaitPart(backups, txtOutcome, L"A copy of " + first.wstring().substr(3) + L" is opened."));
  EXPECT_TRUE(Await([&] { return ReadBytes(copy) == files_.at(first); }));

  const HWND archives = GetDlgItem(backups, lstvArchives);
  for (const int answer : {IDNO, IDYES}) {
    SCOPED_TRACE(answer);
    PressIn(backups, cmdDeleteArchive);
    ASSERT_TRUE(window.Answer(L"Delete the archive", answer));
    EXPECT_TRUE(Await([&] { return CountRows(archives) == (answer == IDNO ? 1 : 0); }));
    EXPECT_EQ(fs::is_empty(BackupFolder()), answer == IDYES);
  }
  EXPECT_TRUE(AwaitPart(backups, txtOutcome, L"is deleted."));
  EXPECT_EQ(CountRows(GetDlgItem(backups, lstvEntries)), 0);
  EXPECT_FALSE(IsEnabled(backups, cmdRestoreAll) || IsEnabled(backups, cmdDeleteArchive));
  window.PressKey(archives, VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(backups) && IsWindowEnabled(window.main()));
}

}  // namespace
}  // namespace quellix::test
