
#include <regex>

#include "all_windows.h"
#include "opener.h"
#include "support/embedded_win32.h"

namespace quellix::test {
namespace {

const fs::path kOpened = L"C:\\quellix-tests\\opened";
constexpr wchar_t kAppPath[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\qx.exe",
                  kHelpFiles[] = L"Software\\Microsoft\\Windows\\Help";

struct HelpTest : SandboxTest {
  HelpTest() { WriteBytes(kOpened, ""); }
  ~HelpTest() override {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, kAppPath);
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kHelpFiles, L"qx.hlp");
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

  // Of the dialog that a tool opens for its first row.
  static void ExpectDialogsTopic(const QuellixWindow& window, HWND tool, const wchar_t* title,
                                 const char* topic) {
    for (const WPARAM key : {VK_END, VK_HOME, VK_RETURN})
      window.PressKey(GetDlgItem(tool, lstvInvalid), key);
    const HWND dialog = window.AwaitWindow(title);
    PressKeys(dialog, {VK_F1});
    EXPECT_EQ(AwaitTopic(), topic);
    ASSERT_TRUE(CloseAndAwait(dialog));
  }

  const Opener opener_{L".htm", L"cmd.exe /c echo %1>" + kOpened.wstring()};
};

// Letters: how many of its controls have one; 0: any.
const struct {
  int entry;
  const wchar_t* title;
  const char* topic;
  size_t letters;
  const wchar_t* dialog = nullptr;  // of a row
} kPages[] = {
    {mnuBackups, L"Backups", "backups", 12},
    {mnuUsers, L"Other users", "users", 0},
    {mnuIECache, L"Temporary Internet Files (Cache)", "cache", 0},
    {mnuAbout, L"About Quellix", "about", 0},
    {mnuOptions, L"Options", "options", 0},
    {mnuManagePlugin, L"Plugins Manager", "plugins", 0},
    {mnuOrphanedDLL, L"Orphaned Shared DLLs", "shared-dlls", 6},
    {mnuOrphanedFilePath, L"Orphaned File/Path Reference", "file-references", 9},
    {mnuOrphanedApplicationPath, L"Orphaned application path references", "app-paths", 7,
     L"Edit application path"},
    {mnuOrphanedHelpFile, L"Orphaned help file references", "help-files", 7, L"Edit help file"},
    {mnuOrphanedActivex, L"Orphaned ActiveX control references", "components", 5},
    {mnuStartupPrograms, L"Start-up programs", "startup", 7},
    {mnuInstalledPrograms, L"Installed programs", "uninstall", 6},
    {mnuAssociationTool, L"File associations", "associations", 6},
    {mnuWipeFree, L"Wipe free space", "wipe-free", 5},
    {mnuFavorites, L"Favorites", "favorites", 0},
    {mnuUpdates, L"New versions", "updates", 0}};

TEST_F(HelpTest, EachWindowHasItsKeysAndOpensItsOwnPage) {
  SetRegistryText(HKEY_LOCAL_MACHINE, kAppPath, nullptr, L"C:\\qx none");
  SetRegistryText(HKEY_LOCAL_MACHINE, kHelpFiles, L"qx.hlp", L"C:\\qx none");
  const QuellixWindow window;
  const std::string manual = ReadBytes(ProgramFolder() / "Help" / "help.htm");
  window.Choose(mnuContents);
  EXPECT_EQ(AwaitTopic(), "contents");
  PressKeys(window.main(), {VK_F1});
  EXPECT_EQ(AwaitTopic(), "main");
  ExpectKeys(window.main(), {L'f', L'p', L't', L'h'});
  for (const auto& row : kPages) {
    SCOPED_TRACE(row.topic);
    const HWND opened = window.Open(row.entry, row.title);
    EXPECT_FALSE(IsWindowEnabled(window.main()));
    EXPECT_TRUE(!GetDlgItem(opened, cmdStop) || Await([&] {
      return Shown(opened, lblStatus) != L"" && !IsEnabled(opened, cmdStop);
    })) << "its scan goes on";
    const size_t letters = ExpectKeys(opened);
    EXPECT_EQ(letters, row.letters == 0 ? letters : row.letters);
    ForEachPage(opened, [&] { ExpectKeys(opened); });
    PressKeys(opened, {VK_F1});
    EXPECT_EQ(AwaitTopic(), row.topic);
    EXPECT_NE(manual.find("id=\"" + std::string(row.topic) + "\""), std::string::npos);
    if (row.dialog) ExpectDialogsTopic(window, opened, row.dialog, row.topic);
    ASSERT_TRUE(CloseAndAwait(opened));
  }
}

TEST_F(HelpTest, TheManualIsInTheLanguageOfTheWindowsWhereItWasTranslated) {
  const fs::path manual = ProgramFolder() / "Help" / "help.xx.htm";
  Unpack(L"xx", ProgramFolder() / "trial.mo");
  WriteSettings("Language=trial.mo\r\n");
  WriteBytes(manual, "<p id=\"contents\">");
  const QuellixWindow window;
  window.Choose(mnuContents);
  EXPECT_EQ(AwaitTopic(), "help.xx.htm#contents");
  fs::remove(manual);
  PressKeys(window.main(), {VK_F1});
  EXPECT_EQ(AwaitTopic(), "main");
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
  const HWND about = window.Open(mnuAbout, L"About Quellix");
  EXPECT_TRUE(Shown(about, lblVersion).starts_with(L"Version "));
  const std::wstring licences = Shown(about, txtLicences);
  for (const wchar_t* part : {L"zlib", L"minizip", L"winpthreads", L"CLI11", L"MIT License"})
    EXPECT_NE(licences.find(part), std::wstring::npos) << testing::PrintToString(part);
}

}  // namespace
}  // namespace quellix::test
