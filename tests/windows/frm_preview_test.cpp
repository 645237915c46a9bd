// Seeing before cleaning: the preview, the question, the list of a run, and the runs before it.
#include <gtest/gtest.h>
#include <shlobj.h>

#include "quellix_window.h"
#include "support/holds.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

struct FrmPreviewTest : SandboxTest {
  FrmPreviewTest() {
    WriteSettings("DelMethod=D\r\nAsk=1\r\nKeepLogs=5\r\n");
    for (const char* name : {"a.tmp", "b.tmp", "c.doc"}) WriteBytes(TempFolder() / name, "12345");
  }
  static bool Exists(const char* name) { return fs::exists(TempFolder() / name); }
};

TEST_F(FrmPreviewTest, CleanAsksFirstAndShowsWhatGoes) {
  const QuellixWindow window;
  window.Click(chkTemp);
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"Delete 3 files (15 Bytes) for good?", IDCANCEL));
  EXPECT_TRUE(Await([&] { return window.IsEnabled(cmdClean); }));
  EXPECT_TRUE(Exists("a.tmp") && Exists("b.tmp") && Exists("c.doc"));
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"Delete 3 files (15 Bytes) for good?", kShow));
  const HWND preview = window.AwaitWindow(L"Preview");
  window.PressKey(GetDlgItem(preview, lstvRun), VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(preview));
  // A letter by itself starts nothing.
  for (const wchar_t letter : {L'c', L'v', L's'})
    PostMessageW(window.Control(lstvItems), WM_CHAR, static_cast<WPARAM>(letter), 0);
  SendMessageW(window.main(), WM_NULL, 0, 0);
  EXPECT_TRUE(!window.HasWindow(L"Preview") && Exists("a.tmp"));
  // What can be had back needs no question.
  EXPECT_TRUE(window.Close());
  WriteSettings("DelMethod=R\r\nAsk=1\r\n");
  const QuellixWindow recycling;
  recycling.Press(cmdClean);
  EXPECT_TRUE(recycling.AwaitWindow(L"Cleaning log") && !Exists("a.tmp"));
}

// As a file manager does.
void CopyFiles(const std::wstring& names) {
  const size_t bytes = sizeof(DROPFILES) + (names.size() + 2) * sizeof(wchar_t);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes);
  auto* const drop = static_cast<DROPFILES*>(GlobalLock(memory));
  drop->pFiles = sizeof(DROPFILES);
  drop->fWide = TRUE;
  names.copy(reinterpret_cast<wchar_t*>(drop + 1), names.size());
  GlobalUnlock(memory);
  OpenClipboard(nullptr);
  EmptyClipboard();
  if (!names.empty()) SetClipboardData(CF_HDROP, memory);
  CloseClipboard();
}

TEST_F(FrmPreviewTest, CopiedFilesAndFoldersAreSeenBeforeTheyGo) {
  WriteBytes(TempFolder() / "named" / "deep" / "d.txt", "12345");
  const QuellixWindow window;
  CopyFiles(L"");
  window.Choose(mnuRemoveCopied);
  EXPECT_TRUE(window.Answer(L"Copy files or folders in Explorer first", IDOK));
  CopyFiles((TempFolder() / "named").wstring() + L'\0' + (TempFolder() / "a.tmp").wstring());
  const HWND preview = window.Open(mnuRemoveCopied, L"Preview");
  EXPECT_EQ(Shown(preview, lblRunSummary), L"4 entries to be removed, 10 Bytes.");
  PressIn(preview, cmdCleanTicked);
  ASSERT_TRUE(window.Answer(L"Delete 2 files (10 Bytes) for good?", kYes));
  EXPECT_TRUE(AwaitPart(window.AwaitWindow(L"Cleaning log"), txtLog,
                        L"Named by hand... Files Deleted: 2 Space Gained: 10 Bytes"));
  EXPECT_FALSE(Exists("named") || Exists("a.tmp"));
  EXPECT_TRUE(Exists("b.tmp"));
}

TEST_F(FrmPreviewTest, TheLogListsTheEntriesAndTheRunsBefore) {
  WriteSettings("KeepLogs=5\r\n");
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

constexpr wchar_t kRunHistory[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU";

const std::string kExpectedLog =
    "Temporary files... Files Deleted: 2 Space Gained: 1.00 KB\r\n"
    "Windows run history... Files Deleted: 1\r\n"
    "\r\n" +
    std::string(67, '-') + "\r\nFiles Deleted:  2   Space Gained:  1.00 KB";

using FrmLogTest = SandboxTest;

TEST_F(FrmLogTest, ShowsWhatTheRunDidAndSavesItsText) {
  const fs::path folder = L"C:\\quellix-tests\\log", file = folder / L"\u00fcber.log";
  WriteBytes(TempFolder() / "nested" / "deep" / "b.tmp", std::string(1000, 'b'));
  WriteBytes(TempFolder() / L"\u6771\u4eac.tmp", std::string(24, 'c'));
  RegDeleteKeyW(HKEY_CURRENT_USER, kRunHistory);
  SetRegistryText(HKEY_CURRENT_USER, kRunHistory, L"a", L"notepad\\1");
  fs::create_directories(folder);
  const QuellixWindow window;
  EXPECT_EQ(TextOf(window.Control(lblCleanDate)), L"Never");
  for (const int item : {chkTemp, chkRunMRU}) window.Click(item);
  window.Press(cmdClean);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_TRUE(fs::is_empty(TempFolder()));
  EXPECT_EQ(RegistryText(HKEY_CURRENT_USER, kRunHistory, L"a"), L"<missing>");
  const std::wstring shown = Shown(log, txtLog);
  EXPECT_EQ(WithoutFreeSpace(std::string(shown.begin(), shown.end())), kExpectedLog);
  EXPECT_EQ(Shown(log, lblFiles) + L", " + Shown(log, lblSpace), L"2, 1.00 KB");
  const wchar_t* const kRows[][2] = {{L"Folders and Files", L"Cleaned"},
                                     {L"Miscellaneous", L"Cleaned"},
                                     {L"Internet Explorer", L"Not Cleaned: not chosen"}};
  for (int row = 0; row < 3; ++row) {
    EXPECT_EQ(window.RowText(GetDlgItem(log, lstvCategories), row, 0), kRows[row][0]);
    EXPECT_EQ(window.RowText(GetDlgItem(log, lstvCategories), row, 1), kRows[row][1]);
  }
  EXPECT_NE(TextOf(window.Control(lblCleanDate)).find(L':'), std::wstring::npos);

  PressIn(log, cmdSave);
  const HWND dialog = window.AwaitWindow(L"Save As");
  EXPECT_FALSE(IsWindowEnabled(window.main()));  // a run would take the dialog away
  TypeFileName(dialog, folder / L"\u00fcber");
  PressIn(dialog, IDOK);
  EXPECT_TRUE(Await([&] { return WithoutFreeSpace(ReadBytes(file)) == kExpectedLog; }));
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(window.main()); }));
  window.PressKey(GetDlgItem(log, txtLog), VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(log));
}

}  // namespace
}  // namespace quellix::test
