// Tools that remove what somebody names or has deleted: Explorer's menu, free space, empty folders.
#include <gtest/gtest.h>

#include "options_window.h"
#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

const std::wstring kMenuKey = L"Software\\Classes\\*\\shell\\Quellix.Remove\\command";
constexpr ULONG_PTR kPath = 0x51784E50;  // what is copied is one

struct ToolsMenuTest : SandboxTest {
  ToolsMenuTest() {
    for (const char* name : {"a.txt", "b c.txt"}) WriteBytes(kFolder / name, "12345");
  }
  // Hands a text over to the main window, which may refuse it.
  static bool Copy(const QuellixWindow& window, ULONG_PTR kind, std::wstring text) {
    COPYDATASTRUCT data{kind, static_cast<DWORD>(text.size() * sizeof(wchar_t)), text.data()};
    return SendMessageW(window.main(), WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)) != FALSE;
  }
  static std::wstring Remove(const fs::path& path) {
    return L"--remove \"" + path.wstring() + L"\"";
  }
  static size_t FilesAtRoot() {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(L"C:\\")) ++count;
    return count;
  }

  static inline const fs::path kFolder = L"C:\\quellix-tests\\by hand";
};

TEST_F(ToolsMenuTest, WhatExplorersMenuNamesIsSeenTogetherBeforeItGoes) {
  const QuellixWindow window(Remove(kFolder / "a.txt"));
  const QuellixProcess other(Remove(kFolder / "b c.txt"));
  EXPECT_EQ(other.AwaitExitCode(), 0u);
  HWND preview = window.AwaitWindow(L"Preview");
  if (Shown(preview, lblRunSummary).starts_with(L"1 entry")) {  // the other came later
    EXPECT_TRUE(CloseAndAwait(preview));
    preview = window.AwaitWindow(L"Preview");
  }
  EXPECT_TRUE(Shown(preview, lblRunSummary).find(L"to be removed") != std::wstring::npos);
  EXPECT_TRUE(fs::exists(kFolder / "a.txt") && fs::exists(kFolder / "b c.txt"));
  EXPECT_TRUE(CloseAndAwait(preview));
  const QuellixProcess third(Remove(kFolder / "b c.txt"));
  EXPECT_EQ(third.AwaitExitCode(), 0u);
  PressIn(window.AwaitWindow(L"Preview"), cmdCleanTicked);
  EXPECT_TRUE(AwaitPart(window.AwaitWindow(L"Cleaning log"), txtLog, L"Named by hand..."));
  EXPECT_TRUE(fs::exists(kFolder / "a.txt"));
  EXPECT_FALSE(fs::exists(kFolder / "b c.txt"));
}

TEST_F(ToolsMenuTest, OtherMessagesAreNoPaths) {
  const QuellixWindow window;
  for (const std::wstring text : {L"relative", L"C:\\a\" \"C:\\b", L""}) {
    EXPECT_FALSE(Copy(window, kPath, text) || Copy(window, 1, text)) << "it is refused";
  }
  EXPECT_TRUE(IsWindowEnabled(window.main()));
  EXPECT_FALSE(window.HasWindow(L"Preview"));
}

TEST_F(ToolsMenuTest, WhatIsNamedBeyondTheMostIsToldOf) {
  const QuellixWindow window;
  for (int i = 0; i < 10'003; ++i) ASSERT_TRUE(Copy(window, kPath, kFolder / "a.txt"));
  EXPECT_TRUE(window.Answer(L"only the first 10,000 are looked at; 3 more are left out", IDOK));
  EXPECT_TRUE(CloseAndAwait(window.AwaitWindow(L"Preview")));
  EXPECT_TRUE(fs::exists(kFolder / "a.txt"));
}

TEST_F(ToolsMenuTest, TheOptionsMakeExplorersEntryAndTakeItAway) {
  RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Classes\\*");
  const QuellixWindow window;
  for (const bool wanted : {true, false}) {
    const OptionsWindow options(window);
    options.GoTo(OptionsPage::kRuns);
    EXPECT_NE(options.IsChecked(chkExplorerMenu), wanted);
    options.Click(chkExplorerMenu);
    EXPECT_TRUE(options.PressAndClose(IDOK));
    EXPECT_TRUE(Await([&] {
      const std::wstring command = RegistryText(HKEY_CURRENT_USER, kMenuKey, nullptr);
      return wanted ? command.ends_with(L"quellix.exe\" --remove \"%1\"") : command == L"<missing>";
    }));
  }
}

TEST_F(ToolsMenuTest, WipingFreeSpaceAsksStopsAndLeavesNothing) {
  const size_t before = FilesAtRoot();
  const QuellixWindow window;
  const HWND wipe = window.Open(mnuWipeFree, L"Wipe free space"),
             list = GetDlgItem(wipe, lstvWipeFree);
  ASSERT_TRUE(Await([&] { return CountRows(list) > 0; }));
  EXPECT_EQ(window.RowText(list, 0, 0), L"C:\\");
  EXPECT_FALSE(IsEnabled(wipe, cmdWipeFree));
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(AwaitEnabled(wipe, cmdWipeFree));
  PressIn(wipe, cmdWipeFree);
  EXPECT_TRUE(window.Answer(L"Overwrite what is free on C:\\ (", IDNO));
  EXPECT_EQ(Shown(wipe, lblStatus), L"Nothing was overwritten yet.");
  PressIn(wipe, cmdWipeFree);
  EXPECT_TRUE(window.Answer(L"snapshots and earlier versions keep", IDYES));
  EXPECT_TRUE(AwaitPart(wipe, lblStatus, L"Wiping C:\\"));
  PressIn(wipe, cmdStop);
  EXPECT_TRUE(AwaitText(wipe, lblStatus, L"0 of 1 drive wiped, stopped"));
  EXPECT_TRUE(window.RowText(list, 0, 4).find(L", stopped") != std::wstring::npos);
  EXPECT_EQ(FilesAtRoot(), before);
  EXPECT_TRUE(CloseAndAwait(wipe));
}

TEST_F(ToolsMenuTest, EmptyFoldersAreSearchedForAndDeletedInTheResults) {
  fs::create_directories(kFolder / "empty" / "deep");
  WriteBytes(ProgramFolder() / "UDIFO.txt", "windows\r\nusers\r\nquellix\\\r\n");
  const QuellixWindow window;
  const HWND results = window.Open(mnuEmptyFolders, L"Search results"),
             list = GetDlgItem(results, lstvDeletion);
  ASSERT_TRUE(AwaitPart(results, lblTotalFiles, L"Total Folders: "));
  ASSERT_TRUE(Await([&] { return CountRows(list) >= 2; }));
  Type(results, txtFilter, L"by hand");
  ASSERT_TRUE(AwaitRows(list, 2));
  EXPECT_TRUE(fs::exists(kFolder / "empty" / "deep"));
}

}  // namespace
}  // namespace quellix::test
