// What is left to the next start of Windows, and what is not.
#include <windows.h>

#include <sddl.h>

#include "contract/contract_fixture.h"
#include "platform/win32/win32_access.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

// TrustedInstaller and packaged programs, as today's Windows has them in its lists.
constexpr const char* kInstaller = "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";

bool IsSafe(std::string text, PathPart part) {
  text = ReplaceNoCase(text, "TI", kInstaller);
  PSECURITY_DESCRIPTOR security = nullptr;
  EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
      Wide(text).c_str(), SDDL_REVISION_1, &security, nullptr))
      << text;
  const bool is_safe = security && OnlyAdministratorsChange(security, part);
  LocalFree(security);
  return is_safe;
}

TEST(AccessListTest, OnlyWhatAdministratorsAloneChangeIsSafe) {
  constexpr auto kFile = PathPart::kFile, kFolder = PathPart::kFolder, kRoot = PathPart::kRoot;
  const std::tuple<const char*, const char*, PathPart, bool> kRows[] = {
      {"Windows",
       "O:TID:P(A;OICIIO;GA;;;CO)(A;;0x1301bf;;;SY)(A;;0x1301bf;;;BA)"
       "(A;OICIIO;GXGR;;;BU)(A;;0x1200a9;;;BU)(A;;FA;;;TI)(A;;0x1200a9;;;S-1-15-2-1)",
       kFolder, true},
      {"its folder of logs", "O:SYD:(A;ID;FA;;;SY)(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kFile, true},
      {"its temporary folder", "O:SYD:P(A;;FA;;;SY)(A;;FA;;;BA)(A;CI;0x100026;;;BU)", kFolder,
       false},
      {"a drive", "O:TID:P(A;;FA;;;SY)(A;;FA;;;BA)(A;OICIIO;SDGXGWGR;;;AU)(A;;LC;;;AU)", kRoot,
       true},
      {"a folder as the drive is", "O:TID:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;LC;;;AU)", kFolder, false},
      {"a drive of everybody", "O:SYD:(A;;FA;;;WD)", kRoot, false},
      {"a user's own", "O:S-1-5-21-7-7-7-1001D:(A;;FA;;;SY)(A;;FA;;;BA)", kFolder, false},
      {"a user may write to it", "O:BAD:(A;;FA;;;BA)(A;;0x2;;;S-1-5-21-7-7-7-1001)", kFile, false},
      {"a service may remove it", "O:BAD:(A;;FA;;;BA)(A;;SD;;;LS)", kFile, false},
      {"a user may change its list", "O:BAD:(A;;FA;;;BA)(A;;WD;;;BU)", kFolder, false},
      {"denied besides", "O:BAD:(D;;FA;;;BU)(A;;FA;;;BA)", kFolder, true},
      {"without a list", "O:BA", kFolder, false},
      {"without an owner", "D:(A;;FA;;;BA)", kFolder, false}};
  for (const auto& [name, list, part, is_safe] : kRows)
    EXPECT_EQ(IsSafe(list, part), is_safe) << name;
}

constexpr const wchar_t* kListKey = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
constexpr const wchar_t* kListValue = L"PendingFileRenameOperations";

// The list is as it was at the end.
struct StartListTest : ContractFixture {
  ~StartListTest() override {
    if (before.empty()) {
      RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue);
    } else {
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue, REG_MULTI_SZ, before.data(),
                      static_cast<DWORD>(before.size() * sizeof(wchar_t)));
    }
  }
  static std::wstring List() {
    std::wstring text(65536, L'\0');
    DWORD size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue,
                                        RRF_RT_REG_MULTI_SZ, nullptr, text.data(), &size);
    text.resize(status == ERROR_SUCCESS ? size / sizeof(wchar_t) : 0);
    return text;
  }
  const std::wstring before = List();
};

TEST_F(StartListTest, WhatUsersMayChangeIsRefusedAndNotListed) {
  const std::string windows = machine_.system.WindowsFolder();
  const std::string below = windows + "\\QxStart\\";
  Make("a.log", "1");
  test_->MakeFile(below + "a.log", "1");
  for (const std::string& folder : {scratch_, below}) {
    EXPECT_EQ(KindOf([&] { files_.OpenFolder(folder)->RemoveAtStart("a.log"); }),
              Error::Kind::kDenied)
        << folder;
    EXPECT_TRUE(test_->Exists(folder + "a.log"));
  }
  EXPECT_EQ(KindOf([&] { files_.OpenFolder(scratch_)->RemoveAtStart("none"); }),
            Error::Kind::kMissing);
  EXPECT_EQ(List(), before);
  files_.RemoveFile(below + "a.log");
  files_.RemoveFolder(below);
}

TEST_F(StartListTest, ThePathIsHandedOverToTheSystem) {
  Make("b.log", "1");
  PutOnStartList(L"\\\\?\\" + Wide(At("b.log")), "b.log");
  EXPECT_NE(List().find(L"\\??\\" + Wide(At("b.log"))), std::wstring::npos);
  EXPECT_TRUE(test_->Exists(At("b.log"))) << "it is still there";
  const std::wstring listed = List();
  PutOnStartList(L"\\\\?\\" + Wide(At("B.log")), "b.log");
  EXPECT_EQ(List(), listed) << "once";
}

}  // namespace
}  // namespace quellix
