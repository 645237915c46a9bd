// What a first start asks, and what it does not ask again.
#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

struct FirstStartTest : SandboxTest {
  FirstStartTest() { WriteSettings("Welcome=1\r\n"); }
  static std::string Settings() { return ReadBytes(ProgramFolder() / "Settings.ini"); }
};

TEST_F(FirstStartTest, TheWayOfRemovalIsAskedOnce) {
  {
    const QuellixWindow window;
    const HWND welcome = window.AwaitWindow(L"Welcome to Quellix");
    EXPECT_FALSE(IsWindowEnabled(window.main()));
    EXPECT_EQ(SendDlgItemMessageW(welcome, optDelete, BM_GETCHECK, 0, 0), BST_CHECKED);
    ExpectKeys(welcome);
    Click(welcome, optRecyclebin);
    PressIn(welcome, IDOK);
    ASSERT_TRUE(AwaitGone(welcome));
    EXPECT_TRUE(AwaitPart(window.main(), lnkRemoval, L"recycle bin"));
    EXPECT_NE(Settings().find("DelMethod=R"), std::string::npos);
    EXPECT_NE(Settings().find("Welcome=0"), std::string::npos);
    EXPECT_TRUE(window.Close());
  }
  const QuellixWindow again;
  SendMessageW(again.main(), WM_NULL, 0, 0);
  EXPECT_FALSE(again.HasWindow(L"Welcome to Quellix"));
  EXPECT_TRUE(IsWindowEnabled(again.main()));
}

TEST_F(FirstStartTest, DecliningKeepsTheWayAndIsNotAskedAgainNorAtOtherStarts) {
  WriteChecks({22});
  {
    const QuellixWindow window(L"-c");
    EXPECT_TRUE(window.AwaitWindow(L"Cleaning log"));
    EXPECT_FALSE(window.HasWindow(L"Welcome to Quellix"));
  }
  {
    const QuellixWindow window;
    const HWND welcome = window.AwaitWindow(L"Welcome to Quellix");
    PressIn(welcome, IDCANCEL);
    ASSERT_TRUE(AwaitGone(welcome));
  }
  EXPECT_EQ(Settings().find("DelMethod"), std::string::npos);
  EXPECT_NE(Settings().find("Welcome=0"), std::string::npos);
}

}  // namespace
}  // namespace quellix::test
