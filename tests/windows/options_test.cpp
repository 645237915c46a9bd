#include <gtest/gtest.h>

#include <map>
#include <set>

#include "options_window.h"

namespace quellix::test {
namespace {

constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kShellFolders[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const char* kFiles[] = {"srch.txt", "IFI.txt",  "IE.txt",   "UDIFO.txt",
                                  "UNFI.txt", "UDFI.txt", "UDFO.txt", "ck.txt"};

std::wstring RegistryText(const wchar_t* key, const wchar_t* name) {
  wchar_t text[600] = {};
  DWORD size = sizeof(text);
  const LSTATUS status =
      RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_REG_SZ, nullptr, text, &size);
  return status == ERROR_SUCCESS ? text : L"<missing>";
}

void SetRegistryText(const wchar_t* key, const wchar_t* name, const std::wstring& text) {
  RegSetKeyValueW(HKEY_CURRENT_USER, key, name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

class FrmOptionsTest : public ::testing::Test {
 protected:
  void SetUp() override { Reset(); }
  void TearDown() override { Reset(); }

  static void Reset() {
    ResetSandbox();
    for (const char* name : kFiles) std::filesystem::remove(ProgramFolder() / name);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Quellix");
  }
  static std::string ReadFile(const char* name) { return ReadBytes(ProgramFolder() / name); }
  // Names and bytes of the program folder's own files.
  static std::map<std::string, std::string> Snapshot() {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(ProgramFolder())) {
      const std::string name = entry.path().filename().string();
      if (entry.path().extension() == ".txt" || entry.path().extension() == ".ini") {
        files[name] = ReadBytes(entry.path());
      }
    }
    return files;
  }
};

TEST_F(FrmOptionsTest, GeneralAndDeletionAreWrittenToTheByteAndApplied) {
  const QuellixWindow program;
  EXPECT_FALSE(program.IsEnabled(chkEmptyFiles) || program.IsEnabled(chkDeadShortcut));
  EXPECT_TRUE(IsWindowVisible(program.Control(txtTip)));
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  EXPECT_FALSE(IsWindowEnabled(program.main()));
  EXPECT_FALSE(options.IsEnabled(cmdApply) || options.IsEnabled(cmbAutoClean1));
  EXPECT_TRUE(options.IsChecked(Check3));
  for (const int box :
       {chkAutoClean, chkTrayIcon, chkStartWWindows, chkCleanStartup, Check1, Check2, Check3}) {
    options.Click(box);
  }
  EXPECT_TRUE(options.IsEnabled(cmdApply));
  options.Type(cmbAutoClean1, L"45");
  options.Choose(cmbAutoClean, 0);
  options.GoTo(OptionsPage::kDeletion);
  EXPECT_TRUE(options.IsChecked(optDelete));
  for (const int box :
       {optZip, chkExtraSecurity, chkRename, chkStrict, chkKeepOnAbort, chkBackupRegistry}) {
    options.Click(box);
  }
  EXPECT_FALSE(options.IsChecked(optDelete));
  options.Choose(cmbWipeStep, 1);
  options.Type(txtBackup, L"C:\\Saf\u00E9");
  PressIn(options.window(), cmdApply);
  ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
  EXPECT_EQ(ReadFile("Settings.ini"),
            "[General]\r\nStartupClean=1\r\nAutoClean=1\r\nHM=0\r\nDuration=45\r\nDelMethod=B\r\n"
            "ExtraS=1\r\nRename=1\r\nProtect1=1\r\nProtect2=1\r\nTipBox=0\r\nTrayIcon=1\r\n"
            "WipeStep=65536\r\n[Backup]\r\nPath=C:\\Saf\xC3\xA9\\\r\nStrict=1\r\nKeepOnAbort=1\r\n"
            "Registry=0\r\n");
  EXPECT_EQ(RegistryText(kRunKey, L"Quellix"),
            L"\"" + (ProgramFolder() / "quellix.exe").wstring() + L"\" -S");
  EXPECT_TRUE(options.IsOpen());
  EXPECT_TRUE(program.IsEnabled(chkEmptyFiles) && program.IsEnabled(chkDeadShortcut));
  EXPECT_FALSE(IsWindowVisible(program.Control(txtTip)));

  for (const auto& [button, letter] : {std::pair(optWipe, "W"), std::pair(optRecyclebin, "R"),
                                       std::pair(optDelete, "D"), std::pair(optZip, "B")}) {
    SCOPED_TRACE(letter);
    options.Click(button);
    PressIn(options.window(), cmdApply);
    ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
    EXPECT_NE(ReadFile("Settings.ini").find(std::string("DelMethod=") + letter + "\r\n"),
              std::string::npos);
  }
  options.GoTo(OptionsPage::kGeneral);
  for (const int box : {chkAutoClean, chkStartWWindows, Check1, Check2, Check3}) options.Click(box);
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_TRUE(IsWindowEnabled(program.main()));
  EXPECT_EQ(RegistryText(kRunKey, L"Quellix"), L"<missing>");
  EXPECT_FALSE(program.IsEnabled(chkEmptyFiles) || program.IsEnabled(chkDeadShortcut));
  EXPECT_TRUE(IsWindowVisible(program.Control(txtTip)));
}

TEST_F(FrmOptionsTest, TheSearchPageIsWrittenInItsFiveLines) {
  WriteBytes(ProgramFolder() / "srch.txt",
             " C: Hard drive Q: Hard drive\r\n1 2\r\n1 2/3/2001 8/9/2001\r\n1 True False False "
             "7\r\n1 0 2\r\n");
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kSearch);
  ASSERT_EQ(options.CountRows(lstSearch), 2);
  EXPECT_EQ(program.RowText(options.Control(lstSearch), 1, 0),
            L"Q: The root directory does not exist");
  EXPECT_TRUE(IsRowTicked(options.Control(lstSearch), 0));
  EXPECT_TRUE(options.IsChecked(chkSearchFileReference) &&
              !options.IsChecked(chkSearchPathReference));
  EXPECT_TRUE(options.IsChecked(chkSearchSystem) && !options.IsChecked(chkSearchHidden));
  EXPECT_TRUE(options.IsChecked(optSearcSizeIs) && !options.IsChecked(optSearchSizeAtleast));
  options.SelectRow(lstSearch, 1);
  program.PressKey(options.Control(lstSearch), VK_SPACE);
  EXPECT_TRUE(Await([&] { return !IsRowTicked(options.Control(lstSearch), 1); }));
  for (const int box :
       {chkSearchFileReference, chkSearchReadOnly, chkSearchHidden, optSearchSizeAtMost}) {
    options.Click(box);
  }
  options.Type(txtSearchSize, L"2147483647");
  const HWND date = options.Control(dtpSearchFirst);
  SendMessageW(date, WM_SETFOCUS, 0, 0);
  program.PressKey(date, VK_RIGHT);
  program.PressKey(date, VK_UP);
  SendMessageW(date, WM_NULL, 0, 0);
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_EQ(ReadFile("srch.txt"),
            " C: Hard drive\r\n0 2\r\n1 3/3/2001 8/9/2001\r\n1 False False True 2147483647\r\n"
            "0 1 2\r\n");
}

TEST_F(FrmOptionsTest, EveryListIsWrittenToTheByte) {
  const struct {
    OptionsPage page;
    const char* file;
    std::wstring first, second, changed;
    std::string bytes;  // after adding both, changing the first and removing the second
    const char* defaults;
  } kLists[] = {
      {OptionsPage::kIgnoredFiles, "IFI.txt", L"a.ini", L"b.ini", L"c.ini", "c.ini\r\n",
       "DefIFI.txt"},
      {OptionsPage::kIgnoredExtensions, "IE.txt", L".abc", L"def", L"*.ghi", "ghi\r\n",
       "DefIE.txt"},
      {OptionsPage::kIgnoredFolders, "UDIFO.txt", L"temp", L"C:\\Keep\\", L"tmp", "tmp\r\n",
       nullptr},
      {OptionsPage::kFileTypes, "UNFI.txt", L"*.q1", L"*.q2", L"*.q3",
       "1\x01*.q3\x01What it is\r\n", "DefUNFI.txt"},
      {OptionsPage::kUserFiles, "UDFI.txt", L"C:\\a.txt", L"C:\\b.txt", L"C:\\\u00FC.txt",
       "C:\\\xC3\xBC.txt\r\n", nullptr},
      {OptionsPage::kUserFolders, "UDFO.txt", L"C:\\Junk\\", L"C:\\Old", L"C:\\New", "C:\\New\r\n",
       nullptr},
  };
  for (const auto& list : kLists) WriteBytes(ProgramFolder() / list.file, "");
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  for (const auto& list : kLists) {
    SCOPED_TRACE(list.file);
    options.GoTo(list.page);
    EXPECT_FALSE(options.IsEnabled(cmdEdit) || options.IsEnabled(cmdRemove));
    for (const std::wstring& entry : {list.first, list.second}) {
      options.Type(txtEntry, entry);
      if (options.Control(txtDescription)) options.Type(txtDescription, L"What it is");
      options.Click(cmdAdd);
    }
    ASSERT_EQ(options.CountRows(lstvList), 2);
    options.SelectRow(lstvList, 0);
    options.Type(txtEntry, list.changed);
    options.Click(cmdEdit);
    options.SelectRow(lstvList, 1);
    options.Click(cmdRemove);
    EXPECT_EQ(options.CountRows(lstvList), 1);
    EXPECT_EQ(IsWindowVisible(options.Control(cmdDefaults)) != FALSE, list.defaults != nullptr);
  }
  PressIn(options.window(), cmdApply);
  ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
  for (const auto& list : kLists) EXPECT_EQ(ReadFile(list.file), list.bytes);

  for (const auto& list : kLists) {
    options.GoTo(list.page);
    if (list.defaults) options.Click(cmdDefaults);
  }
  options.GoTo(OptionsPage::kFileTypes);
  options.SelectRow(lstvList, 0);
  program.PressKey(options.Control(lstvList), VK_SPACE);
  ASSERT_TRUE(Await([&] { return !IsRowTicked(options.Control(lstvList), 0); }));
  EXPECT_TRUE(options.PressAndClose(IDOK));
  for (const auto& list : kLists) {
    if (!list.defaults) continue;
    std::string wanted = ReadFile(list.defaults);
    if (list.page == OptionsPage::kFileTypes) wanted[0] = '0';
    EXPECT_EQ(ReadFile(list.file), wanted);
  }
}

TEST_F(FrmOptionsTest, AFolderThatItsUserKnowsIsAddedWhenTheySaySo) {
  const std::wstring folder = _wgetenv(L"USERPROFILE") + std::wstring(L"\\Downloads");
  std::filesystem::create_directories(folder);
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kUserFolders);
  options.Type(txtEntry, folder);
  for (const int answer : {IDNO, IDYES}) {
    Press(options.Control(cmdAdd));
    const HWND question = program.AwaitMessage(L"one of your own folders");
    ASSERT_TRUE(question);
    PressIn(question, answer);
    EXPECT_TRUE(Await([&] { return options.CountRows(lstvList) == (answer == IDYES); }));
  }
  options.Type(txtEntry, L"C:\\Windows");
  EXPECT_TRUE(options.PressAndRead(cmdAdd, L"C:\\Windows cannot be cleaned: "));
}

TEST_F(FrmOptionsTest, CookiesMoveEitherWay) {
  const std::filesystem::path folder = L"C:\\quellix-tests\\Cookies";
  const std::wstring before = RegistryText(kShellFolders, L"Cookies");
  SetRegistryText(kShellFolders, L"Cookies", folder);
  for (const char* name : {"a@x.txt", "b@x.txt", "c@x.txt"}) WriteBytes(folder / name, "cookie");
  const std::string path = folder.string() + "\\";
  WriteBytes(ProgramFolder() / "ck.txt", path + "b@x.txt\x01\r\n");
  const QuellixWindow program;
  {
    const OptionsWindow options(program);
    ASSERT_TRUE(options.window());
    options.GoTo(OptionsPage::kCookies);
    ASSERT_EQ(options.CountRows(lstvCookies), 2);
    EXPECT_FALSE(options.IsEnabled(cmdKeep) || options.IsEnabled(cmdRelease));
    options.SelectRow(lstvCookies, 1);
    ASSERT_TRUE(Await([&] { return options.IsEnabled(cmdKeep); }));
    options.Click(cmdKeep);
    options.SelectRow(lstvKept, 0);
    ASSERT_TRUE(Await([&] { return options.IsEnabled(cmdRelease); }));
    options.Click(cmdRelease);
    EXPECT_EQ(program.RowText(options.Control(lstvCookies), 1, 0), L"b@x.txt");
    EXPECT_TRUE(options.PressAndClose(IDOK));
    EXPECT_EQ(ReadFile("ck.txt"), path + "c@x.txt\x01\r\n");
  }
  const OptionsWindow options(program);
  EXPECT_EQ(options.Page(), OptionsPage::kCookies);  // as it was left
  options.Click(cmdKeepAll);
  EXPECT_EQ(options.CountRows(lstvKept), 3);
  options.Click(cmdReleaseAll);
  EXPECT_EQ(options.CountRows(lstvKept), 0);
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_EQ(ReadFile("ck.txt"), "\r\n");
  RegDeleteKeyValueW(HKEY_CURRENT_USER, kShellFolders, L"Cookies");
  if (before != L"<missing>") SetRegistryText(kShellFolders, L"Cookies", before);
}

TEST_F(FrmOptionsTest, CancelChangesNothingOnTheDisk) {
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nTipBox=1\r\n");
  const QuellixWindow program;
  const std::map<std::string, std::string> before = Snapshot();
  for (const bool by_key : {false, true}) {
    SCOPED_TRACE(by_key ? "Esc" : "Cancel");
    const OptionsWindow options(program);
    ASSERT_TRUE(options.window());
    options.GoTo(OptionsPage::kGeneral);
    for (const int box : {chkAutoClean, chkStartWWindows, Check1, Check3}) options.Click(box);
    options.GoTo(OptionsPage::kDeletion);
    options.Click(optWipe);
    options.Type(txtBackup, L"nonsense");
    options.GoTo(OptionsPage::kSearch);
    options.Click(chkSearchHidden);
    for (const OptionsPage page : {OptionsPage::kIgnoredExtensions, OptionsPage::kFileTypes}) {
      options.GoTo(page);
      options.Click(cmdDefaults);
      options.Type(txtEntry, L"*.unfinished");
    }
    if (by_key) {
      program.PressKey(options.Control(lstPages), VK_ESCAPE);
      EXPECT_TRUE(Await([&] { return !options.IsOpen(); }));
    } else {
      EXPECT_TRUE(options.PressAndClose(IDCANCEL));
    }
    EXPECT_EQ(Snapshot(), before);
    EXPECT_EQ(RegistryText(kRunKey, L"Quellix"), L"<missing>");
    EXPECT_FALSE(program.IsEnabled(chkEmptyFiles));
  }
}

TEST_F(FrmOptionsTest, WhatCannotBeIsRefusedAtItsField) {
  const QuellixWindow program;
  const std::map<std::string, std::string> before = Snapshot();
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kGeneral);
  options.Click(chkAutoClean);
  options.Type(cmbAutoClean1, L"547");
  options.GoTo(OptionsPage::kDeletion);
  const std::wstring folder = TextOf(options.Control(txtBackup));
  options.Type(txtBackup, L"Backup");
  options.GoTo(OptionsPage::kSearch);
  options.Click(chkSearchSize);
  options.Click(chkSearchDateReference);
  options.Type(txtSearchSize, L"2147483648");
  options.GoTo(OptionsPage::kFileTypes);
  EXPECT_TRUE((options.Type(txtEntry, L"bak"),
               options.PressAndRead(cmdAdd, L"Please enter the file type in format")));
  options.Type(txtEntry, L"*.TMP");
  EXPECT_TRUE(options.PressAndRead(cmdAdd, L"File Type already exists in the list."));

  EXPECT_TRUE(options.PressAndRead(IDOK, L"*.TMP is not in the list yet."));
  EXPECT_EQ(options.Page(), OptionsPage::kFileTypes);
  options.Type(txtEntry, L"");
  EXPECT_TRUE(options.PressAndRead(IDOK, L"a whole number of hours from 1 to 546."));
  EXPECT_EQ(options.Page(), OptionsPage::kGeneral);
  options.Type(cmbAutoClean1, L"546");
  EXPECT_TRUE(options.PressAndRead(cmdApply, L"Please enter a full path"));
  EXPECT_EQ(options.Page(), OptionsPage::kDeletion);
  options.Type(txtBackup, folder);
  EXPECT_TRUE(options.PressAndRead(IDOK, L"The first date must lie before the second one."));
  EXPECT_EQ(options.Page(), OptionsPage::kSearch);
  options.Click(chkSearchDateReference);
  EXPECT_TRUE(options.PressAndRead(IDOK, L"a whole number of kilobytes"));
  EXPECT_EQ(Snapshot(), before);
  options.Type(txtSearchSize, L"0");
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_NE(ReadFile("Settings.ini").find("Duration=546\r\n"), std::string::npos);
}

TEST_F(FrmOptionsTest, AFailedWriteIsToldAndTheWindowStays) {
  const std::filesystem::path settings = ProgramFolder() / "Settings.ini";
  WriteBytes(settings, "[General]\r\nTipBox=1\r\n");
  SetRegistryText(kRunKey, L"Quellix", L"changed by another program");
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kGeneral);
  EXPECT_TRUE(options.IsChecked(chkStartWWindows));
  EXPECT_NE(TextOf(options.Control(lblRunEntry)).find(L"Another program"), std::wstring::npos);
  options.Click(Check3);
  const HANDLE lock = CreateFileW(settings.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(options.PressAndRead(IDOK, L"The settings could not be saved."));
  EXPECT_TRUE(options.IsOpen());
  CloseHandle(lock);
  EXPECT_EQ(ReadBytes(settings), "[General]\r\nTipBox=1\r\n");
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_NE(ReadBytes(settings).find("TipBox=0\r\n"), std::string::npos);
  EXPECT_NE(RegistryText(kRunKey, L"Quellix").find(L"quellix.exe\" -S"), std::wstring::npos);
}

TEST_F(FrmOptionsTest, TheBackupsPageOpensTheirWindow) {
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kBackups);
  Press(options.Control(cmdBackups));
  const HWND backups = program.AwaitWindow(L"Backups");
  ASSERT_TRUE(backups);
  EXPECT_FALSE(IsWindowEnabled(options.window()));
  PostMessageW(backups, WM_CLOSE, 0, 0);
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(options.window()) != FALSE; }));
  EXPECT_TRUE(options.PressAndClose(IDCANCEL));
}

TEST_F(FrmOptionsTest, EveryControlHasAKeyOfItsOwnAndATabStop) {
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  for (int page = 0; page < kOptionsPages; ++page) {
    SCOPED_TRACE(page);
    options.GoTo(static_cast<OptionsPage>(page));
    std::set<HWND> reached;
    for (HWND at = GetDlgItem(options.window(), IDOK); at && reached.insert(at).second;) {
      at = GetNextDlgTabItem(options.window(), at, FALSE);
    }
    std::set<wchar_t> letters;
    const auto check = [&](HWND parent) {
      for (HWND control = GetWindow(parent, GW_CHILD); control;
           control = GetWindow(control, GW_HWNDNEXT)) {
        const std::wstring text = TextOf(control);
        SCOPED_TRACE(::testing::PrintToString(text) + " " + std::to_string(GetDlgCtrlID(control)));
        const LONG style = GetWindowLongW(control, GWL_STYLE);
        if (!IsWindowVisible(control)) continue;
        const bool takes_tab = (style & WS_TABSTOP) && IsWindowEnabled(control);
        const bool is_radio = (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
        EXPECT_TRUE(!takes_tab || is_radio || reached.contains(control));
        const size_t ampersand = text.find(L'&');
        if (ampersand == text.npos) continue;
        EXPECT_TRUE(letters.insert(static_cast<wchar_t>(towlower(text[ampersand + 1]))).second);
      }
    };
    check(options.window());
    check(GetParent(options.Control(page < 1    ? chkAutoClean
                                    : page == 1 ? optDelete
                                    : page == 2 ? lstSearch
                                    : page < 9  ? lstvList
                                    : page == 9 ? lstvCookies
                                                : cmdBackups)));
  }
}

}  // namespace
}  // namespace quellix::test
