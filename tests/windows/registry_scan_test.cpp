
#include "quellix_window.h"

namespace quellix::test {
namespace {

constexpr const wchar_t* kDlls = L"Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
constexpr const wchar_t* kApps = L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
constexpr const wchar_t* kOwn = L"Qx window test";
constexpr const wchar_t* kRun = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const wchar_t* kApproved =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";

// Which Windows the program is told to be on.
constexpr const wchar_t* kVersionKey = L"Software\\Wine\\AppDefaults\\quellix.exe";

bool HasDll(const std::wstring& name) {
  return RegGetValueW(HKEY_LOCAL_MACHINE, kDlls, name.c_str(), RRF_RT_ANY, nullptr, nullptr,
                      nullptr) == ERROR_SUCCESS;
}

struct RegistryScanWindowTest : SandboxTest {
  RegistryScanWindowTest() { Clear(); }
  ~RegistryScanWindowTest() override { Clear(); }

  static void Clear() {
    for (const wchar_t* key : {kDlls, kApps}) RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
    RegDeleteTreeW(HKEY_CURRENT_USER, kOwn);
    RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
    for (const wchar_t* key : {kRun, kApproved})
      RegDeleteKeyValueW(HKEY_CURRENT_USER, key, L"Qx a");
  }
  static void SeedDlls(int count) {
    for (DWORD i = 1; i <= static_cast<DWORD>(count); ++i) {
      const std::wstring name = L"C:\\qx none\\" + std::to_wstring(i) + L".dll";
      const DWORD uses = i % 200 + 1;
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, kDlls, name.c_str(), REG_DWORD, &uses, sizeof(uses));
    }
  }
  // The whole registry takes its time.
  static bool AwaitStatus(HWND window, std::wstring_view end) {
    const auto done = [&] {
      return Shown(window, lblStatus).ends_with(end) && !IsEnabled(window, cmdStop);
    };
    for (int patience = 0; patience < 20; ++patience) {
      if (Await(done)) return true;
    }
    return false;
  }
  static bool IsScanning(HWND window) {
    return IsEnabled(window, cmdStop) || IsWindowVisible(GetDlgItem(window, pgKeys));
  }
  // Selects the first row alone; the rows may be shown anew meanwhile, with none selected.
  static bool SelectFirst(const QuellixWindow& quellix, HWND list) {
    return Await([&] {
      quellix.PressKey(list, VK_END);
      quellix.PressKey(list, VK_HOME);
      return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1;
    });
  }
};

TEST_F(RegistryScanWindowTest, TheScanStartsByItselfAndWhatIsTickedGoesAndComesBack) {
  constexpr std::wstring_view kAll = L"20 entries, 20 with missing files, 0 with zero usage count";
  SeedDlls(20);
  SetRegistryText(HKEY_LOCAL_MACHINE, kDlls, L"C:\\windows\\system32\\kernel32.dll", L"3");
  const QuellixWindow quellix;
  const HWND window = quellix.Open(mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(AwaitStatus(window, kAll));
  EXPECT_FALSE(IsScanning(window));
  const HWND list = GetDlgItem(window, lstvOrphanedDLL);
  ASSERT_EQ(CountRows(list), 21);
  EXPECT_TRUE(IsRowTicked(list, 0) && !IsRowTicked(list, 20));
  const std::wstring kept = quellix.RowText(list, 0, 1), gone = quellix.RowText(list, 1, 1);
  for (const WPARAM key : {VK_RETURN, VK_HOME, VK_SPACE}) quellix.PressKey(list, key);
  ASSERT_TRUE(Await([&] { return !IsRowTicked(list, 0); }));
  EXPECT_EQ(CountRows(list), 21) << "Enter deletes nothing";
  EXPECT_FALSE(IsEnabled(window, cmdUndo)) << "nothing is deleted yet";
  PressIn(window, cmdDelete);
  ASSERT_TRUE(AwaitStatus(window, L"2 entries, 1 with missing files, 0 with zero usage count"));
  EXPECT_EQ(quellix.RowText(list, 0, 1), kept);
  EXPECT_TRUE(HasDll(kept) && !HasDll(gone) && !fs::is_empty(BackupFolder()));
  ASSERT_TRUE(AwaitEnabled(window, cmdUndo));
  PressIn(window, cmdUndo);
  ASSERT_TRUE(AwaitStatus(window, kAll));
  EXPECT_TRUE(HasDll(gone));
  EXPECT_EQ(CountRows(list), 21);
  EXPECT_FALSE(IsEnabled(window, cmdUndo));
  quellix.PressKey(list, VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(window));
}

TEST_F(RegistryScanWindowTest, StopAndClosingEndAScan) {
  constexpr int kMany = 6000;
  SeedDlls(kMany);
  const QuellixWindow quellix;
  const HWND window = quellix.Open(mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(AwaitEnabled(window, cmdStop));
  EXPECT_TRUE(Await([&] { return !IsEnabled(window, cmdDelete); }));
  PressIn(window, cmdStop);
  ASSERT_TRUE(Await([&] { return !IsEnabled(window, cmdStop); }));
  EXPECT_LT(CountRows(GetDlgItem(window, lstvOrphanedDLL)), kMany);
  EXPECT_FALSE(IsScanning(window));
  // A window closed in the middle of its scan takes nothing down with it.
  SendMessageW(window, WM_CLOSE, 0, 0);
  const HWND again = quellix.Open(mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(AwaitEnabled(again, cmdStop));
  PostMessageW(again, WM_CLOSE, 0, 0);
  ASSERT_TRUE(AwaitGone(again));
  EXPECT_TRUE(quellix.Close());
}

TEST_F(RegistryScanWindowTest, AnApplicationPathIsEditedAndItsKeyDeleted) {
  const std::wstring key = std::wstring(kApps) + L"\\";
  for (const wchar_t* name : {L"qx.exe", L"qy.exe"}) {
    SetRegistryText(HKEY_LOCAL_MACHINE, key + name, nullptr, std::wstring(L"C:\\qx none\\") + name);
  }
  const QuellixWindow quellix;
  const wchar_t* const title = L"Orphaned application path references";
  const HWND window = quellix.Open(mnuOrphanedApplicationPath, title);
  ASSERT_TRUE(AwaitStatus(window, L"2 entries, 2 orphaned"));
  const HWND list = GetDlgItem(window, lstvInvalid);
  EXPECT_FALSE(IsEnabled(window, cmdEdit)) << "no reference is selected";
  const std::wstring edited = quellix.RowText(list, 0, 0);
  for (const int button : {IDCANCEL, cmdOk}) {
    SCOPED_TRACE(button);
    ASSERT_TRUE(SelectFirst(quellix, list));
    PressIn(window, cmdEdit);
    const HWND dialog = quellix.AwaitWindow(L"Edit application path");
    EXPECT_EQ(Shown(dialog, lblAppPath), edited);
    EXPECT_EQ(Shown(dialog, txtPath), L"C:\\qx none\\" + edited);
    Type(dialog, txtPath, L"C:\\windows");
    PressIn(dialog, button);
    ASSERT_TRUE(AwaitGone(dialog));
    ASSERT_TRUE(
        AwaitStatus(window, button == cmdOk ? L"2 entries, 1 orphaned" : L"2 entries, 2 orphaned"));
  }
  EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, key + edited, nullptr), L"C:\\windows");
  PressIn(window, cmdDelete);
  ASSERT_TRUE(AwaitStatus(window, L"1 entries, 0 orphaned"));
}

TEST_F(RegistryScanWindowTest, ThoroughReferencesAreShownInFull) {
  for (const wchar_t* name : {L"b", L"a"})
    SetRegistryText(HKEY_CURRENT_USER, kOwn, name, std::wstring(L"C:\\qx none\\") + name);
  const QuellixWindow quellix;
  const HWND window = quellix.Open(mnuOrphanedFilePath, L"Orphaned File/Path Reference");
  const HWND list = GetDlgItem(window, lstvInvalid);
  ASSERT_TRUE(AwaitStatus(window, L" invalid references"));
  Click(window, chkThorough);
  ASSERT_TRUE(AwaitEnabled(window, cmdStop));
  ASSERT_TRUE(AwaitStatus(window, L" invalid references"));
  const int rows = CountRows(list);
  int own = 0;
  while (own < rows && quellix.RowText(list, own, 1) != L"a") ++own;
  ASSERT_LT(own, rows);
  EXPECT_FALSE(IsRowTicked(list, own));
  for (int i = 0; i <= own; ++i) quellix.PressKey(list, i == 0 ? VK_HOME : VK_DOWN);
  EXPECT_TRUE(AwaitText(window, txtPath, L"C:\\qx none\\a"));
  EXPECT_EQ(Shown(window, txtValue), L"a");
}

TEST_F(RegistryScanWindowTest, StartUpProgramsAreSwitchedOffAndOn) {
  SetRegistryText(HKEY_CURRENT_USER, kVersionKey, L"Version", L"win10");
  SetRegistryText(HKEY_CURRENT_USER, kRun, L"Qx a", L"\"C:\\qx none\\a.exe\" /x");
  const QuellixWindow quellix;
  const HWND window = quellix.Open(mnuStartupPrograms, L"Start-up programs");
  const HWND list = GetDlgItem(window, lstvInvalid);
  ASSERT_TRUE(AwaitPart(window, lblStatus, L" without their program"));
  PressIn(window, cmdDisable);
  ASSERT_TRUE(quellix.Answer(L"Select the entries first", IDOK));
  int own = 0;
  while (own < CountRows(list) && quellix.RowText(list, own, 0) != L"Qx a") ++own;
  ASSERT_LT(own, CountRows(list));
  EXPECT_FALSE(IsRowTicked(list, own));
  for (int i = 0; i <= own; ++i) quellix.PressKey(list, i == 0 ? VK_HOME : VK_DOWN);
  for (const auto& [button, state] :
       {std::pair(cmdDisable, L"Off, missing"), std::pair(cmdEnable, L"On, missing")}) {
    PressIn(window, button);
    ASSERT_TRUE(Await([&] { return quellix.RowText(list, own, 4) == state; }));
  }
  PressIn(window, cmdEnable);
  ASSERT_TRUE(quellix.Answer(L"None of the selected", IDOK));
}

}  // namespace
}  // namespace quellix::test
