// A program that runs while what it holds is to be cleaned.

#include "quellix_window.h"
#include "support/embedded_win32.h"

namespace quellix::test {
namespace {

constexpr int kClose = 100, kRetry = 102;
const fs::path kFolder = L"C:\\quellix-tests\\programs";
const fs::path kProgram = kFolder / "qxprogram.exe", kTrace = kFolder / "in" / "trace";

struct ProgramsTest : SandboxTest {
  ProgramsTest() {
    WriteBytes(kTrace, "12345");
    Unpack(L"window_program", kProgram);
    const std::string recipe = "D|Traces of a program\r\nP|qxprogram.exe\r\nF|No|No|" +
                               kTrace.parent_path().string() + "\\*.*\r\n";
    WriteBytes(ProgramFolder() / "Plugins" / "qx.cdp", Fields(recipe));
    WriteChecks({21});  // Plugins
    WriteBytes(ProgramFolder() / "plg.txt", Fields("1|qx.cdp|Traces\r\n"));
  }
};

TEST_F(ProgramsTest, WhatRunsIsNamedAndCleanedOnlyOnceItWasClosed) {
  const QuellixWindow window;
  {
    const UnpackedProgram refusing(kProgram, L"refuses");
    window.Press(cmdClean);
    const HWND question = window.AwaitMessage(L"qxprogram.exe is running");
    ASSERT_TRUE(question && window.AwaitMessage(L"Traces of a program"));
    EXPECT_EQ(TextOf(FocusOf(question)), L"&Skip");
    PressIn(question, kRetry);
    const HWND again = window.AwaitMessage(L"It still runs.");
    ASSERT_TRUE(again);
    PostMessageW(again, WM_CLOSE, 0, 0);
    const HWND log = window.AwaitWindow(L"Cleaning log");
    EXPECT_TRUE(AwaitPart(log, txtLog, L"qxprogram.exe runs; close it first"));
    EXPECT_TRUE(fs::exists(kTrace) && !refusing.HasEnded());
  }
  const UnpackedProgram polite(kProgram);
  window.Press(cmdClean);
  ASSERT_TRUE(window.Answer(L"qxprogram.exe is running", kClose));
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_TRUE(AwaitPart(log, txtLog, L"qxprogram.exe was closed before it was cleaned."));
  EXPECT_TRUE(polite.HasEnded() && !fs::exists(kTrace));
}

}  // namespace
}  // namespace quellix::test
