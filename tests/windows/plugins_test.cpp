#include <gtest/gtest.h>

#include "quellix_window.h"
// After windows.h, whose types it uses.
#include <commctrl.h>
#include <dlgs.h>
#include <shlobj.h>

#include "ui/resource.h"

namespace quellix::test {
namespace {

const std::filesystem::path kFolder = L"C:\\quellix-tests\\plugins";
constexpr wchar_t kKey[] = L"Software\\Quellix Window Test";

std::filesystem::path Recipe(const char* name) { return ProgramFolder() / "Plugins" / name; }
std::filesystem::path List() { return ProgramFolder() / "plg.txt"; }

// Written with "|" for the separator.
std::string Text(std::string text) {
  std::replace(text.begin(), text.end(), '|', '\x01');
  return text;
}

class PluginWindowsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    CleanUp();
    WriteBytes(List(), "");
    WriteBytes(kFolder / "in" / "a.log", std::string(2048, 'a'));
    WriteBytes(kFolder / "in" / "sub" / "b.log", "");
    WriteBytes(kFolder / "in" / "kept.txt", "");
    WriteBytes(kFolder / "x.ini", "[Main]\r\na=1\r\n[Recent]\r\nb=2\r\n");
    for (const wchar_t* name : {L"File1", L"File2", L"File3"}) {
      RegSetKeyValueW(HKEY_CURRENT_USER, kKey, name, REG_SZ, L"x", 4);
    }
  }
  void TearDown() override { CleanUp(); }

  static void CleanUp() {
    std::filesystem::remove_all(kFolder);
    std::filesystem::remove(List());
    for (const char* name : {"qx one.cdp", "qx two.cdp"}) std::filesystem::remove(Recipe(name));
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }
  static bool HasValue(const wchar_t* name) {
    return RegGetValueW(HKEY_CURRENT_USER, kKey, name, RRF_RT_ANY, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS;
  }
  static HWND OpenManager(const QuellixWindow& window) {
    window.Choose(mnuManagePlugin);
    return window.AwaitWindow(L"Plugins Manager");
  }
  static void Type(HWND window, int id, const std::wstring& text) {
    SendMessageW(GetDlgItem(window, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  static void Click(HWND window, int id) { SendMessageW(AwaitControl(window, id), BM_CLICK, 0, 0); }
  static int Rows(HWND window, int list) {
    return static_cast<int>(SendDlgItemMessageW(window, list, LVM_GETITEMCOUNT, 0, 0));
  }
  static bool AwaitRows(HWND window, int list, int count) {
    return Await([&] { return Rows(window, list) == count; });
  }
  static bool AwaitText(HWND window, int id, std::wstring_view text) {
    return Await([&] { return TextOf(GetDlgItem(window, id)) == text; });
  }
  // A page is chosen by the arrow keys of the tab, from the first one on.
  static void ChoosePage(const QuellixWindow& window, HWND editor, int list) {
    const HWND tab = GetDlgItem(editor, sstPlugin);
    window.PressKey(tab, VK_RIGHT);
    EXPECT_TRUE(Await([&] { return IsWindowVisible(GetDlgItem(editor, list)) != FALSE; }));
  }
  // Answers a message that holds a text.
  static void Answer(const QuellixWindow& window, std::wstring_view text, int button) {
    const HWND message = window.AwaitMessage(text);
    ASSERT_TRUE(message) << "no message";
    PressIn(message, button);
    EXPECT_TRUE(Await([&] { return !IsWindow(message); }));
  }
  static void SaveAs(const QuellixWindow& window, HWND editor, const wchar_t* name) {
    PressIn(editor, cmdSave);
    const HWND question = window.AwaitMessage(L"Please enter filename for the plugin");
    ASSERT_TRUE(question);
    Type(question, txtAnswer, name);
    PressIn(question, IDOK);
  }
};

TEST_F(PluginWindowsTest, ARecipeIsWrittenTriedSavedAndProcessed) {
  const QuellixWindow window;
  const HWND manager = OpenManager(window);
  ASSERT_TRUE(manager);
  EXPECT_FALSE(IsWindowEnabled(window.main()));
  PressIn(manager, mnuCreate);
  const HWND editor = window.AwaitWindow(L"Plugin: NoName");
  ASSERT_TRUE(editor);
  Type(editor, txtDescription, L"Meine Gr\u00F6\u00DFen");
  EXPECT_EQ(TextOf(GetDlgItem(editor, txtFileExt)), L"*.*");
  PressIn(editor, cmdFilesAdd);
  Answer(window, L"You must provide a path", IDOK);
  Type(editor, txtFilePath, L"C:\\");
  PressIn(editor, cmdFilesAdd);
  Answer(window, L"C:\\*.* is not cleaned", IDOK);
  Type(editor, txtFilePath, kFolder / "in");
  Type(editor, txtFileExt, L"*.log");
  Click(editor, chkFileRecurse);
  Click(editor, chkFileDeletesubFolders);
  PressIn(editor, cmdFilesAdd);
  ASSERT_TRUE(AwaitRows(editor, lstvFiles, 1));
  EXPECT_TRUE(AwaitText(editor, txtFilePath, L"") && AwaitText(editor, txtFileExt, L""));
  EXPECT_EQ(SendDlgItemMessageW(editor, chkFileDeletesubFolders, BM_GETCHECK, 0, 0), BST_UNCHECKED);
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvFiles), 0, 2),
            (kFolder / "in" / "*.log").wstring());

  ChoosePage(window, editor, lstvRegistry);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(editor, txtFilePath)));
  Type(editor, txtRegistrySubkey, kKey);
  PressIn(editor, cmdGenerateValues);
  Answer(window, L"Please enter a value", IDOK);
  Type(editor, txtRegistryValue, L"File");
  PressIn(editor, cmdGenerateValues);
  const HWND generator = window.AwaitWindow(L"Generate keys");
  ASSERT_TRUE(generator);
  Type(generator, cmbFrom, L"3");
  Type(generator, cmbTo, L"2");
  PressIn(generator, IDOK);
  Answer(window, L"The To value should be greater than from", IDOK);
  Type(generator, cmbFrom, L"1");
  PressIn(generator, IDOK);
  ASSERT_TRUE(AwaitRows(editor, lstvRegistry, 2));
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvRegistry), 1, 3), L"File2");

  ChoosePage(window, editor, lstvINI);
  PressIn(editor, cmdINIAdd);
  Answer(window, L"File Path is not valid", IDOK);
  Type(editor, txtINIFileName, kFolder / "x.ini");
  Type(editor, cmbINISections, L"Recent");
  Click(editor, chkINIEraseSection);
  PressIn(editor, cmdINIAdd);
  ASSERT_TRUE(AwaitRows(editor, lstvINI, 1));

  PressIn(editor, cmdTry);
  const HWND trial = window.AwaitWindow(L"Try it");
  ASSERT_TRUE(trial);
  EXPECT_TRUE(AwaitRows(trial, lstvTry, 5));
  EXPECT_TRUE(AwaitText(trial, lblStatus,
                        L"Would remove 2 files (2.00 KB) and 3 other things. Nothing was removed."))
      << ::testing::PrintToString(TextOf(GetDlgItem(trial, lblStatus)));
  EXPECT_EQ(window.RowText(GetDlgItem(trial, lstvTry), 0, 0), L"INI section");
  PressIn(trial, IDCANCEL);
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(editor) != FALSE; }));
  EXPECT_TRUE(std::filesystem::exists(kFolder / "in" / "a.log") && HasValue(L"File1"));

  PressIn(editor, IDCANCEL);
  Answer(window, L"Close without saving?", IDNO);
  SaveAs(window, editor, L"qx one");
  EXPECT_EQ(window.AwaitWindow(L"Plugin: qx one.cdp"), editor);
  EXPECT_EQ(ReadBytes(Recipe("qx one.cdp")),
            Text("D|Meine Gr\xC3\xB6\xC3\x9F"
                 "en\r\nF|Yes|No|C:\\quellix-tests\\plugins\\in\\*.log\r\n"
                 "R|No|No|HKEY_CURRENT_USER\\Software\\Quellix Window Test|File1\r\n"
                 "R|No|No|HKEY_CURRENT_USER\\Software\\Quellix Window Test|File2\r\n"
                 "I|x.ini|Recent|Yes||C:\\quellix-tests\\plugins\\\r\n"));
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"1 plug-in(s) listed"));
  PressIn(editor, IDCANCEL);
  ASSERT_TRUE(Await([&] { return !IsWindow(editor); }));

  const HWND list = GetDlgItem(manager, lstvPlugin);
  EXPECT_EQ(window.RowText(list, 0, 0), L"qx one.cdp");
  EXPECT_TRUE(IsRowTicked(list, 0));
  EXPECT_TRUE(IsWindowEnabled(GetDlgItem(manager, mnuProcess))) << "what was saved is selected";
  PressIn(manager, mnuDeselectAll);
  ASSERT_TRUE(Await([&] { return IsWindowEnabled(GetDlgItem(manager, mnuProcess)) == FALSE; }));
  PressIn(manager, mnuSelectAll);
  ASSERT_TRUE(Await([&] { return IsWindowEnabled(GetDlgItem(manager, mnuProcess)) != FALSE; }));
  PressIn(manager, mnuProcess);
  EXPECT_TRUE(
      AwaitText(manager, lblStatus,
                L"Processed selected plugin(s) Total Files Deleted: 2 Space Gained: 2.00 KB"))
      << ::testing::PrintToString(TextOf(GetDlgItem(manager, lblStatus)));
  EXPECT_FALSE(std::filesystem::exists(kFolder / "in" / "a.log"));
  EXPECT_FALSE(std::filesystem::exists(kFolder / "in" / "sub" / "b.log"));
  EXPECT_TRUE(std::filesystem::exists(kFolder / "in" / "kept.txt"));
  EXPECT_TRUE(std::filesystem::exists(kFolder / "in" / "sub"));
  EXPECT_FALSE(HasValue(L"File1") || HasValue(L"File2"));
  EXPECT_TRUE(HasValue(L"File3"));
  EXPECT_EQ(ReadBytes(kFolder / "x.ini"), "[Main]\r\na=1\r\n");

  PressIn(manager, IDCANCEL);
  ASSERT_TRUE(Await([&] { return IsWindowEnabled(window.main()) != FALSE; }));
  EXPECT_EQ(ReadBytes(List()), Text("1|qx one.cdp|Meine Gr\xC3\xB6\xC3\x9F"
                                    "en\r\n"));
  EXPECT_TRUE(window.Close());
}

TEST_F(PluginWindowsTest, DialogsAndThePickerFillTheEditor) {
  const QuellixWindow window;
  const HWND manager = OpenManager(window);
  ASSERT_TRUE(manager);
  PressIn(manager, mnuCreate);
  const HWND editor = window.AwaitWindow(L"Plugin: NoName");
  ASSERT_TRUE(editor);
  // The folder dialog begins with the user's desktop.
  wchar_t desktop[MAX_PATH];
  ASSERT_TRUE(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, 0, desktop)));
  Type(editor, txtFilePath, L"typed");
  for (const int button : {IDCANCEL, IDOK}) {
    PressIn(editor, cmdFileBrowse);
    const HWND browse = window.AwaitMessage(L"The folder whose files go:");
    ASSERT_TRUE(browse);
    PressIn(browse, button);
    ASSERT_TRUE(Await([&] { return !IsWindow(browse); }));
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
    ASSERT_GE(place, 0) << ::testing::PrintToString(row);
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
  EXPECT_EQ(window.RowText(GetDlgItem(editor, lstvFiles), 0, 2),
            (kFolder / "in" / "a.log").wstring());

  // The keyboard turns the pages and leads from the tab into the page.
  PressKeys(editor, {VK_CONTROL, VK_TAB});
  EXPECT_TRUE(Await([&] { return IsWindowVisible(GetDlgItem(editor, lstvRegistry)) != FALSE; }));
  EXPECT_TRUE(AwaitFocus(editor, sstPlugin)) << "not in a field that is hidden";
  PressKeys(editor, {VK_TAB});
  EXPECT_TRUE(AwaitFocus(editor, lstvRegistry));
  PressKeys(editor, {VK_CONTROL, VK_TAB});
  EXPECT_TRUE(Await([&] { return IsWindowVisible(GetDlgItem(editor, lstvINI)) != FALSE; }));
  PressIn(editor, cmdINIBrowse);
  const HWND open = window.AwaitWindow(L"Open");
  ASSERT_TRUE(open);
  const HWND name = GetDlgItem(open, cmb13);
  Type(open, name ? cmb13 : edt1, kFolder / "x.ini");
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

TEST_F(PluginWindowsTest, TicksDecideWhatTheMenuAndARunProcess) {
  WriteBytes(Recipe("qx one.cdp"), Text("F|No|No|C:\\quellix-tests\\plugins\\in\\*.log\r\n"));
  WriteBytes(Recipe("qx two.cdp"), Text("F|No|No|C:\\quellix-tests\\plugins\\in\\*.txt\r\n"));
  WriteBytes(List(), Text("0|qx one.cdp|first\r\n1|qx two.cdp|second\r\n1|gone.cdp|\r\n"));
  const QuellixWindow window;
  HWND manager = OpenManager(window);
  ASSERT_TRUE(manager);
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"2 plugin(s) listed"));
  const HWND list = GetDlgItem(manager, lstvPlugin);
  // By the keyboard: the first row is selected, and the space bar turns its tick.
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(Await([&] { return IsRowTicked(list, 0); }));
  window.PressKey(list, VK_DOWN);
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(Await([&] { return !IsRowTicked(list, 1); }));
  PressIn(manager, IDCANCEL);
  ASSERT_TRUE(Await([&] { return IsWindowEnabled(window.main()) != FALSE; }));
  EXPECT_EQ(ReadBytes(List()), Text("1|qx one.cdp|first\r\n0|qx two.cdp|second\r\n"));

  window.Choose(mnuProcessPlugin);
  Answer(window, L"Files Deleted: 1\r\nSpace Gained: 2.00  KB\r\nBacked Up: 0 file(s)", IDOK);
  EXPECT_FALSE(std::filesystem::exists(kFolder / "in" / "a.log"));
  EXPECT_TRUE(std::filesystem::exists(kFolder / "in" / "kept.txt"));

  // The window is opened again; a row is edited by Enter and deleted by its key.
  manager = OpenManager(window);
  ASSERT_TRUE(manager);
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"2 plugin(s) listed"));
  PressIn(manager, mnuEdit);
  const HWND editor = window.AwaitWindow(L"Plugin: qx one.cdp");
  ASSERT_TRUE(editor);
  EXPECT_EQ(Rows(editor, lstvFiles), 1);
  PressIn(editor, IDCANCEL);
  ASSERT_TRUE(Await([&] { return !IsWindow(editor); }));
  window.PressKey(GetDlgItem(manager, lstvPlugin), VK_DELETE);
  Answer(window, L"Are you sure you want to delete selected Plugin(s)?", IDYES);
  EXPECT_TRUE(AwaitText(manager, lblStatus, L"1 plugin(s) listed"));
  EXPECT_FALSE(std::filesystem::exists(Recipe("qx one.cdp")));
  PressIn(manager, mnuExit);
  ASSERT_TRUE(Await([&] { return IsWindowEnabled(window.main()) != FALSE; }));
  EXPECT_EQ(ReadBytes(List()), Text("0|qx two.cdp|second\r\n"));
  EXPECT_TRUE(window.Close());
}

}  // namespace
}  // namespace quellix::test
