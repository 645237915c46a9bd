
#include <regex>

#include "opener.h"
#include "support/embedded_win32.h"

namespace quellix::test {
namespace {

const fs::path kOpened = L"C:\\quellix-tests\\opened";

struct HelpTest : testing::Test {
  void SetUp() override {
    ResetSandbox();
    WriteBytes(kOpened, "");
  }

  // The anchor at which the manual was opened, with the file before it where that is not the
  // English one; "" when it was not.
  static std::string AwaitTopic() {
    const std::regex address(
        R"(file:///C:/Program%20Files/Quellix/Help/(?:help\.htm#)?([\w.#-]+))");
    std::smatch found;
    std::string opened;
    Await([&] {
      opened = ReadBytes(kOpened);
      return std::regex_search(opened, found, address);
    });
    WriteBytes(kOpened, "");
    return found.empty() ? opened : found[1].str();
  }

  const Opener opener_{L".htm", L"cmd.exe /c echo %1>" + kOpened.wstring()};
};

TEST_F(HelpTest, EachWindowHasItsKeysAndOpensItsOwnPage) {
  const QuellixWindow window;
  const std::string manual = ReadBytes(ProgramFolder() / "Help" / "help.htm");
  window.Choose(mnuContents);
  EXPECT_EQ(AwaitTopic(), "contents");
  PressKeys(window.main(), {VK_F1});
  EXPECT_EQ(AwaitTopic(), "main");
  ExpectKeys(window.main(), {L'f', L'p', L't', L'h'});
  const struct {
    int entry;
    const wchar_t* title;
    const char* topic;
    size_t letters;
  } kRows[] = {
      {mnuBackups, L"Backups", "backups", 12},
      {mnuUsers, L"Other users", "users", 0},
      {mnuIECache, L"Temporary Internet Files (Cache)", "cache", 0},
      {mnuAbout, L"About Quellix", "about", 0},
      {mnuOptions, L"Options", "options", 0},
      {mnuManagePlugin, L"Plugins Manager", "plugins", 0},
      {mnuOrphanedDLL, L"Orphaned Shared DLLs", "shared-dlls", 6},
      {mnuOrphanedFilePath, L"Orphaned File/Path Reference", "file-references", 9},
      {mnuOrphanedApplicationPath, L"Orphaned application path references", "app-paths", 7},
      {mnuOrphanedHelpFile, L"Orphaned help file references", "help-files", 7},
      {mnuOrphanedActivex, L"Orphaned ActiveX control references", "components", 5},
      {mnuStartupPrograms, L"Start-up programs", "startup", 7},
      {mnuInstalledPrograms, L"Installed programs", "uninstall", 6},
      {mnuAssociationTool, L"File associations", "associations", 6},
      {mnuWipeFree, L"Wipe free space", "wipe-free", 5},
      {mnuFavorites, L"Favorites", "favorites", 0},
      {mnuUpdates, L"New versions", "updates", 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.topic);
    window.Choose(row.entry);
    const HWND opened = window.AwaitWindow(row.title);
    EXPECT_FALSE(IsWindowEnabled(window.main()));
    EXPECT_TRUE(!GetDlgItem(opened, cmdStop) || Await([&] {
      return Shown(opened, lblStatus) != L"" && !IsEnabled(opened, cmdStop);
    })) << "its scan goes on";
    const size_t letters = ExpectKeys(opened);
    EXPECT_EQ(letters, row.letters == 0 ? letters : row.letters);
    PressKeys(opened, {VK_F1});
    EXPECT_EQ(AwaitTopic(), row.topic);
    EXPECT_NE(manual.find("id=\"" + std::string(row.topic) + "\""), std::string::npos);
    ASSERT_TRUE(CloseAndAwait(opened));
  }
}

TEST_F(HelpTest, TheDialogsOfAToolOpenItsPage) {
  const struct {
    int entry;
    const wchar_t *title, *key, *name, *dialog;
    const char* topic;
  } kRows[] = {{mnuOrphanedApplicationPath, L"Orphaned application path references",
                L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\qx.exe", nullptr,
                L"Edit application path", "app-paths"},
               {mnuOrphanedHelpFile, L"Orphaned help file references",
                L"Software\\Microsoft\\Windows\\Help", L"qx.hlp", L"Edit help file", "help-files"}};
  const QuellixWindow window;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.topic);
    SetRegistryText(HKEY_LOCAL_MACHINE, row.key, row.name, L"C:\\qx none");
    window.Choose(row.entry);
    const HWND tool = window.AwaitWindow(row.title);
    ASSERT_TRUE(AwaitPart(tool, lblStatus, L"orphaned"));
    for (const WPARAM key : {VK_END, VK_HOME, VK_RETURN})
      window.PressKey(GetDlgItem(tool, lstvInvalid), key);
    const HWND dialog = window.AwaitWindow(row.dialog);
    PressKeys(dialog, {VK_F1});
    EXPECT_EQ(AwaitTopic(), row.topic);
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    ASSERT_TRUE(CloseAndAwait(tool));
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, row.key, row.name);
  }
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, kRows[0].key);
}

TEST_F(HelpTest, TheManualIsInTheLanguageOfTheWindowsWhereItWasTranslated) {
  const fs::path trial = ProgramFolder() / "trial.mo",
                 manual = ProgramFolder() / "Help" / "help.xx.htm";
  Unpack(L"xx", trial);
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nLanguage=trial.mo\r\n");
  WriteBytes(manual, "<p id=\"contents\">");
  {
    const QuellixWindow window;
    window.Choose(mnuContents);
    EXPECT_EQ(AwaitTopic(), "help.xx.htm#contents");
    fs::remove(manual);
    PressKeys(window.main(), {VK_F1});
    EXPECT_EQ(AwaitTopic(), "main");
  }
  fs::remove(trial);
  ResetSandbox();
}

TEST_F(HelpTest, AMissingManualIsToldAndAboutTellsVersionAndLicences) {
  const fs::path manual = ProgramFolder() / "Help" / "help.htm";
  const fs::path aside = ProgramFolder() / "Help" / "help.aside";
  fs::rename(manual, aside);
  const QuellixWindow window;
  window.Choose(mnuContents);
  EXPECT_TRUE(window.AwaitMessage(L"The manual is missing: C:\\Program Files\\Quellix\\Help"));
  fs::rename(aside, manual);
  EXPECT_EQ(ReadBytes(kOpened), "");
  EXPECT_TRUE(window.Answer(L"The manual is missing", IDOK));
  window.Choose(mnuAbout);
  const HWND about = window.AwaitWindow(L"About Quellix");
  EXPECT_TRUE(Shown(about, lblVersion).starts_with(L"Version "));
  const std::wstring licences = Shown(about, txtLicences);
  for (const wchar_t* part : {L"zlib", L"minizip", L"winpthreads", L"CLI11", L"MIT License"})
    EXPECT_NE(licences.find(part), std::wstring::npos) << testing::PrintToString(part);
}

}  // namespace
}  // namespace quellix::test
