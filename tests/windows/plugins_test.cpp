#include <gtest/gtest.h>

#include "quellix_window.h"
// After windows.h, whose types it uses.
#include <shlobj.h>

#include "ui/resource.h"

namespace quellix::test {
namespace {

const fs::path kFolder = L"C:\\quellix-tests\\plugins";
constexpr wchar_t kKey[] = L"Software\\Quellix Window Test";

fs::path Recipe(const char* name) { return ProgramFolder() / "Plugins" / name; }
fs::path List() { return ProgramFolder() / "plg.txt"; }

struct PluginWindowsTest : SandboxTest {
  PluginWindowsTest() {
    WriteBytes(List(), "");
    WriteBytes(kFolder / "in" / "a.log", std::string(2048, 'a'));
    WriteBytes(kFolder / "in" / "sub" / "b.log", "");
    WriteBytes(kFolder / "in" / "kept.txt", "");
    WriteBytes(kFolder / "x.ini", "[Main]\r\na=1\r\n[Recent]\r\nb=2\r\n");
    for (const wchar_t* name : {L"File1", L"File2", L"File3"})
      SetRegistryText(HKEY_CURRENT_USER, kKey, name, L"x");
  }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

  static bool HasValue(const wchar_t* name) {
    return RegistryText(HKEY_CURRENT_USER, kKey, name) != L"<missing>";
  }
  static HWND OpenManager(const QuellixWindow& window) {
    return window.Open(mnuManagePlugin, L"Plugins Manager");
  }
  static HWND OpenEditor(const QuellixWindow& window, HWND manager) {
    PressIn(manager, mnuCreate);
    return window.AwaitWindow(L"Plugin: NoName");
  }
  static bool AwaitRows(HWND window, int list, int count) {
    return test::AwaitRows(GetDlgItem(window, list), count);
  }
  static bool AwaitVisible(HWND window, int id) {
    return Await([&] { return IsWindowVisible(GetDlgItem(window, id)) != FALSE; });
  }
  // A page is chosen by the arrow keys of the tab, from the first one on.
  static void ChoosePage(const QuellixWindow& window, HWND editor, int list) {
    window.PressKey(GetDlgItem(editor, sstPlugin), VK_RIGHT);
    EXPECT_TRUE(AwaitVisible(editor, list));
  }
  // A button that is refused with a message.
  static void Refused(const QuellixWindow& window, HWND dialog, int button, const wchar_t* text) {
    PressIn(dialog, button);
    EXPECT_TRUE(window.Answer(text, IDOK)) << button;
  }

  void FillFiles(const QuellixWindow& window, HWND editor) const;
  static void FillRegistry(const QuellixWindow& window, HWND editor);
  void FillIni(const QuellixWindow& window, HWND editor) const;
  static void FillFurther(const QuellixWindow& window, HWND editor);
  // By the keyboard: the first row is selected, and the space bar turns its tick.
  static void TurnTicksByKeys(const QuellixWindow& window, HWND manager) {
    const HWND list = GetDlgItem(manager, lstvPlugin);
    for (const WPARAM key : {VK_SPACE, VK_DOWN, VK_SPACE}) window.PressKey(list, key);
    EXPECT_TRUE(Await([&] { return IsRowTicked(list, 0) && !IsRowTicked(list, 1); }));
    PressIn(manager, IDCANCEL);
    ASSERT_TRUE(AwaitGone(manager));
    EXPECT_EQ(ReadBytes(List()), Fields("1|qx one.cdp|first\r\n0|qx two.cdp|second\r\n"));
  }

  // What is selected stands in the fields, and what is put there takes its place.
  static void ChangeTheOnlyFile(const QuellixWindow& window, HWND editor) {
    const HWND list = GetDlgItem(editor, lstvFiles);
    EXPECT_FALSE(IsEnabled(editor, cmdFileChange) || IsEnabled(editor, cmdFileRemove));
    for (const WPARAM key : {VK_END, VK_HOME}) window.PressKey(list, key);
    ASSERT_TRUE(AwaitEnabled(editor, cmdFileChange));
    EXPECT_EQ(Shown(editor, txtFilePath) + L"\\" + Shown(editor, txtFileExt),
              window.RowText(list, 0, 4));
    Type(editor, txtFileExt, L"changed.tmp");
    PressIn(editor, cmdFileChange);
    EXPECT_TRUE(Await([&] { return window.RowText(list, 0, 4).ends_with(L"\\changed.tmp"); }));
    EXPECT_EQ(CountRows(list), 1);
  }

  // By the command, and by the key that deletes a row.
  static void EditAndDeleteTheFirst(const QuellixWindow& window, HWND manager) {
    PressIn(manager, mnuEdit);
    const HWND editor = window.AwaitWindow(L"Plugin: qx one.cdp");
    EXPECT_TRUE(AwaitRows(editor, lstvFiles, 1));
    ChangeTheOnlyFile(window, editor);
    PressIn(editor, IDCANCEL);
    EXPECT_TRUE(window.Answer(L"changes that were not saved", IDYES));
    ASSERT_TRUE(AwaitGone(editor));
    const HWND list = GetDlgItem(manager, lstvPlugin);
    for (const int answer : {IDNO, IDYES}) {
      EXPECT_EQ(SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0), 1) << "declining keeps it";
      window.PressKey(list, VK_DELETE);
      EXPECT_TRUE(window.Answer(L"delete selected Plugin(s)?\r\n\r\nqx one.cdp", answer));
      AwaitInput(list);
    }
    EXPECT_TRUE(AwaitText(manager, lblStatus, L"1 plugin(s) listed"));
    EXPECT_FALSE(fs::exists(Recipe("qx one.cdp")));
  }
};

void PluginWindowsTest::FillFiles(const QuellixWindow& window, HWND editor) const {
  Type(editor, txtFilePath, L"C:\\");
  Refused(window, editor, cmdFilesAdd, L"C:\\*.* is not cleaned");
  Type(editor, txtFilePath, kFolder / "in");
  Type(editor, txtFileExt, L"*.log");
  for (const int box : {chkFileRecurse, chkFileDeletesubFolders}) Click(editor, box);
  PressIn(editor, cmdFilesAdd);
  ASSERT_TRUE(AwaitRows(editor, lstvFiles, 1));
  EXPECT_TRUE(AwaitText(editor, txtFilePath, L"") && AwaitText(editor, txtFileExt, L""));
  EXPECT_EQ(SendDlgItemMessageW(editor, chkFileDeletesubFolders, BM_GETCHECK, 0, 0), BST_UNCHECKED);
}

void PluginWindowsTest::FillRegistry(const QuellixWindow& window, HWND editor) {
  ChoosePage(window, editor, lstvRegistry);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(editor, txtFilePath)));
  Type(editor, txtRegistrySubkey, kKey);
  Type(editor, txtRegistryValue, L"File");
  PressIn(editor, cmdGenerateValues);
  const HWND generator = window.AwaitWindow(L"Generate keys");
  Type(generator, cmbFrom, L"3");
  Type(generator, cmbTo, L"2");
  Refused(window, generator, IDOK, L"The To value should be greater than from");
  Type(generator, cmbFrom, L"1");
  PressIn(generator, IDOK);
  ASSERT_TRUE(AwaitRows(editor, lstvRegistry, 2));
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvRegistry), 1, 4), L"File2");
}

void PluginWindowsTest::FillIni(const QuellixWindow& window, HWND editor) const {
  ChoosePage(window, editor, lstvINI);
  Type(editor, txtINIFileName, kFolder / "x.ini");
  Type(editor, cmbINISections, L"Recent");
  Click(editor, chkINIEraseSection);
  PressIn(editor, cmdINIAdd);
  ASSERT_TRUE(AwaitRows(editor, lstvINI, 1));
}

void PluginWindowsTest::FillFurther(const QuellixWindow& window, HWND editor) {
  ChoosePage(window, editor, lstvFurther);
  const HWND kinds = GetDlgItem(editor, cmbFurtherKind);
  for (int i = 0; i < 4; ++i) window.PressKey(kinds, VK_DOWN);
  EXPECT_TRUE(AwaitText(editor, lblFurtherLast, L"With the &value:"));
  for (int i = 0; i < 2; ++i) window.PressKey(kinds, VK_DOWN);
  EXPECT_TRUE(AwaitText(editor, lblFurtherPlace, L"&Group:"));
  EXPECT_FALSE(IsEnabled(editor, txtFurtherLast));
  for (const wchar_t* group : {L"Ark", L"Bow"}) {
    Type(editor, txtFurtherPlace, group);
    PressIn(editor, cmdFurtherAdd);
    EXPECT_TRUE(AwaitText(editor, txtFurtherPlace, L""));
  }
  for (int i = 0; i < 3; ++i) window.PressKey(kinds, VK_DOWN);
  Type(editor, txtFurtherPlace, L"qx none.exe");
  PressIn(editor, cmdFurtherAdd);
  ASSERT_TRUE(AwaitRows(editor, lstvFurther, 2));
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvFurther), 0, 1), L"Bow");
}

TEST_F(PluginWindowsTest, ARecipeIsWrittenTriedAndSaved) {
  const QuellixWindow window;
  const HWND manager = OpenManager(window), editor = OpenEditor(window, manager);
  Type(editor, txtDescription, L"Meine Gr\u00F6\u00DFen");
  FillFiles(window, editor);
  FillRegistry(window, editor);
  FillIni(window, editor);
  FillFurther(window, editor);
  PressIn(editor, cmdTry);
  const HWND trial = window.AwaitWindow(L"Try it");
  EXPECT_TRUE(AwaitRows(trial, lstvTry, 5));
  EXPECT_TRUE(AwaitText(trial, lblStatus,
                        L"Would remove 2 files (2.00 KB) and 3 other things. Nothing was removed."))
      << testing::PrintToString(Shown(trial, lblStatus));
  PressIn(trial, IDCANCEL);
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(editor) != FALSE; }));
  EXPECT_TRUE(fs::exists(kFolder / "in" / "a.log") && HasValue(L"File1"));

  PressIn(editor, IDCANCEL);
  EXPECT_TRUE(window.Answer(L"Close without saving?", IDNO));
  PressIn(editor, cmdSave);
  const HWND question = window.AwaitMessage(L"Please enter filename for the plugin");
  ASSERT_TRUE(question);
  Type(question, txtAnswer, L"qx one");
  PressIn(question, IDOK);
  EXPECT_EQ(window.AwaitWindow(L"Plugin: qx one.cdp"), editor);
  EXPECT_EQ(
      ReadBytes(Recipe("qx one.cdp")),
      Fields("D|Meine Größen\r\nF|Yes|No|C:\\quellix-tests\\plugins\\in\\*.log\r\n"
             "R|No|No|HKEY_CURRENT_USER\\Software\\Quellix Window Test|File1\r\n"
             "R|No|No|HKEY_CURRENT_USER\\Software\\Quellix Window Test|File2\r\n"
             "I|x.ini|Recent|Yes||C:\\quellix-tests\\plugins\\\r\nG|Bow\r\nP|qx none.exe\r\n"));
  PressIn(editor, IDCANCEL);
  ASSERT_TRUE(AwaitGone(editor));
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"1 plug-in(s) listed"));
  EXPECT_TRUE(IsRowTicked(GetDlgItem(manager, lstvPlugin), 0));
  EXPECT_TRUE(IsEnabled(manager, mnuProcess)) << "what was saved is selected";
}

TEST_F(PluginWindowsTest, DialogsAndThePickerFillTheEditor) {
  const QuellixWindow window;
  const HWND editor = OpenEditor(window, OpenManager(window));
  // The folder dialog begins with the user's desktop.
  wchar_t desktop[MAX_PATH];
  ASSERT_TRUE(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, 0, desktop)));
  Type(editor, txtFilePath, L"typed");
  for (const int button : {IDCANCEL, IDOK}) {
    PressIn(editor, cmdFileBrowse);
    const HWND browse = window.AwaitMessage(L"The folder whose files go:");
    ASSERT_TRUE(browse);
    PressIn(browse, button);
    ASSERT_TRUE(AwaitGone(browse));
    EXPECT_TRUE(AwaitText(editor, txtFilePath, button == IDOK ? desktop : L"typed"));
  }

  // The picker, by its keys: the way to the folder, one file, Enter.
  const HWND folders = GetDlgItem(editor, dirFileAlternate);
  SendMessageW(editor, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(folders), TRUE);
  std::wstring indent;
  for (const wchar_t* name : {L"quellix-tests", L"plugins", L"in"}) {
    const std::wstring row = (indent += L"   ") + name;
    const LRESULT place = SendMessageW(folders, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                       reinterpret_cast<LPARAM>(row.c_str()));
    ASSERT_GE(place, 0) << testing::PrintToString(row);
    SendMessageW(folders, LB_SETCURSEL, static_cast<WPARAM>(place), 0);
    window.PressKey(folders, VK_RETURN);
    EXPECT_TRUE(Await([&] {
      return SendMessageW(folders, LB_GETCURSEL, 0, 0) == static_cast<LRESULT>(indent.size()) / 3;
    }));
  }
  const HWND files = GetDlgItem(editor, flFileAlternate);
  SendMessageW(editor, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(files), TRUE);
  SendMessageW(files, LB_SETSEL, TRUE, 0);
  window.PressKey(files, VK_RETURN);
  ASSERT_TRUE(AwaitRows(editor, lstvFiles, 1));
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvFiles), 0, 4),
            (kFolder / "in" / "a.log").wstring());
}

TEST_F(PluginWindowsTest, TheKeyboardTurnsThePagesAndAnIniFileIsOffered) {
  const QuellixWindow window;
  const HWND editor = OpenEditor(window, OpenManager(window));
  ExpectKeys(editor);
  SendMessageW(editor, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(editor, flFileAlternate)),
               TRUE);
  PressKeys(editor, {VK_CONTROL, VK_TAB});
  EXPECT_TRUE(AwaitVisible(editor, lstvRegistry));
  EXPECT_TRUE(AwaitFocus(editor, sstPlugin)) << "not in a field that is hidden";
  PressKeys(editor, {VK_TAB});
  EXPECT_TRUE(AwaitFocus(editor, lstvRegistry));
  PressKeys(editor, {VK_CONTROL, VK_TAB});
  EXPECT_TRUE(AwaitVisible(editor, lstvINI));
  PressIn(editor, cmdINIBrowse);
  const HWND open = window.AwaitWindow(L"Open");
  TypeFileName(open, kFolder / "x.ini");
  PressIn(open, IDOK);
  EXPECT_TRUE(AwaitText(editor, txtINIFileName, (kFolder / "x.ini").wstring()));
  const HWND sections = GetDlgItem(editor, cmbINISections);
  EXPECT_TRUE(Await([&] { return SendMessageW(sections, CB_GETCOUNT, 0, 0) == 2; }));
  window.PressKey(sections, VK_DOWN);
  window.PressKey(sections, VK_DOWN);
  EXPECT_TRUE(AwaitText(editor, cmbINISections, L"Recent"));
  const HWND values = GetDlgItem(editor, cmbINIValues);
  EXPECT_TRUE(Await([&] { return SendMessageW(values, CB_GETCOUNT, 0, 0) == 1; }));
  window.PressKey(values, VK_DOWN);
  EXPECT_TRUE(AwaitText(editor, cmbINIValues, L"b"));
  PressIn(editor, cmdINIAdd);
  EXPECT_TRUE(AwaitRows(editor, lstvINI, 1));
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvINI), 0, 3), L"b");
}

TEST_F(PluginWindowsTest, TicksAndSelectionDecideWhatIsProcessedEditedAndDeleted) {
  WriteBytes(Recipe("qx one.cdp"), Fields("F|No|No|C:\\quellix-tests\\plugins\\in\\*.log\r\n"));
  WriteBytes(Recipe("qx two.cdp"), Fields("F|No|No|C:\\quellix-tests\\plugins\\in\\*.txt\r\n"));
  WriteBytes(List(), Fields("0|qx one.cdp|first\r\n1|qx two.cdp|second\r\n1|gone.cdp|\r\n"));
  WriteSettings("Ask=1\r\nKeepLogs=5\r\n");
  const QuellixWindow window;
  HWND manager = OpenManager(window);
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"2 plugin(s) listed"));
  TurnTicksByKeys(window, manager);
  window.Choose(mnuProcessPlugin);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (2.00 KB) for good?", kYes));
  EXPECT_TRUE(
      window.Answer(L"Files Deleted: 1\r\nSpace Gained: 2.00  KB\r\nBacked Up: 0 file(s)", IDOK));
  EXPECT_TRUE(!fs::exists(kFolder / "in" / "a.log") && fs::exists(kFolder / "in" / "kept.txt"));

  manager = OpenManager(window);
  EditAndDeleteTheFirst(window, manager);
  PressIn(manager, mnuSelectAll);
  ASSERT_TRUE(AwaitEnabled(manager, mnuProcess));
  PressIn(manager, mnuProcess);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (0 Bytes) for good?", IDCANCEL));
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"Nothing was removed"));
  EXPECT_TRUE(fs::exists(kFolder / "in" / "kept.txt"));
  PressIn(manager, mnuProcess);
  ASSERT_TRUE(window.Answer(L"Delete 1 file (0 Bytes) for good?", kYes));
  EXPECT_TRUE(AwaitText(manager, lblStatus,
                        L"Processed selected plugin(s) Total Files Deleted: 1 Space Gained: none"))
      << testing::PrintToString(Shown(manager, lblStatus));
  EXPECT_FALSE(fs::exists(kFolder / "in" / "kept.txt"));
  PressIn(manager, mnuExit);
  ASSERT_TRUE(AwaitGone(manager));
  EXPECT_EQ(ReadBytes(List()), Fields("0|qx two.cdp|second\r\n"));
  EXPECT_EQ(std::distance(fs::directory_iterator(ProgramFolder() / "Logs"), {}), 2);
}

}  // namespace
}  // namespace quellix::test
