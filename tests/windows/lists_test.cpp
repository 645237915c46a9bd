// What whoever knows other lists expects of one, in every window that has one.
#include <gtest/gtest.h>

#include <algorithm>

#include "options_window.h"
#include "quellix_window.h"
#include "support/cache_entry_win32.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr int kYes = 100;  // of a question before what cannot be undone
constexpr wchar_t kKeys[] = L"Software\\Microsoft\\Windows\\";
constexpr wchar_t kOwn[] = L"Qx lists";
constexpr wchar_t kExtension[] = L"Software\\Classes\\.";
constexpr wchar_t kPrograms[] = L"CurrentVersion\\Uninstall\\";
constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kComponents[] = L"Software\\Microsoft\\Active Setup\\Installed Components\\";
constexpr wchar_t kOfReference[] = L"Delete 1 reference from the registry?";
const fs::path kJunk = L"C:\\quellix-tests\\lists";

std::string Fields(std::string text) {
  std::ranges::replace(text, '|', '\x01');
  return text;
}

std::wstring ClipboardText() {
  std::wstring text;
  if (!OpenClipboard(nullptr)) return L"<in use>";
  if (const HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
    text = static_cast<const wchar_t*>(GlobalLock(data));
    GlobalUnlock(data);
  }
  CloseClipboard();
  return text;
}

HWND Choose(const QuellixWindow& window, int entry, const wchar_t* title) {
  window.Choose(entry);
  return window.AwaitWindow(title);
}

// The whole registry takes its time.
HWND AwaitScan(HWND tool) {
  for (int patience = 0; patience < 10; ++patience) {
    if (Await([&] { return Shown(tool, lblStatus) != L"" && IsEnabled(tool, cmdDelete); })) break;
  }
  return tool;
}

constexpr std::pair<int, const wchar_t*> kTools[] = {
    {mnuOrphanedDLL, L"Orphaned Shared DLLs"},
    {mnuOrphanedFilePath, L"Orphaned File/Path Reference"},
    {mnuOrphanedApplicationPath, L"Orphaned application path references"},
    {mnuOrphanedHelpFile, L"Orphaned help file references"},
    {mnuOrphanedActivex, L"Orphaned ActiveX control references"},
    {mnuStartupPrograms, L"Start-up programs"},
    {mnuInstalledPrograms, L"Installed programs"},
    {mnuAssociationTool, L"File associations"}};

template <int kEntry>
HWND Tool(const QuellixWindow& window) {
  const auto tool = std::ranges::find(kTools, kEntry, &std::pair<int, const wchar_t*>::first);
  return AwaitScan(Choose(window, kEntry, tool->second));
}

HWND Thorough(const QuellixWindow& window) {
  const HWND tool = Tool<mnuOrphanedFilePath>(window);
  Click(tool, chkThorough);
  EXPECT_TRUE(Await([&] { return !IsEnabled(tool, cmdDelete); }));
  return AwaitScan(tool);
}

HWND Search(const QuellixWindow& window) {
  window.Click(chkUnNecessaryFiles);
  window.Press(cmdClean);
  const HWND results = window.AwaitWindow(L"Search results");
  EXPECT_TRUE(Await([&] { return !IsEnabled(results, cmdAbort); }));
  return results;
}

HWND Clean(const QuellixWindow& window) {
  window.Click(chkTemp);
  window.Press(cmdClean);
  return window.AwaitWindow(L"Cleaning log");
}

HWND Preview(const QuellixWindow& window) {
  window.Click(chkTemp);
  window.Press(cmdPreview);
  return window.AwaitWindow(L"Preview");
}

HWND Backups(const QuellixWindow& window) {
  EXPECT_TRUE(CloseAndAwait(Clean(window)));
  return Choose(window, mnuBackups, L"Backups");
}

HWND Plugins(const QuellixWindow& window) {
  return Choose(window, mnuManagePlugin, L"Plugins Manager");
}

HWND Records(const QuellixWindow& window) {
  const HWND manager = Plugins(window);
  PressIn(manager, mnuEdit);
  const HWND editor = window.AwaitWindow(L"Plugin: qx1.cdp");
  SetFocus(editor);
  return editor;
}

HWND KeepList(const QuellixWindow& window) {
  const OptionsWindow options(window);
  options.GoTo(OptionsPage::kKeep);
  return GetParent(options.Control(lstvList));
}

struct ListCase {
  const char* name;
  HWND (*open)(const QuellixWindow& window);
  int list;
  const wchar_t* path;                // what "Copy path" copies of the first row; null for none
  const wchar_t* question = nullptr;  // before Del deletes; null where it deletes nothing
  int yes = kYes, no = IDCANCEL;      // the answers to it
  bool single = false;                // one row at most is selected
};

const ListCase kRows[] = {
    {"Results", Search, lstvDeletion, L"C:\\quellix-tests\\lists\\", L"Remove 1 file (1 Byte"},
    {"Preview", Preview, lstvRun, L"C:\\"},
    {"Log", Clean, lstvRun, L"C:\\"},
    {"LogCategories", Clean, lstvCategories, nullptr},
    {"Archives", Backups, lstvArchives, L"\\Backup\\", L"Delete the archive", IDYES, IDNO, true},
    {"Contents", Backups, lstvEntries, L"C:\\"},
    {"Plugins", Plugins, lstvPlugin, L"\\Plugins\\qx", L"Are you sure you want to delete", IDYES,
     IDNO},
    {"Records", Records, lstvFiles, L"C:\\quellix-tests\\lists\\"},
    {"SharedDlls", Tool<mnuOrphanedDLL>, lstvOrphanedDLL, L"C:\\qx none\\qx", kOfReference},
    {"FileReferences", Thorough, lstvInvalid, L"HKEY_", kOfReference},
    {"AppPaths", Tool<mnuOrphanedApplicationPath>, lstvInvalid, L"C:\\qx none\\qx", kOfReference},
    {"HelpFiles", Tool<mnuOrphanedHelpFile>, lstvInvalid, L"C:\\qx none\\qx", kOfReference},
    {"Components", Tool<mnuOrphanedActivex>, lstvInvalid, L"HKEY_LOCAL_MACHINE\\", kOfReference},
    {"Startup", Tool<mnuStartupPrograms>, lstvInvalid, L"C:\\", L"Delete 1 start-up entry?"},
    {"Uninstall", Tool<mnuInstalledPrograms>, lstvInvalid, L"C:\\", L"Delete 1 uninstall entry?"},
    {"Associations", Tool<mnuAssociationTool>, lstvInvalid, L"HKEY_", kOfReference},
    {"Cache",
     [](const QuellixWindow& window) {
       return Choose(window, mnuIECache, L"Temporary Internet Files (Cache)");
     },
     lstvCache, nullptr, L"Delete 1 entry of the Internet cache for good?"},
    {"KeepList", KeepList, lstvList, L"C:\\"}};

struct EveryListTest : testing::TestWithParam<ListCase> {
  void SetUp() override {
    ResetSandbox();
    CleanUp();
    WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nDelMethod=B\r\n");
    WriteBytes(ProgramFolder() / "UNFI.txt", Fields("1|*.qxj|Ours\r\n"));
    WriteBytes(ProgramFolder() / "keep.txt", "C:\\Kept\r\na*.doc\r\n");
    WriteBytes(ProgramFolder() / "plg.txt", Fields("0|qx1.cdp|1\r\n0|qx2.cdp|2\r\n"));
    for (const char* name : {"qx1.cdp", "qx2.cdp"}) {
      WriteBytes(ProgramFolder() / "Plugins" / name,
                 Fields("F|No|No|C:\\quellix-tests\\lists\\a.tmp\r\n"
                        "F|Yes|No|C:\\quellix-tests\\lists\\b.tmp\r\n"));
    }
    for (const char* name : {"1.qxj", "2.qxj", "3.qxj"}) WriteBytes(kJunk / name, "1");
    for (const char* name : {"a.tmp", "b.tmp", "c.doc"}) WriteBytes(TempFolder() / name, "12345");
    SeedRegistry();
    for (const wchar_t* source : {L"http://a.example/", L"http://b.example/"})
      MakeCacheEntry({.source = source});
  }
  void TearDown() override { CleanUp(); }

  static void SeedRegistry() {
    const std::wstring windows(kKeys);
    for (const wchar_t* name : {L"qx1", L"qx2", L"qx3"}) {
      const std::wstring file = std::wstring(L"C:\\qx none\\") + name;
      SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"CurrentVersion\\SharedDLLs",
                      (file + L".dll").c_str(), L"1");
      SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"CurrentVersion\\App Paths\\" + name + L".exe",
                      nullptr, file);
      SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"Help", (name + std::wstring(L".hlp")).c_str(),
                      L"C:\\qx none");
      SetRegistryText(HKEY_CURRENT_USER, kOwn, name, file);
      SetRegistryText(HKEY_CURRENT_USER, kRun, name, file);
      SetRegistryText(HKEY_CURRENT_USER, std::wstring(kExtension) + name, nullptr, L"Qx none");
      SetRegistryText(HKEY_CURRENT_USER, windows + kPrograms + name, L"DisplayName", name);
      SetRegistryText(HKEY_CURRENT_USER, windows + kPrograms + name, L"UninstallString", file);
      SetRegistryText(HKEY_LOCAL_MACHINE, std::wstring(kComponents) + name, nullptr, name);
    }
  }
  static void CleanUp() {
    const std::wstring windows(kKeys);
    for (const wchar_t* key :
         {L"CurrentVersion\\SharedDLLs", L"CurrentVersion\\App Paths", L"Help"})
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, (windows + key).c_str());
    RegDeleteTreeW(HKEY_CURRENT_USER, kOwn);
    for (const wchar_t* name : {L"qx1", L"qx2", L"qx3"}) {
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(kComponents) + name).c_str());
      RegDeleteKeyValueW(HKEY_CURRENT_USER, kRun, name);
      RegDeleteTreeW(HKEY_CURRENT_USER, (windows + kPrograms + name).c_str());
      RegDeleteTreeW(HKEY_CURRENT_USER, (std::wstring(kExtension) + name).c_str());
    }
    for (const char* name : {"UNFI.txt", "keep.txt", "plg.txt"}) fs::remove(ProgramFolder() / name);
    for (const char* name : {"qx1.cdp", "qx2.cdp"}) fs::remove(ProgramFolder() / "Plugins" / name);
    fs::remove_all(kJunk);
    fs::remove_all(BackupFolder());
    for (const wchar_t* source : {L"http://a.example/", L"http://b.example/"})
      DeleteUrlCacheEntryW(source);
  }
};

// One list of a window, with the keyboard on it.
struct OpenList {
  const QuellixWindow& window;
  HWND list, top;

  OpenList(const QuellixWindow& program, HWND list_window)
      : window(program), list(list_window), top(GetAncestor(list_window, GA_ROOT)) {
    AwaitInput(list);
    Focus();
  }
  void Focus() const {
    const RECT place = ItemPlace();
    SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(place.right, place.bottom));
    SendMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(place.right, place.bottom));
  }
  // Behind all rows: a click there takes the keyboard and ticks nothing.
  RECT ItemPlace() const {
    RECT client{};
    GetClientRect(list, &client);
    return {0, 0, client.right - 3, client.bottom - 3};
  }
  int Rows() const { return CountRows(list); }
  std::wstring First() const { return window.RowText(list, 0, 0); }
  std::wstring Last() const { return window.RowText(list, Rows() - 1, 0); }
  int Focused() const {
    return static_cast<int>(
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
  }
  int Selected() const { return static_cast<int>(SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0)); }
  void SelectFirst() const {
    for (const WPARAM key : {VK_END, VK_HOME}) window.PressKey(list, key);
  }
  void ClickHeading() const {
    const HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
      SendMessageW(header, message, MK_LBUTTON, MAKELPARAM(20, 8));
  }
  // The selected rows as they are to be copied.
  std::wstring Text(int rows) const {
    const HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const int columns = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    std::wstring text;
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < columns; ++column)
        text += (column == 0 ? L"" : L"\t") + window.RowText(list, row, column);
      text += L"\r\n";
    }
    return text;
  }
};

void ExpectSorting(const OpenList& list) {
  list.ClickHeading();
  const int arrow = list.window.ArrowOf(list.list, 0);
  EXPECT_NE(arrow, 0) << "no arrow";
  const std::wstring first = list.First(), last = list.Last();
  list.ClickHeading();
  EXPECT_EQ(list.window.ArrowOf(list.list, 0), -arrow);
  EXPECT_EQ(list.First(), last);
  EXPECT_EQ(list.Last(), first);
}

void ExpectTicks(const OpenList& list) {
  list.SelectFirst();
  const int before = BoxOf(list.list, 0);
  if (before == 0) return;
  for (const bool ticked : {before != 2, before == 2}) {
    list.window.PressKey(list.list, VK_SPACE);
    EXPECT_TRUE(Await([&] { return IsRowTicked(list.list, 0) == ticked; })) << ticked;
  }
}

// Up to a letter that Wine's lists do not take.
void ExpectTypeAhead(const OpenList& list) {
  list.SelectFirst();
  const std::wstring last = list.Last(), typed = last.substr(0, last.find_first_of(L": |\""));
  for (const wchar_t letter : typed) PostMessageW(list.list, WM_CHAR, letter, 1);
  EXPECT_TRUE(Await([&] {
    return list.window.RowText(list.list, list.Focused(), 0).starts_with(typed);
  })) << testing::PrintToString(typed);
}

void ExpectSelectionAndCopy(const OpenList& list, bool single) {
  PressKeys(list.top, {VK_CONTROL, 'A'});
  EXPECT_TRUE(Await([&] { return single || list.Selected() == list.Rows(); }));
  if (list.Rows() > 60) list.SelectFirst();
  PressKeys(list.top, {VK_CONTROL, 'C'});
  const std::wstring text = list.Text(list.Rows() > 60 ? 1 : list.Rows());
  EXPECT_TRUE(Await([&] { return ClipboardText() == text; })) << testing::PrintToString(text);
}

void ExpectMenu(const OpenList& list, const wchar_t* path) {
  list.SelectFirst();
  const HWND owner = GetParent(list.list);
  PostMessageW(owner, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list.list), -1);
  ASSERT_TRUE(list.window.AwaitMenu());
  PostMessageW(list.window.main(), WM_CHAR, path ? L'p' : VK_ESCAPE, 1);
  if (!path) PostMessageW(list.window.main(), WM_KEYDOWN, VK_ESCAPE, 1);
  EXPECT_TRUE(Await([&] { return !list.window.HasMenu(); }));
  EXPECT_TRUE(!path || Await([&] {
    return ClipboardText().find(path) != std::wstring::npos &&
           ClipboardText().find(L'\t') == std::wstring::npos;
  })) << testing::PrintToString(ClipboardText());
}

// Of the rows the selected one alone goes, and only after the question.
void ExpectDeletion(const OpenList& list, const ListCase& row) {
  const int rows = list.Rows();
  const std::wstring first = list.Text(1);
  for (const int answer : {row.no, row.yes}) {
    EXPECT_EQ(list.Rows(), rows);
    list.SelectFirst();
    list.window.PressKey(list.list, VK_DELETE);
    ASSERT_TRUE(list.window.Answer(row.question, answer));
    AwaitInput(list.list);
  }
  EXPECT_TRUE(Await([&] { return list.Rows() == rows - 1; }));
  EXPECT_NE(list.Text(1), first);
}

TEST_P(EveryListTest, BehavesAsAListDoes) {
  const ListCase& row = GetParam();
  const QuellixWindow window;
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  ASSERT_TRUE(Await([&] { return list.Rows() > (row.single ? 0 : 1); }));
  ExpectSorting(list);
  ExpectTicks(list);
  ExpectTypeAhead(list);
  ExpectSelectionAndCopy(list, row.single);
  ExpectMenu(list, row.path);
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nAsk=1\r\n");
  if (row.question) ExpectDeletion(list, row);
}

RECT PlaceOf(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  return place;
}

TEST_P(EveryListTest, IsFoundAgainAsItWasLeft) {
  const ListCase& row = GetParam();
  const auto width_of = [](HWND list) { return SendMessageW(list, LVM_GETCOLUMNWIDTH, 0, 0); };
  int arrow = 0;
  RECT left{};
  LRESULT width = 0;
  {
    const QuellixWindow window;
    const OpenList list(window, GetDlgItem(row.open(window), row.list));
    list.ClickHeading();
    arrow = window.ArrowOf(list.list, 0);
    SendMessageW(list.list, LVM_SETCOLUMNWIDTH, 0, width_of(list.list) + 21);
    const RECT place = PlaceOf(list.top);
    SetWindowPos(list.top, nullptr, 31, 17, place.right - place.left + 40,
                 place.bottom - place.top + 30, SWP_NOZORDER);
    left = PlaceOf(list.top);
    width = width_of(list.list);
    ASSERT_TRUE(CloseAndAwait(list.top));
  }
  const QuellixWindow window;
  for (const char* name : {"a.tmp", "b.tmp"}) WriteBytes(TempFolder() / name, "12345");
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  const RECT place = PlaceOf(list.top);
  EXPECT_TRUE(EqualRect(&place, &left)) << place.left << ' ' << place.top;
  if (row.list == lstvList) return;  // a page has its lists from the window's size
  EXPECT_EQ(width_of(list.list), width);
  EXPECT_TRUE(Await([&] { return window.ArrowOf(list.list, 0) == arrow; }));
}

struct WindowPlaceTest : testing::Test {
  void SetUp() override { ResetSandbox(); }
  void TearDown() override { ResetSandbox(); }
};

TEST_F(WindowPlaceTest, APlaceBeyondTheScreensIsMendedAndNothingIsWrittenOfWhatWasLeftAlone) {
  const fs::path settings = ProgramFolder() / "Settings.ini";
  for (const char* beyond : {"5000,4000", "-5000,-4000"}) {
    SCOPED_TRACE(beyond);
    const std::string text = std::string("[Windows]\r\nfrmBackups=") + beyond + ",900,600,0\r\n";
    WriteBytes(settings, text);
    const QuellixWindow window;
    const HWND backups = Choose(window, mnuBackups, L"Backups");
    const RECT place = PlaceOf(backups);
    EXPECT_TRUE(place.left >= 0 && place.top >= 0);
    EXPECT_LE(place.right, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_LE(place.bottom, GetSystemMetrics(SM_CYSCREEN));
    EXPECT_EQ(place.right - place.left, 900);
    ASSERT_TRUE(CloseAndAwait(backups));
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(ReadBytes(settings), text);
  }
}

INSTANTIATE_TEST_SUITE_P(Lists, EveryListTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace quellix::test
