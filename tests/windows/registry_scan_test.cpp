
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

// The byte that tells whether an entry is switched off; -1 for none.
int ApprovalOf(const wchar_t* name) {
  BYTE bytes[12];
  DWORD size = sizeof bytes;
  const LSTATUS status =
      RegGetValueW(HKEY_CURRENT_USER, kApproved, name, RRF_RT_REG_BINARY, nullptr, bytes, &size);
  return status == ERROR_SUCCESS && size == sizeof bytes ? bytes[0] : -1;
}

bool HasDll(const std::wstring& name) {
  return RegGetValueW(HKEY_LOCAL_MACHINE, kDlls, name.c_str(), RRF_RT_ANY, nullptr, nullptr,
                      nullptr) == ERROR_SUCCESS;
}

struct RegistryScanWindowTest : testing::Test {
  void SetUp() override {
    ResetSandbox();
    Clear();
  }
  void TearDown() override { Clear(); }

  static void Clear() {
    for (const wchar_t* key : {kDlls, kApps}) RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
    RegDeleteTreeW(HKEY_CURRENT_USER, kOwn);
    RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
    for (const wchar_t* name : {L"Qx a", L"Qx b"}) {
      RegDeleteKeyValueW(HKEY_CURRENT_USER, kRun, name);
      RegDeleteKeyValueW(HKEY_CURRENT_USER, kApproved, name);
    }
    fs::remove_all(BackupFolder());
  }
  static void SeedDlls(int count) {
    for (DWORD i = 1; i <= static_cast<DWORD>(count); ++i) {
      const std::wstring name = L"C:\\qx none\\" + std::to_wstring(i) + L".dll";
      const DWORD uses = i % 200 + 1;
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, kDlls, name.c_str(), REG_DWORD, &uses, sizeof(uses));
    }
  }
  static HWND Open(const QuellixWindow& quellix, int entry, const wchar_t* title) {
    quellix.Choose(entry);
    return quellix.AwaitWindow(title);
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

TEST_F(RegistryScanWindowTest, WhatAWindowDeletedComesBackInIt) {
  constexpr std::wstring_view kAll = L"4 entries, 5 with missing files, 0 with zero usage count";
  SeedDlls(5);
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  const HWND list = GetDlgItem(window, lstvOrphanedDLL);
  ASSERT_TRUE(AwaitStatus(window, kAll));
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(IsEnabled(window, cmdUndo)) << "nothing is deleted yet";
    PressIn(window, cmdDelete);
    ASSERT_TRUE(AwaitStatus(window, L"0 entries, 0 with missing files, 0 with zero usage count"));
    EXPECT_FALSE(HasDll(L"C:\\qx none\\1.dll"));
    ASSERT_TRUE(AwaitEnabled(window, cmdUndo));
    PressIn(window, cmdUndo);
    ASSERT_TRUE(AwaitStatus(window, kAll));
    EXPECT_TRUE(HasDll(L"C:\\qx none\\1.dll") && HasDll(L"C:\\qx none\\5.dll"));
    EXPECT_EQ(CountRows(list), 5);
  }
  EXPECT_TRUE(CloseAndAwait(window));
}

TEST_F(RegistryScanWindowTest, TheScanStartsByItselfAndWhatIsTickedGoes) {
  SeedDlls(20);
  DWORD uses = 3;
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, kDlls, L"C:\\windows\\system32\\kernel32.dll", REG_DWORD,
                  &uses, sizeof(uses));
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(AwaitStatus(window, L"20 entries, 20 with missing files, 0 with zero usage count"));
  EXPECT_FALSE(IsScanning(window));
  const HWND list = GetDlgItem(window, lstvOrphanedDLL);
  ASSERT_EQ(CountRows(list), 21);
  EXPECT_TRUE(IsRowTicked(list, 0) && !IsRowTicked(list, 20));
  const std::wstring kept = quellix.RowText(list, 0, 1);
  for (const WPARAM key : {VK_RETURN, VK_HOME, VK_SPACE}) quellix.PressKey(list, key);
  ASSERT_TRUE(Await([&] { return !IsRowTicked(list, 0); }));
  EXPECT_EQ(CountRows(list), 21) << "Enter deletes nothing";
  PressIn(window, cmdDelete);
  ASSERT_TRUE(AwaitStatus(window, L"2 entries, 1 with missing files, 0 with zero usage count"));
  EXPECT_EQ(quellix.RowText(list, 0, 1), kept);
  EXPECT_TRUE(HasDll(kept) && !fs::is_empty(BackupFolder()));
  quellix.PressKey(list, VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(window));

  // Back from the Backups window.
  const HWND backups = Open(quellix, mnuBackups, L"Backups");
  EXPECT_EQ(quellix.RowText(GetDlgItem(backups, lstvArchives), 0, 0), L"Registry");
  PressIn(backups, cmdRestoreAll);
  EXPECT_TRUE(
      Await([] { return HasDll(L"C:\\qx none\\1.dll") && HasDll(L"C:\\qx none\\20.dll"); }));
}

TEST_F(RegistryScanWindowTest, StopAndClosingEndAScan) {
  constexpr int kMany = 6000;
  SeedDlls(kMany);
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(AwaitEnabled(window, cmdStop));
  EXPECT_TRUE(Await([&] { return !IsEnabled(window, cmdDelete); }));
  PressIn(window, cmdStop);
  ASSERT_TRUE(Await([&] { return !IsEnabled(window, cmdStop); }));
  EXPECT_LT(CountRows(GetDlgItem(window, lstvOrphanedDLL)), kMany);
  EXPECT_FALSE(IsScanning(window));
  // A window closed in the middle of its scan takes nothing down with it.
  SendMessageW(window, WM_CLOSE, 0, 0);
  const HWND again = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
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
  const HWND window = Open(quellix, mnuOrphanedApplicationPath, title);
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

TEST_F(RegistryScanWindowTest, ThoroughReferencesAreShownInFullAndSorted) {
  for (const wchar_t* name : {L"b", L"a"})
    SetRegistryText(HKEY_CURRENT_USER, kOwn, name, std::wstring(L"C:\\qx none\\") + name);
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedFilePath, L"Orphaned File/Path Reference");
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

  // A click on a heading turns the order around.
  const HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
  RECT place{};
  GetClientRect(header, &place);
  const LPARAM at = MAKELPARAM(20, place.bottom / 2);
  SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
  SendMessageW(header, WM_LBUTTONUP, 0, at);
  EXPECT_TRUE(
      Await([&] { return quellix.RowText(list, 0, 0) >= quellix.RowText(list, rows - 1, 0); }));
}

TEST_F(RegistryScanWindowTest, StartUpProgramsAreSwitchedOffAndDeleted) {
  SetRegistryText(HKEY_CURRENT_USER, kVersionKey, L"Version", L"win10");
  for (const wchar_t* name : {L"Qx a", L"Qx b"})
    SetRegistryText(HKEY_CURRENT_USER, kRun, name, L"\"C:\\qx none\\a.exe\" /x");
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuStartupPrograms, L"Start-up programs");
  const HWND list = GetDlgItem(window, lstvInvalid);
  ASSERT_TRUE(AwaitPart(window, lblStatus, L" without their program"));
  PressIn(window, cmdDisable);
  ASSERT_TRUE(quellix.Answer(L"Select the entries first", IDOK));
  int own = 0;
  while (own < CountRows(list) && quellix.RowText(list, own, 0) != L"Qx a") ++own;
  ASSERT_LT(own, CountRows(list));
  EXPECT_FALSE(IsRowTicked(list, own));
  for (int i = 0; i <= own; ++i) quellix.PressKey(list, i == 0 ? VK_HOME : VK_DOWN);
  const struct {
    int button, first;
    const wchar_t* state;
  } kRows[] = {{cmdDisable, 3, L"Off, missing"}, {cmdEnable, 2, L"On, missing"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.state);
    PressIn(window, row.button);
    ASSERT_TRUE(Await([&] { return quellix.RowText(list, own, 4) == row.state; }));
    EXPECT_EQ(ApprovalOf(L"Qx a"), row.first);
  }
  PressIn(window, cmdEnable);
  ASSERT_TRUE(quellix.Answer(L"None of the selected", IDOK));
  quellix.PressKey(list, VK_SPACE);
  ASSERT_TRUE(Await([&] { return IsRowTicked(list, own); }));
  PressIn(window, cmdDelete);
  ASSERT_TRUE(Await([] { return RegistryText(HKEY_CURRENT_USER, kRun, L"Qx a") == L"<missing>"; }));
  EXPECT_NE(RegistryText(HKEY_CURRENT_USER, kRun, L"Qx b"), L"<missing>");
  EXPECT_FALSE(fs::is_empty(BackupFolder()));
}

}  // namespace
}  // namespace quellix::test
