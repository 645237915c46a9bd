#include <gtest/gtest.h>

#include <map>
#include <set>

#include "opener.h"
#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

std::filesystem::path BackupFolder() { return ProgramFolder() / "Backup"; }

class FrmBackupsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    std::filesystem::remove_all(BackupFolder());
    WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nDelMethod=B\r\n");
    for (const auto& [path, bytes] : files_) WriteBytes(path, bytes);
  }

  static HWND Clean(const QuellixWindow& window) {
    window.Click(chkTemp);
    window.Press(cmdClean);
    const HWND log = window.AwaitWindow(L"Cleaning log");
    SendMessageW(log, WM_CLOSE, 0, 0);
    return log;
  }
  // By the keys of the menu bar.
  static HWND Open(const QuellixWindow& window) {
    PostMessageW(window.main(), WM_SYSCOMMAND, SC_KEYMENU, 't');
    if (!window.AwaitMenu()) return nullptr;
    window.PressKey(window.main(), VK_RETURN);
    return window.AwaitWindow(L"Backups");
  }
  static bool AwaitOutcome(HWND window, std::wstring_view text) {
    return Await(
        [&] { return TextOf(GetDlgItem(window, txtOutcome)).find(text) != std::wstring::npos; });
  }
  static bool Enabled(HWND window, int id) {
    return IsWindowEnabled(GetDlgItem(window, id)) != FALSE;
  }
  static int Count(HWND list) {
    return static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
  }
  void ExpectFiles() const {
    for (const auto& [path, bytes] : files_) EXPECT_EQ(ReadBytes(path), bytes) << path;
  }

  const std::map<std::filesystem::path, std::string> files_ = {
      {TempFolder() / "a.view", std::string(512, 'a')},
      {TempFolder() / "empty.tmp", ""},
      {TempFolder() / "nested" / "deep" / "b.tmp", std::string("\0\r\n\x1A\xFF", 5)},
      {TempFolder() / L"\u6771\u4eac.tmp", std::string(100000, 'c')}};
};

TEST_F(FrmBackupsTest, OpenedAgainItHasTheKeyboard) {
  const QuellixWindow window;
  for (const char* time : {"first", "second"}) {
    SCOPED_TRACE(time);
    const HWND backups = Open(window);
    ASSERT_TRUE(backups);
    EXPECT_TRUE(AwaitFocus(backups, lstvArchives));
    SendMessageW(backups, WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindowEnabled(window.main()));
  }
}

TEST_F(FrmBackupsTest, WhatWasCleanedComesBack) {
  const QuellixWindow window;
  ASSERT_TRUE(Clean(window));
  ASSERT_TRUE(std::filesystem::is_empty(TempFolder()));
  const HWND backups = Open(window);
  ASSERT_TRUE(backups);
  EXPECT_FALSE(IsWindowEnabled(window.main()));
  const HWND archives = GetDlgItem(backups, lstvArchives);
  const HWND entries = GetDlgItem(backups, lstvEntries);
  ASSERT_EQ(Count(archives), 1);
  EXPECT_EQ(window.RowText(archives, 0, 0), L"C:");
  EXPECT_EQ(window.RowText(archives, 0, 2), L"4");
  EXPECT_EQ(window.RowText(archives, 0, 4), L"Whole");
  ASSERT_EQ(Count(entries), 4);
  const std::wstring first = TempFolder() / "a.view";
  EXPECT_EQ(window.RowText(entries, 0, 0), first.substr(3));
  EXPECT_EQ(window.RowText(entries, 0, 1), L"512");

  EXPECT_FALSE(Enabled(backups, cmdRestoreSelected) || Enabled(backups, cmdView));
  window.PressKey(entries, VK_HOME);
  window.PressKey(entries, VK_SPACE);
  ASSERT_TRUE(Await([&] { return Enabled(backups, cmdRestoreSelected); }));
  PressIn(backups, cmdRestoreSelected);
  EXPECT_TRUE(AwaitOutcome(backups, L"1 file restored to C:\\"));
  EXPECT_EQ(ReadBytes(first), files_.at(first));
  EXPECT_FALSE(std::filesystem::exists(TempFolder() / "empty.tmp"));

  const std::filesystem::path copy = L"C:\\quellix-tests\\viewed";
  WriteBytes(copy, "");
  const Opener opener(L".view", L"cmd.exe /c copy \"%1\" \"" + copy.wstring() + L"\"");
  PressIn(backups, cmdView);
  EXPECT_TRUE(AwaitOutcome(backups, L"A copy of " + first.substr(3) + L" is opened."))
      << ::testing::PrintToString(TextOf(GetDlgItem(backups, txtOutcome)));
  EXPECT_TRUE(Await([&] { return ReadBytes(copy) == files_.at(first); }));

  WriteBytes(first, "written since");
  for (const int answer : {IDNO, IDYES}) {
    SCOPED_TRACE(answer);
    PressIn(backups, cmdRestoreAll);
    for (int asked = 0; asked < (answer == IDNO ? 1 : 4); ++asked) {
      const HWND question = window.AwaitWindow(L"Replace the file?");
      ASSERT_TRUE(question);
      EXPECT_NE(TextOf(GetDlgItem(question, txtTarget)).find(TempFolder().wstring()),
                std::wstring::npos);
      PressIn(question, answer);
      ASSERT_TRUE(Await([&] { return !IsWindow(question); }));
    }
    EXPECT_TRUE(AwaitOutcome(backups, answer == IDNO ? L"3 files restored to C:\\, 1 left"
                                                     : L"4 files restored to C:\\."));
    if (answer == IDNO) {
      EXPECT_EQ(ReadBytes(first), "written since");
    }
  }
  ExpectFiles();
}

// The window answers while it restores, and Esc ends that before the next file.
TEST_F(FrmBackupsTest, ARestoreIsStopped) {
  const std::string large(64 << 20, 'n');
  for (const char* name : {"1", "2", "3", "4", "5"})
    WriteBytes(TempFolder() / "large" / name, large);
  WriteBytes(ProgramFolder() / "Settings.ini",
             "[General]\r\nDelMethod=B\r\n[Backup]\r\nOverwrite=Always\r\n");
  const QuellixWindow window;
  ASSERT_TRUE(Clean(window));
  const HWND backups = Open(window);
  ASSERT_TRUE(backups);
  EXPECT_FALSE(Enabled(backups, cmdStopRestore));
  PressIn(backups, cmdRestoreAll);
  ASSERT_TRUE(Await([&] { return Enabled(backups, cmdStopRestore); }));
  EXPECT_FALSE(Enabled(backups, lstvArchives) || Enabled(backups, cmdDeleteArchive));
  EXPECT_TRUE(AwaitOutcome(backups, L"Restoring "));
  window.PressKey(GetDlgItem(backups, cmdStopRestore), VK_ESCAPE);
  EXPECT_TRUE(AwaitOutcome(backups, L"; stopped at your wish."));
  EXPECT_TRUE(IsWindow(backups));
  EXPECT_FALSE(Enabled(backups, cmdStopRestore));
  EXPECT_TRUE(Enabled(backups, lstvArchives) && Enabled(backups, cmdRestoreAll));
  size_t whole = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(TempFolder())) {
    EXPECT_NE(file.path().filename(), L"~quellix-restore.tmp");
    whole += file.is_regular_file();
  }
  EXPECT_LT(whole, files_.size() + 5);
  EXPECT_TRUE(
      TextOf(GetDlgItem(backups, txtOutcome)).starts_with(std::to_wstring(whole) + L" file"));
  PressIn(backups, cmdRestoreAll);
  ASSERT_TRUE(Await([&] { return Enabled(backups, cmdStopRestore); }));
  PostMessageW(backups, WM_CLOSE, 0, 0);  // means Stop as well
  EXPECT_TRUE(AwaitOutcome(backups, L"stopped at your wish."));
  EXPECT_TRUE(IsWindow(backups));
}

TEST_F(FrmBackupsTest, AnArchiveIsDeletedAfterAQuestion) {
  const QuellixWindow window;
  ASSERT_TRUE(Clean(window));
  const HWND backups = Open(window);
  ASSERT_TRUE(backups);
  const HWND archives = GetDlgItem(backups, lstvArchives);
  for (const int answer : {IDNO, IDYES}) {
    SCOPED_TRACE(answer);
    PressIn(backups, cmdDeleteArchive);
    const HWND question = window.AwaitMessage(L"Delete the archive");
    ASSERT_TRUE(question);
    PressIn(question, answer);
    ASSERT_TRUE(Await([&] { return !IsWindow(question); }));
    EXPECT_TRUE(Await([&] { return Count(archives) == (answer == IDNO ? 1 : 0); }));
    EXPECT_EQ(std::filesystem::is_empty(BackupFolder()), answer == IDYES);
  }
  EXPECT_TRUE(AwaitOutcome(backups, L"is deleted."));
  EXPECT_EQ(Count(GetDlgItem(backups, lstvEntries)), 0);
  EXPECT_FALSE(Enabled(backups, cmdRestoreAll) || Enabled(backups, cmdDeleteArchive));
  window.PressKey(archives, VK_ESCAPE);
  EXPECT_TRUE(Await([&] { return !IsWindow(backups); }));
  EXPECT_TRUE(IsWindowEnabled(window.main()));
}

TEST_F(FrmBackupsTest, EveryControlHasAKeyOfItsOwnAndATabStop) {
  const QuellixWindow window;
  ASSERT_TRUE(Clean(window));
  const HWND backups = Open(window);
  ASSERT_TRUE(backups);
  std::set<wchar_t> letters;
  std::set<HWND> reached;
  for (HWND at = GetDlgItem(backups, IDCANCEL); reached.insert(at).second;) {
    at = GetNextDlgTabItem(backups, at, FALSE);
  }
  for (HWND control = GetWindow(backups, GW_CHILD); control;
       control = GetWindow(control, GW_HWNDNEXT)) {
    const int id = GetDlgCtrlID(control);
    SCOPED_TRACE(id);
    const bool label = id == lblArchives || id == lblEntries || id == lblOverwrite ||
                       id == lblOutcome || id == pgRestore;
    EXPECT_EQ(reached.contains(control), !label && IsWindowEnabled(control));
    const std::wstring text = TextOf(control);
    const size_t ampersand = text.find(L'&');
    if (ampersand != text.npos) {
      EXPECT_TRUE(letters.insert(static_cast<wchar_t>(towlower(text[ampersand + 1]))).second);
    }
  }
  EXPECT_EQ(letters.size(), 12u);
}

}  // namespace
}  // namespace quellix::test
