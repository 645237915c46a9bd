// Cleaning for other users of this Windows.
#include <gtest/gtest.h>

#include "platform/win32/unique.h"
#include "platform/win32/win32_session.h"
#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr wchar_t kSeed[] = L"Software\\QxSeed";
const std::wstring kProfiles =
    L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-5-21-7-7-7-";
const fs::path kHome = L"C:\\users\\qx2", kNobodys = L"C:\\users\\qx3";

struct UsersTest : SandboxTest {
  UsersTest() {
    CleanUp();
    AddProfile(kProfiles + L"1002", kHome);
    AddProfile(kProfiles + L"1003", kNobodys);
    WriteBytes(TempFolder() / "mine.tmp", "1");
    StoreHive();
    fs::copy_file(kHome / "NTUSER.DAT", kNobodys / "NTUSER.DAT");
    WriteChecks({22});
  }
  void TearDown() override { CleanUp(); }

  static void AddProfile(const std::wstring& key, const fs::path& home) {
    SetRegistryText(HKEY_LOCAL_MACHINE, key, L"ProfileImagePath", home);
    WriteBytes(home / "his temp" / "a.tmp", "12345");
  }
  // As he left it when he logged off.
  static void StoreHive() {
    SetRegistryText(HKEY_CURRENT_USER, std::wstring(kSeed) + L"\\Environment", L"TEMP",
                    L"%USERPROFILE%\\his temp");
    Win32Session().EnablePrivilege("SeBackupPrivilege");
    UniqueKey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, kSeed, 0, KEY_READ, key.Put());
    EXPECT_EQ(RegSaveKeyW(key.Get(), (kHome / "NTUSER.DAT").c_str(), nullptr), ERROR_SUCCESS);
  }
  static void CleanUp() {
    for (const wchar_t* user : {L"1002", L"1003"})
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kProfiles + user).c_str());
    RegDeleteTreeW(HKEY_CURRENT_USER, kSeed);
    for (const fs::path& home : {kHome, kNobodys}) fs::remove_all(home);
  }

  static inline const fs::path kHis = kHome / "his temp" / "a.tmp";
};

TEST_F(UsersTest, WhoIsTickedIsCleanedAndNobodyElse) {
  const QuellixWindow window;
  const HWND users = window.Open(mnuUsers, L"Other users"), list = GetDlgItem(users, lstvUsers);
  ASSERT_TRUE(AwaitRows(list, 2));
  EXPECT_EQ(window.RowText(list, 0, 0), L"qx2");
  EXPECT_FALSE(IsEnabled(users, cmdUsersLook) || IsEnabled(users, cmdUsersClean));
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(Await([&] { return IsEnabled(users, cmdUsersLook); }));
  PressIn(users, cmdUsersLook);
  ASSERT_TRUE(AwaitText(users, lblStatus, L"1 entry of 1 user"));
  const HWND found = GetDlgItem(users, lstvUsersFound);
  EXPECT_EQ(window.RowText(found, 0, 0) + L"|" + window.RowText(found, 0, 2),
            L"qx2|" + kHis.wstring());
  EXPECT_TRUE(fs::exists(kHis));

  PressIn(users, cmdUsersClean);
  EXPECT_TRUE(window.Answer(L"qx2: Delete 1 file (5 Bytes) for good?", IDCANCEL));
  EXPECT_TRUE(fs::exists(kHis));
  for (const wchar_t* files : {L"1", L"0"}) {
    EXPECT_TRUE(Await([&] { return IsEnabled(users, cmdUsersClean); }));
    PressIn(users, cmdUsersClean);
    if (*files == L'1') {
      EXPECT_TRUE(window.Answer(L"qx2: Delete 1 file (5 Bytes) for good?", kYes));
    }
    EXPECT_TRUE(AwaitPart(users, txtUsers, L"== qx2\r\n"));
    EXPECT_TRUE(AwaitPart(users, txtUsers, std::wstring(L"Files Deleted:  ") + files));
    EXPECT_FALSE(fs::exists(kHis));
  }
  EXPECT_TRUE(fs::exists(TempFolder() / "mine.tmp"));
  EXPECT_TRUE(fs::exists(kNobodys / "his temp" / "a.tmp"));
  EXPECT_EQ(ReadBytes(ProgramFolder() / "Settings.ini").find("LastCleaned"), std::string::npos);
  PressIn(users, IDCANCEL);
  EXPECT_TRUE(AwaitGone(users) && IsWindowEnabled(window.main()));
}

}  // namespace
}  // namespace quellix::test
