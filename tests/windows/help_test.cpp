#include <gtest/gtest.h>

#include <regex>

#include "opener.h"
#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

const std::filesystem::path kOpened = L"C:\\quellix-tests\\opened";

class HelpTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    WriteBytes(kOpened, "");
  }

  // The anchor at which the manual was opened; "" when it was not.
  static std::string AwaitTopic() {
    const std::regex address(R"(file:///C:/Program%20Files/Quellix/Help/help\.htm#([\w-]+))");
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

TEST_F(HelpTest, EachWindowOpensItsOwnPage) {
  const QuellixWindow window;
  const std::string manual = ReadBytes(ProgramFolder() / "Help" / "help.htm");
  window.Choose(mnuContents);
  EXPECT_EQ(AwaitTopic(), "contents");
  PressKeys(window.main(), {VK_F1});
  EXPECT_EQ(AwaitTopic(), "main");
  struct Row {
    int entry;
    const wchar_t* title;
    const char* topic;
  };
  static constexpr Row kRows[] = {
      {mnuBackups, L"Backups", "backups"},
      {mnuIECache, L"Temporary Internet Files (Cache)", "cache"},
      {mnuAbout, L"About Quellix", "about"},
      {mnuOptions, L"Options", "options"},
      {mnuManagePlugin, L"Plugins Manager", "plugins"},
      {mnuOrphanedDLL, L"Orphaned Shared DLLs", "shared-dlls"},
      {mnuOrphanedFilePath, L"Orphaned File/Path Reference", "file-references"},
      {mnuOrphanedApplicationPath, L"Orphaned application path references", "app-paths"},
      {mnuOrphanedHelpFile, L"Orphaned help file references", "help-files"},
      {mnuOrphanedActivex, L"Orphaned ActiveX control references", "components"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.topic);
    window.Choose(row.entry);
    const HWND opened = window.AwaitWindow(row.title);
    ASSERT_TRUE(opened);
    PressKeys(opened, {VK_F1});
    EXPECT_EQ(AwaitTopic(), row.topic);
    EXPECT_NE(manual.find("id=\"" + std::string(row.topic) + "\""), std::string::npos);
    SendMessageW(opened, WM_CLOSE, 0, 0);
    ASSERT_TRUE(Await([&] { return !IsWindow(opened); }));
  }
}

TEST_F(HelpTest, TheDialogsOfAToolOpenItsPage) {
  constexpr const wchar_t* kKeys[] = {
      L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\qx.exe",
      L"Software\\Microsoft\\Windows\\Help"};
  const QuellixWindow window;
  struct Row {
    int entry;
    const wchar_t *title, *name, *dialog;
    const char* topic;
  };
  static constexpr Row kRows[] = {
      {mnuOrphanedApplicationPath, L"Orphaned application path references", nullptr,
       L"Edit application path", "app-paths"},
      {mnuOrphanedHelpFile, L"Orphaned help file references", L"qx.hlp", L"Edit help file",
       "help-files"}};
  for (size_t i = 0; i < std::size(kRows); ++i) {
    const Row& row = kRows[i];
    SCOPED_TRACE(row.topic);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKeys[i], row.name, REG_SZ, L"C:\\qx none", 24);
    window.Choose(row.entry);
    const HWND tool = window.AwaitWindow(row.title);
    ASSERT_TRUE(tool);
    ASSERT_TRUE(Await([&] { return TextOf(GetDlgItem(tool, lblStatus)).ends_with(L"orphaned"); }));
    window.PressKey(GetDlgItem(tool, lstvInvalid), VK_END);
    window.PressKey(GetDlgItem(tool, lstvInvalid), VK_HOME);
    window.PressKey(GetDlgItem(tool, lstvInvalid), VK_RETURN);
    const HWND dialog = window.AwaitWindow(row.dialog);
    ASSERT_TRUE(dialog);
    PressKeys(dialog, {VK_F1});
    EXPECT_EQ(AwaitTopic(), row.topic);
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    SendMessageW(tool, WM_CLOSE, 0, 0);
    ASSERT_TRUE(Await([&] { return !IsWindow(tool); }));
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKeys[i], row.name);
  }
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, kKeys[0]);
}

TEST_F(HelpTest, AMissingManualIsTold) {
  const std::filesystem::path manual = ProgramFolder() / "Help" / "help.htm";
  const std::filesystem::path aside = ProgramFolder() / "Help" / "help.aside";
  std::filesystem::rename(manual, aside);
  const QuellixWindow window;
  window.Choose(mnuContents);
  EXPECT_TRUE(window.AwaitMessage(L"The manual is missing: C:\\Program Files\\Quellix\\Help"));
  std::filesystem::rename(aside, manual);
  EXPECT_EQ(ReadBytes(kOpened), "");
}

TEST_F(HelpTest, AboutTellsVersionAndLicences) {
  const QuellixWindow window;
  window.Choose(mnuAbout);
  const HWND about = window.AwaitWindow(L"About Quellix");
  ASSERT_TRUE(about);
  EXPECT_TRUE(TextOf(GetDlgItem(about, lblVersion)).starts_with(L"Version "));
  const std::wstring licences = TextOf(GetDlgItem(about, txtLicences));
  for (const wchar_t* part : {L"zlib", L"minizip", L"winpthreads", L"CLI11", L"MIT License"}) {
    EXPECT_NE(licences.find(part), std::wstring::npos) << ::testing::PrintToString(part);
  }
}

}  // namespace
}  // namespace quellix::test
