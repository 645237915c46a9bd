// The windows in other languages: in a made-up one whose texts are longer and, where
// QUELLIX_LANGUAGES names them ("de fr"), in those that the program carries.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "all_windows.h"
#include "list_windows.h"
#include "options_window.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "support/embedded_win32.h"

namespace quellix::test {
namespace {

constexpr const char* kMadeUp = "xx";

const fs::path& Trial() {
  static const fs::path path = ProgramFolder() / "trial.mo";
  return path;
}

// The program's next start speaks a language, and so do the tests.
void Talk(const std::string& language) {
  Unpack(std::wstring(language.begin(), language.end()).c_str(), Trial());
  Speak(Catalogue(ReadBytes(Trial())));
  WriteSettings("Language=trial.mo\r\nAsk=1\r\nDelMethod=B\r\n");
}

struct LanguageTest : SandboxTest {
  void TearDown() override { Speak(Catalogue()); }
};

void CloseAllAbove(HWND window) {
  for (HWND top = nullptr; (top = GetLastActivePopup(window)) != window;) {
    ASSERT_TRUE(CloseAndAwait(top));
  }
}

void LookAt(HWND window) {
  ASSERT_TRUE(window && IsWindowVisible(window));
  const auto look = [window] {
    ExpectRoom(window);
    ExpectWholeTexts(window);
  };
  look();
  ForEachPage(window, look);
}

// Those that clean need a sandbox in which there is something to clean.
void LookAtAllWindows(const std::string& language) {
  std::optional<SeededLists> seeded;
  std::optional<QuellixWindow> program;
  for (const WindowCase& row : WindowCases()) {
    SCOPED_TRACE(row.name);
    if (!program || row.is_alone) {
      program.reset();
      seeded.reset();
      seeded.emplace();
      Talk(language);
      program.emplace();
    }
    LookAt(row.open(*program));
    CloseAllAbove(program->main());
    if (row.is_alone) program.reset();
  }
}

TEST_F(LanguageTest, CutsNoText) {
  const char* const wanted = std::getenv("QUELLIX_LANGUAGES");
  std::istringstream languages(std::string(kMadeUp) + " " + (wanted ? wanted : ""));
  for (std::string language; languages >> language;) {
    SCOPED_TRACE(language);
    LookAtAllWindows(language);
  }
}

TEST_F(LanguageTest, IsChosenInTheOptionsAndSpokenAtOnceAndAllElseStays) {
  Talk(kMadeUp);
  const std::wstring caption = Wide(Tr("Temporary files... "));
  WriteSettings("Language=trial.mo\r\nLogLanguage=1\r\nDelMethod=D\r\n");
  WriteBytes(TempFolder() / "a.tmp", "1");
  const QuellixWindow window;
  const HWND first = window.main();
  EXPECT_EQ(TextOf(window.Control(cmdClean)), L"&Cl\u00E9\u00E2\u00F1\u00EB\u00F6");
  window.Click(chkTemp);
  const int row = window.RowOf(chkTemp);
  window.Press(cmdClean);
  window.AwaitWindow(L"Cleaning log");
  CloseAllAbove(first);
  SendMessageW(window.Control(chkThenShutDown), BM_CLICK, 0, 0);
  const OptionsWindow options(window);
  EXPECT_EQ(TextOf(options.Control(cboLanguage)), L"trial.mo");
  EXPECT_GE(SendMessageW(options.Control(cboLanguage), CB_GETCOUNT, 0, 0), 11);
  options.Choose(cboLanguage, 1);
  ASSERT_TRUE(options.PressAndClose(IDOK));
  Speak(Catalogue());
  const HWND again = window.AwaitWindow(L"Quellix");
  EXPECT_FALSE(IsWindow(first));
  EXPECT_EQ(TextOf(GetDlgItem(again, cmdClean)), L"&Clean");
  EXPECT_TRUE(Await([&] { return BoxOf(GetDlgItem(again, lstvItems), row) == 2; }));
  EXPECT_NE(ReadBytes(ProgramFolder() / "Settings.ini").find("Language=en"), std::string::npos);
  EXPECT_TRUE(Await([&] {
    return SendDlgItemMessageW(again, chkThenShutDown, BM_GETCHECK, 0, 0) == BST_CHECKED;
  }));
  PostMessageW(again, WM_COMMAND, mnuLastLog, 0);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_TRUE(AwaitPart(log, txtLog, caption));
  EXPECT_EQ(TextOf(GetDlgItem(log, txtLog)).find(L"Temporary files"), std::wstring::npos);
  EXPECT_TRUE(AwaitPart(log, lblSpace, L"1 Bytes"));
  PostMessageW(again, WM_CLOSE, 0, 0);
  EXPECT_TRUE(window.AwaitEnd());
}

TEST_F(LanguageTest, IsEnglishWhereTheChosenOneIsMissingOrBroken) {
  for (const char* chosen : {"tlh", "none.mo", "trial.mo", "en"}) {
    SCOPED_TRACE(chosen);
    WriteBytes(Trial(), "no catalogue");
    WriteSettings("Language=" + std::string(chosen) + "\r\n");
    const QuellixWindow window;
    EXPECT_EQ(TextOf(window.Control(cmdClean)), L"&Clean");
  }
}

}  // namespace
}  // namespace quellix::test
