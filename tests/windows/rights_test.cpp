// A program without administrator rights, and its second start with them.

#include "app/rights.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "quellix_window.h"

#include <commctrl.h>

namespace quellix::test {
namespace {

constexpr int kNote = 3;
const wchar_t* const kWithRights = L"Quellix (Administrator)";

// This user's rights without those of an administrator, as a program has them before it asks.
UniqueHandle PlainToken() {
  UniqueHandle own, plain;
  BYTE administrators[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(administrators);
  CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size);
  SID_AND_ATTRIBUTES denied{administrators, 0};
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.Put()));
  EXPECT_TRUE(CreateRestrictedToken(own.Get(), 0, 1, &denied, 0, nullptr, 0, nullptr, plain.Put()));
  return plain;
}

struct RightsTest : SandboxTest {
  RightsTest() {
    WriteBytes(dump_, "12345");
    WriteBytes(junk_, "12345");
  }
  void TearDown() override { fs::remove(dump_); }

  const fs::path dump_ = L"C:\\windows\\LiveKernelReports\\qx.dmp",
                 junk_ = TempFolder() / "junk.tmp";
};

TEST_F(RightsTest, TheButtonStartsAnewForTheSameUserAndCleansThatAlone) {
  const UniqueHandle plain = PlainToken();
  const QuellixWindow window({}, plain.Get());
  const HWND list = window.Control(lstvItems);
  const int dump = window.RowOf(chkDump), junk = window.RowOf(chkTemp);
  EXPECT_EQ(window.RowText(list, dump, kNote), L"needs administrator rights");
  EXPECT_NE(SendMessageW(list, LVM_GETIMAGELIST, LVSIL_SMALL, 0), 0);
  EXPECT_EQ(window.ImageOf(list, dump), 0);
  EXPECT_EQ(window.ImageOf(list, junk), 1);
  EXPECT_FALSE(IsWindowVisible(window.Control(cmdRights)));
  for (const int item : {chkTemp, chkDump}) window.Click(item);
  ASSERT_TRUE(Await([&] { return IsWindowVisible(window.Control(cmdRights)); }));
  window.Press(cmdRights);
  HWND second = nullptr;
  ASSERT_TRUE(Await([&] { return (second = FindWindowW(nullptr, kWithRights)) != nullptr; }));
  HWND log = nullptr;
  ASSERT_TRUE(Await([&] { return (log = FindWindowW(nullptr, L"Cleaning log")) != nullptr; }));
  EXPECT_TRUE(AwaitPart(log, txtLog, L"Memory dump files... Files Deleted: 1"));
  EXPECT_FALSE(fs::exists(dump_));
  EXPECT_EQ(Shown(log, txtLog).find(L"emporary files"), std::wstring::npos);
  EXPECT_TRUE(fs::exists(junk_));
  EXPECT_TRUE(CloseAndAwait(log) && CloseAndAwait(second));
  EXPECT_EQ(window.BoxOf(chkTemp), 2);
}

TEST_F(RightsTest, OnlyAnAdministratorIsLedToOtherUsers) {
  const UniqueHandle plain = PlainToken();
  for (const HANDLE token : {static_cast<HANDLE>(nullptr), plain.Get()}) {
    const bool may = token == nullptr;
    SCOPED_TRACE(may);
    const QuellixWindow window({}, token);
    PressKeys(window.main(), {VK_MENU, L'T'});
    ASSERT_TRUE(window.AwaitMenu());
    PressKeys(window.main(), {L'U'});
    if (may) {
      EXPECT_TRUE(CloseAndAwait(window.AwaitWindow(L"Other users")));
      continue;
    }
    for (int i = 0; i < 2 && window.HasMenu(); ++i) PressKeys(window.main(), {VK_ESCAPE});
    EXPECT_TRUE(Await([&] { return !window.HasMenu(); }));
    PostAndAwait(window.main(), WM_NULL, 0, 0);
    EXPECT_FALSE(window.HasWindow(L"Other users"));
  }
}

TEST_F(RightsTest, AStartForAnotherIsRefused) {
  std::set<int> all;
  for (int place = 1; place <= 30; ++place) all.insert(place);
  WriteChecks(all);
  const std::string own = Narrow(_wgetenv(L"USERPROFILE"));
  const QuellixProcess process(Wide(RightsArguments({"S-1-5-21-7-1001", own})));
  HWND message = nullptr;
  ASSERT_TRUE(Await([&] { return (message = process.AnyWindow()) != nullptr; }));
  std::wstring text;
  for (HWND part = nullptr; (part = FindWindowExW(message, part, L"Static", nullptr)) != nullptr;)
    text += TextOf(part);
  EXPECT_NE(text.find(L"Nothing was cleaned"), std::wstring::npos);
  PressIn(message, IDOK);
  EXPECT_EQ(process.AwaitExitCode(), 1u);
  EXPECT_TRUE(fs::exists(dump_) && fs::exists(junk_));
}

}  // namespace
}  // namespace quellix::test
