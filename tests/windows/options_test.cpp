
#include <map>

#include "list_windows.h"
#include "options_window.h"

#include <shlobj.h>

namespace quellix::test {
namespace {

constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// One list, its bytes after two entries were added, the first changed and the second removed.
const struct List {
  OptionsPage page;
  const char* file;
  const wchar_t *first, *second, *changed;
  const char *bytes, *defaults;
} kLists[] = {
    {OptionsPage::kIgnoredFiles, "IFI.txt", L"a.ini", L"b.ini", L"c.ini", "c.ini\r\n",
     "DefIFI.txt"},
    {OptionsPage::kIgnoredExtensions, "IE.txt", L".abc", L"def", L"*.ghi", "ghi\r\n", "DefIE.txt"},
    {OptionsPage::kIgnoredFolders, "UDIFO.txt", L"temp", L"C:\\Keep\\", L"tmp", "tmp\r\n", nullptr},
    {OptionsPage::kFileTypes, "UNFI.txt", L"*.q1", L"*.q2", L"*.q3", "1\x01*.q3\x01What it is\r\n",
     "DefUNFI.txt"},
    {OptionsPage::kUserFiles, "UDFI.txt", L"C:\\a.txt", L"C:\\b.txt", L"C:\\\u00FC.txt",
     "C:\\\xC3\xBC.txt\r\n", nullptr},
    {OptionsPage::kUserFolders, "UDFO.txt", L"C:\\Junk\\", L"C:\\Old", L"C:\\New", "C:\\New\r\n",
     nullptr},
    {OptionsPage::kKeep, "keep.txt", L"*.doc", L"C:\\Old", L"site:example.com",
     "site:example.com\r\n", nullptr}};

struct FrmOptionsTest : SandboxTest {
  FrmOptionsTest() { RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Quellix"); }
  void TearDown() override { RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Quellix"); }
  static std::string ReadFile(const char* name) { return ReadBytes(ProgramFolder() / name); }
  static std::wstring RunEntry() { return RegistryText(HKEY_CURRENT_USER, kRunKey, L"Quellix"); }
  // Names and bytes of the program folder's own files.
  static std::map<std::string, std::string> Snapshot() {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(ProgramFolder())) {
      const std::string name = entry.path().filename().string();
      if (entry.path().extension() == ".txt" || entry.path().extension() == ".ini") {
        files[name] = ReadBytes(entry.path());
      }
    }
    return files;
  }
  static void Apply(const OptionsWindow& options) {
    PressIn(options.window(), cmdApply);
    ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
  }
  // Presses a Browse button, waits for the dialog, lets `choose` act in it and presses a button.
  static bool Browse(HWND button, const std::function<void(HWND dialog)>& choose, int answer) {
    Press(button);
    HWND dialog = nullptr;
    const HWND owner = GetAncestor(button, GA_ROOT);
    if (!Await([&] {
          dialog = GetLastActivePopup(owner);
          return dialog != owner && IsWindowVisible(dialog) && !IsWindowEnabled(owner);
        })) {
      return false;
    }
    choose(dialog);
    PressIn(dialog, answer);
    return Await([&] { return !IsWindow(dialog) && IsWindowEnabled(owner); });
  }
};

TEST_F(FrmOptionsTest, WhoWantsTheDiskLookedAfterGetsTheIconThatItNeeds) {
  const QuellixWindow program;
  const OptionsWindow options(program);
  EXPECT_FALSE(options.IsEnabled(chkTrayIcon) || options.IsChecked(chkTrayIcon));
  options.Type(txtLowDisk, L"7");
  EXPECT_TRUE(options.IsEnabled(chkTrayIcon) && options.IsChecked(chkTrayIcon));
  Apply(options);
  EXPECT_NE(ReadFile("Settings.ini").find("LowDisk=7\r\n"), std::string::npos);
  options.Click(chkTrayIcon);
  EXPECT_EQ(TextOf(options.Control(txtLowDisk)), L"0");
  EXPECT_FALSE(options.IsEnabled(chkTrayIcon) || options.IsChecked(chkTrayIcon));
}

// Each page is filled in.
void FillPages(const OptionsWindow& options) {
  const auto click = [&](std::initializer_list<int> boxes) {
    for (const int box : boxes) options.Click(box);
  };
  click({chkAutoClean, chkTrayIcon, chkStartWWindows, chkCleanStartup, Check1, Check2, Check3,
         chkLogLanguage});
  options.Type(cmbAutoClean1, L"45");
  options.Choose(cmbAutoClean, 0);
  options.GoTo(OptionsPage::kDeletion);
  click({optZip, chkExtraSecurity, chkRename, chkStrict, chkKeepOnAbort, chkBackupRegistry});
  options.Choose(cmbWipeStep, 1);
  options.Type(txtBackup, L"C:\\Saf\u00E9");
  options.GoTo(OptionsPage::kRuns);
  click({chkAsk, chkSelectRisky, chkKeepPins});
  options.Type(txtOlderThan, L"7");
  options.Type(txtKeepLogs, L"20");
  options.Type(txtKeepDays, L"30");
}

TEST_F(FrmOptionsTest, GeneralAndDeletionAreWrittenToTheByteAndApplied) {
  const QuellixWindow program;
  const auto is_applied = [&](bool changed) {
    return program.IsEnabled(chkEmptyFiles) == changed &&
           program.IsEnabled(chkDeadShortcut) == changed &&
           (IsWindowVisible(program.Control(txtTip)) != FALSE) != changed;
  };
  EXPECT_TRUE(is_applied(false));
  const OptionsWindow options(program);
  EXPECT_FALSE(options.IsEnabled(cmdApply) || options.IsEnabled(cmbAutoClean1));
  FillPages(options);
  Apply(options);
  EXPECT_EQ(
      ReadFile("Settings.ini"),
      "[General]\r\nStartupClean=1\r\nAutoClean=1\r\nHM=0\r\nDuration=45\r\nDelMethod=B\r\n"
      "ExtraS=1\r\nRename=1\r\nProtect1=1\r\nProtect2=1\r\nTipBox=0\r\nTrayIcon=1\r\n"
      "WipeStep=65536\r\nKeepPins=1\r\nOlderThanDays=7\r\nAsk=1\r\nSelectRisky=0\r\nKeepLogs=20\r\n"
      "LogLanguage=1\r\n"
      "[Backup]\r\nPath=C:\\Saf\xC3\xA9\\\r\nStrict=1\r\nKeepOnAbort=1\r\n"
      "Registry=0\r\nKeepDays=30\r\n");
  EXPECT_EQ(RunEntry(), L"\"" + (ProgramFolder() / "quellix.exe").wstring() + L"\" -S");
  EXPECT_TRUE(is_applied(true));
  options.GoTo(OptionsPage::kDeletion);
  for (const auto& [button, letter] : {std::pair(optWipe, "W"), std::pair(optRecyclebin, "R"),
                                       std::pair(optDelete, "D"), std::pair(optZip, "B")}) {
    options.Click(button);
    Apply(options);
    EXPECT_NE(ReadFile("Settings.ini").find(std::string("DelMethod=") + letter + "\r\n"),
              std::string::npos);
  }
  options.GoTo(OptionsPage::kGeneral);
  for (const int box : {chkAutoClean, chkStartWWindows, Check1, Check2, Check3}) options.Click(box);
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_EQ(RunEntry(), L"<missing>");
  EXPECT_TRUE(is_applied(false));
}

TEST_F(FrmOptionsTest, TheSearchPageIsWrittenInItsFiveLines) {
  WriteBytes(ProgramFolder() / "srch.txt",
             " C: Hard drive Q: Hard drive\r\n1 2\r\n1 2/3/2001 8/9/2001\r\n1 True False False "
             "7\r\n1 0 2\r\n");
  const QuellixWindow program;
  const OptionsWindow options(program);
  options.GoTo(OptionsPage::kSearch);
  EXPECT_EQ(program.RowText(options.Control(lstSearch), 1, 0),
            L"Q: The root directory does not exist");
  EXPECT_TRUE(IsRowTicked(options.Control(lstSearch), 0));
  options.SelectRow(lstSearch, 1);
  program.PressKey(options.Control(lstSearch), VK_SPACE);
  EXPECT_TRUE(Await([&] { return !IsRowTicked(options.Control(lstSearch), 1); }));
  for (const int box :
       {chkSearchFileReference, chkSearchReadOnly, chkSearchHidden, optSearchSizeAtMost})
    options.Click(box);
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
  for (const List& list : kLists) WriteBytes(ProgramFolder() / list.file, "");
  const QuellixWindow program;
  const OptionsWindow options(program);
  for (const List& list : kLists) {
    SCOPED_TRACE(list.file);
    options.GoTo(list.page);
    EXPECT_FALSE(options.IsEnabled(cmdEdit) || options.IsEnabled(cmdRemove));
    for (const wchar_t* entry : {list.first, list.second}) {
      options.Type(txtEntry, entry);
      if (options.Control(txtDescription)) options.Type(txtDescription, L"What it is");
      options.Click(cmdAdd);
    }
    options.SelectRow(lstvList, 0);
    options.Type(txtEntry, list.changed);
    options.Click(cmdEdit);
    options.SelectRow(lstvList, 1);
    options.Click(cmdRemove);
    EXPECT_EQ(IsWindowVisible(options.Control(cmdDefaults)) != FALSE, list.defaults != nullptr);
  }
  Apply(options);
  for (const List& list : kLists) EXPECT_EQ(ReadFile(list.file), list.bytes);
  for (const List& list : kLists) {
    options.GoTo(list.page);
    if (list.defaults) options.Click(cmdDefaults);
  }
  EXPECT_TRUE(options.PressAndClose(IDOK));
  for (const List& list : kLists) {
    EXPECT_TRUE(!list.defaults || ReadFile(list.file) == ReadFile(list.defaults)) << list.file;
  }
}

// Two of four are kept.
TEST_F(FrmOptionsTest, CookiesMoveEitherWay) {
  const SeededLists seeded;
  const std::string path = "C:\\quellix-tests\\cookies\\qx";
  const QuellixWindow program;
  const OptionsWindow options(program);
  options.GoTo(OptionsPage::kCookies);
  ASSERT_EQ(options.CountRows(lstvCookies), 2);
  EXPECT_FALSE(options.IsEnabled(cmdKeep) || options.IsEnabled(cmdRelease));
  options.SelectRow(lstvCookies, 1);
  options.Click(cmdKeep);
  options.SelectRow(lstvKept, 1);
  options.Click(cmdRelease);
  Apply(options);
  EXPECT_EQ(ReadFile("ck.txt"), Fields(path + "2@x.txt|" + path + "4@x.txt|\r\n"));
  options.Click(cmdKeepAll);
  EXPECT_EQ(options.CountRows(lstvKept), 4);
  options.Click(cmdReleaseAll);
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_EQ(ReadFile("ck.txt"), "\r\n");
  EXPECT_EQ(OptionsWindow(program).Page(), OptionsPage::kCookies) << "as it was left";
}

TEST_F(FrmOptionsTest, CancelChangesNothingOnTheDisk) {
  WriteSettings("TipBox=1\r\n");
  const QuellixWindow program;
  const std::map<std::string, std::string> before = Snapshot();
  for (const bool by_key : {false, true}) {
    SCOPED_TRACE(by_key ? "Esc" : "Cancel");
    const OptionsWindow options(program);
    options.GoTo(OptionsPage::kGeneral);
    for (const int box : {chkAutoClean, chkStartWWindows, Check1, Check3}) options.Click(box);
    options.GoTo(OptionsPage::kDeletion);
    options.Click(optWipe);
    options.Type(txtBackup, L"nonsense");
    options.GoTo(OptionsPage::kSearch);
    options.Click(chkSearchHidden);
    options.GoTo(OptionsPage::kFileTypes);
    options.Click(cmdDefaults);
    options.Type(txtEntry, L"*.unfinished");
    if (by_key) program.PressKey(options.Control(lstPages), VK_ESCAPE);
    EXPECT_TRUE(by_key ? AwaitGone(options.window()) : options.PressAndClose(IDCANCEL));
    EXPECT_EQ(Snapshot(), before);
    EXPECT_EQ(RunEntry(), L"<missing>");
    EXPECT_FALSE(program.IsEnabled(chkEmptyFiles));
  }
}

TEST_F(FrmOptionsTest, WhatCannotBeIsRefusedAtItsField) {
  const QuellixWindow program;
  const std::map<std::string, std::string> before = Snapshot();
  const OptionsWindow options(program);
  options.GoTo(OptionsPage::kGeneral);
  options.Click(chkAutoClean);
  options.Type(cmbAutoClean1, L"547");
  options.GoTo(OptionsPage::kDeletion);
  const std::wstring folder = TextOf(options.Control(txtBackup));
  options.Type(txtBackup, L"Backup");
  options.GoTo(OptionsPage::kSearch);
  options.Click(chkSearchSize);
  options.Type(txtSearchSize, L"2147483648");
  options.GoTo(OptionsPage::kFileTypes);
  options.Type(txtEntry, L"*.TMP");
  EXPECT_TRUE(options.PressAndRead(cmdAdd, L"File Type already exists in the list."));
  const std::tuple<const wchar_t*, OptionsPage, int, std::wstring> kRows[] = {
      {L"*.TMP is not in the list yet.", OptionsPage::kFileTypes, txtEntry, L""},
      {L"hours from 1 to 546.", OptionsPage::kGeneral, cmbAutoClean1, L"546"},
      {L"Please enter a full path", OptionsPage::kDeletion, txtBackup, folder},
      {L"a whole number of kilobytes", OptionsPage::kSearch, txtSearchSize, L"0"}};
  for (const auto& [told, page, field, put_right] : kRows) {
    EXPECT_TRUE(options.PressAndRead(IDOK, told));
    EXPECT_EQ(options.Page(), page);
    EXPECT_EQ(Snapshot(), before);
    options.Type(field, put_right);
  }
  const std::wstring known = _wgetenv(L"USERPROFILE") + std::wstring(L"\\Downloads");
  fs::create_directories(known);
  options.GoTo(OptionsPage::kUserFolders);
  options.Type(txtEntry, known);
  for (const int answer : {IDNO, IDYES}) {
    Press(options.Control(cmdAdd));
    ASSERT_TRUE(program.Answer(L"one of your own folders", answer));
    EXPECT_TRUE(Await([&] { return options.CountRows(lstvList) == (answer == IDYES); }));
  }
  EXPECT_TRUE(options.PressAndClose(IDOK));
  EXPECT_NE(ReadFile("Settings.ini").find("Duration=546\r\n"), std::string::npos);
}

TEST_F(FrmOptionsTest, AFailedWriteIsToldAndTheWindowStays) {
  const fs::path settings = ProgramFolder() / "Settings.ini";
  WriteSettings("TipBox=1\r\n");
  SetRegistryText(HKEY_CURRENT_USER, kRunKey, L"Quellix", L"changed by another program");
  const QuellixWindow program;
  const OptionsWindow options(program);
  options.GoTo(OptionsPage::kGeneral);
  EXPECT_NE(TextOf(options.Control(lblRunEntry)).find(L"Another program"), std::wstring::npos);
  options.Click(Check3);
  {
    const HeldFile lock(settings);
    EXPECT_TRUE(options.PressAndRead(IDOK, L"The settings could not be saved."));
  }
  EXPECT_EQ(ReadBytes(settings), "[General]\r\nTipBox=1\r\n");
  PostMessageW(options.window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(options.Control(cmdApply)),
               TRUE);
  program.PressKey(options.Control(cmdApply), VK_SPACE);
  ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
  EXPECT_TRUE(IsWindowEnabled(FocusOf(options.window()))) << "Apply leaves the keyboard somewhere";
  EXPECT_EQ(TextOf(options.Control(lblRunEntry)), L"");
  EXPECT_NE(ReadBytes(settings).find("TipBox=0\r\n"), std::string::npos);
  EXPECT_NE(RunEntry().find(L"quellix.exe\" -S"), std::wstring::npos);
}

constexpr wchar_t kChosen[] = L"C:\\quellix-tests\\br\u00F6wse";
constexpr wchar_t kOwn[] = L"C:\\quellix-tests\\own";  // no backups are kept where cleaned
const std::tuple<const char*, OptionsPage, int, int, std::wstring> kBrowsed[] = {
    {"backups", OptionsPage::kDeletion, cmdBrowseBackup, txtBackup, kChosen},
    {"ignored folders", OptionsPage::kIgnoredFolders, cmdBrowse, txtEntry,
     std::wstring(kChosen) + L"\\"},
    {"own files", OptionsPage::kUserFiles, cmdBrowse, txtEntry,
     std::wstring(kChosen) + L"\\chosen.txt"},
    {"own folders", OptionsPage::kUserFolders, cmdBrowse, txtEntry, std::wstring(kOwn) + L"\\"}};

TEST_F(FrmOptionsTest, WhatIsChosenInADialogArrivesInItsField) {
  const fs::path chosen = kChosen, own = kOwn;
  WriteBytes(chosen / "chosen.txt", "1");
  fs::create_directories(own);
  const QuellixWindow program;
  const OptionsWindow options(program);
  for (const auto& [name, page, button, field, want] : kBrowsed) {
    SCOPED_TRACE(name);
    options.GoTo(page);
    const bool is_file = page == OptionsPage::kUserFiles;
    const fs::path folder = page == OptionsPage::kUserFolders ? own : chosen;
    const std::wstring before = TextOf(options.Control(field));
    for (const int answer : {IDCANCEL, IDOK}) {
      ASSERT_TRUE(Browse(
          options.Control(button),
          [&](HWND dialog) {
            if (is_file) return TypeFileName(dialog, chosen / L"chosen.txt");
            program.SelectFolder(dialog, folder);
          },
          answer));
      EXPECT_EQ(TextOf(options.Control(field)), answer == IDOK ? want : before);
    }
    if (field == txtEntry) options.Type(txtEntry, L"");
  }
  Apply(options);
  options.GoTo(OptionsPage::kBackups);
  EXPECT_EQ(TextOf(options.Control(txtBackupHint)), chosen.wstring() + L"\\");
  Press(options.Control(cmdBackups));
  const HWND backups = program.AwaitWindow(L"Backups");
  EXPECT_FALSE(IsWindowEnabled(options.window()));
  ASSERT_TRUE(CloseAndAwait(backups));
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(options.window()) != FALSE; }));
}

// Of a task Wine's scheduler keeps that it is there, not when: that shows as daily.
TEST_F(FrmOptionsTest, TheScheduleIsKeptByWindowsAndTakenAwayThere) {
  const QuellixWindow window;
  for (const int choice : {optWeekly, optAtLogOn, optNever}) {
    SCOPED_TRACE(choice);
    {
      const OptionsWindow options(window);
      options.GoTo(OptionsPage::kSchedule);
      EXPECT_EQ(TextOf(options.Control(lblScheduleProblem)), L"");
      options.Click(choice);
      EXPECT_EQ(options.IsEnabled(cboWeekday), choice == optWeekly);
      EXPECT_EQ(options.IsEnabled(dtpTime), choice == optWeekly);
      ASSERT_TRUE(options.PressAndClose(IDOK));
    }
    const OptionsWindow again(window);
    again.GoTo(OptionsPage::kSchedule);
    EXPECT_EQ(again.IsChecked(optNever), choice == optNever);
    ASSERT_TRUE(again.PressAndClose(IDCANCEL));
  }
}

}  // namespace
}  // namespace quellix::test
