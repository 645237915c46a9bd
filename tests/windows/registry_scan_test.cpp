#include <gtest/gtest.h>

#include <set>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr const wchar_t* kDlls = L"Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
constexpr const wchar_t* kApps = L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
constexpr const wchar_t* kOwn = L"Qx window test";

void SetText(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  RegSetKeyValueW(root, key.c_str(), name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::wstring GetText(HKEY root, const std::wstring& key, const wchar_t* name) {
  wchar_t text[300] = {};
  DWORD size = sizeof(text) - sizeof(wchar_t);
  return RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS
             ? text
             : L"<missing>";
}

bool HasValue(HKEY root, const wchar_t* key, const wchar_t* name) {
  return RegGetValueW(root, key, name, RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::filesystem::path BackupFolder() { return ProgramFolder() / "Backup"; }

class RegistryScanWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    Clear();
  }
  void TearDown() override { Clear(); }

  static void Clear() {
    for (const wchar_t* key : {kDlls, kApps}) RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
    RegDeleteTreeW(HKEY_CURRENT_USER, kOwn);
    std::filesystem::remove_all(BackupFolder());
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
  static int Count(HWND window, int list) {
    return static_cast<int>(SendDlgItemMessageW(window, list, LVM_GETITEMCOUNT, 0, 0));
  }
  static std::wstring Status(HWND window) { return TextOf(GetDlgItem(window, lblStatus)); }
  // The whole registry takes its time.
  static bool AwaitStatus(HWND window, std::wstring_view end) {
    const auto done = [&] { return Status(window).ends_with(end) && Enabled(window, cmdDelete); };
    for (int patience = 0; patience < 20; ++patience) {
      if (Await(done)) return true;
    }
    return false;
  }
  static bool Enabled(HWND window, int id) {
    return IsWindowEnabled(GetDlgItem(window, id)) != FALSE;
  }
};

TEST_F(RegistryScanWindowTest, TheScanStartsByItselfAndWhatIsTickedGoes) {
  SeedDlls(20);
  DWORD uses = 3;
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, kDlls, L"C:\\windows\\system32\\kernel32.dll", REG_DWORD,
                  &uses, sizeof(uses));
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(window);
  EXPECT_FALSE(IsWindowEnabled(quellix.main()));
  ASSERT_TRUE(AwaitStatus(window, L"20 entries, 20 with missing files, 0 with zero usage count"));
  EXPECT_FALSE(Enabled(window, cmdStop) || IsWindowVisible(GetDlgItem(window, pgKeys)));
  const HWND list = GetDlgItem(window, lstvOrphanedDLL);
  ASSERT_EQ(Count(window, lstvOrphanedDLL), 21);
  EXPECT_TRUE(IsRowTicked(list, 0));
  EXPECT_FALSE(IsRowTicked(list, 20));
  EXPECT_EQ(quellix.RowText(list, 20, 1), L"C:\\windows\\system32\\kernel32.dll");
  EXPECT_EQ(quellix.RowText(list, 20, 0), L"3");

  const std::wstring kept = quellix.RowText(list, 0, 1);
  quellix.PressKey(list, VK_RETURN);
  quellix.PressKey(list, VK_HOME);
  quellix.PressKey(list, VK_SPACE);
  quellix.PressKey(list, VK_SPACE);
  quellix.PressKey(list, VK_SPACE);
  ASSERT_TRUE(Await([&] { return !IsRowTicked(list, 0); }));
  EXPECT_EQ(Count(window, lstvOrphanedDLL), 21) << "Enter deletes nothing";
  PressIn(window, cmdDelete);
  ASSERT_TRUE(AwaitStatus(window, L"2 entries, 1 with missing files, 0 with zero usage count"));
  EXPECT_EQ(Count(window, lstvOrphanedDLL), 2);
  EXPECT_EQ(quellix.RowText(list, 0, 1), kept);
  EXPECT_TRUE(HasValue(HKEY_LOCAL_MACHINE, kDlls, kept.c_str()));
  EXPECT_FALSE(std::filesystem::is_empty(BackupFolder()));
  quellix.PressKey(list, VK_ESCAPE);
  EXPECT_TRUE(Await([&] { return !IsWindow(window) && IsWindowEnabled(quellix.main()); }));

  // Back from the Backups window.
  const HWND backups = Open(quellix, mnuBackups, L"Backups");
  ASSERT_TRUE(backups);
  EXPECT_EQ(quellix.RowText(GetDlgItem(backups, lstvArchives), 0, 0), L"Registry");
  PressIn(backups, cmdRestoreAll);
  EXPECT_TRUE(Await([&] {
    return HasValue(HKEY_LOCAL_MACHINE, kDlls, L"C:\\qx none\\1.dll") &&
           HasValue(HKEY_LOCAL_MACHINE, kDlls, L"C:\\qx none\\20.dll");
  }));
}

TEST_F(RegistryScanWindowTest, StopEndsAScanWithTheRowsFoundSoFar) {
  constexpr int kMany = 6000;
  SeedDlls(kMany);
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(window);
  ASSERT_TRUE(Await([&] { return Enabled(window, cmdStop); }));
  EXPECT_FALSE(Enabled(window, cmdDelete));
  PressIn(window, cmdStop);
  ASSERT_TRUE(Await([&] { return Enabled(window, cmdDelete); }));
  EXPECT_LT(Count(window, lstvOrphanedDLL), kMany);
  EXPECT_EQ(Status(window), L"");
  EXPECT_FALSE(Enabled(window, cmdStop) || IsWindowVisible(GetDlgItem(window, pgKeys)));

  // A window closed in the middle of its scan takes nothing down with it.
  SendMessageW(window, WM_CLOSE, 0, 0);
  const HWND again = Open(quellix, mnuOrphanedDLL, L"Orphaned Shared DLLs");
  ASSERT_TRUE(again);
  ASSERT_TRUE(Await([&] { return Enabled(again, cmdStop); }));
  PostMessageW(again, WM_CLOSE, 0, 0);
  ASSERT_TRUE(Await([&] { return !IsWindow(again); }));
  EXPECT_TRUE(IsWindowEnabled(quellix.main()));
  EXPECT_TRUE(quellix.Close());
}

TEST_F(RegistryScanWindowTest, AnApplicationPathIsEditedAndItsKeyDeleted) {
  const std::wstring key = std::wstring(kApps) + L"\\qx.exe",
                     other = std::wstring(kApps) + L"\\qy.exe";
  SetText(HKEY_LOCAL_MACHINE, key, nullptr, L"C:\\qx none\\qx.exe");
  SetText(HKEY_LOCAL_MACHINE, other, nullptr, L"C:\\qx none\\qy.exe");
  const QuellixWindow quellix;
  const wchar_t* const title = L"Orphaned application path references";
  const HWND window = Open(quellix, mnuOrphanedApplicationPath, title);
  ASSERT_TRUE(window);
  ASSERT_TRUE(AwaitStatus(window, L"2 entries, 2 orphaned"));
  const HWND list = GetDlgItem(window, lstvInvalid);
  PressIn(window, cmdEdit);
  const HWND hint = quellix.AwaitMessage(L"Select the one reference");
  ASSERT_TRUE(hint);
  PressIn(hint, IDOK);
  ASSERT_TRUE(Await([&] { return !IsWindow(hint); }));

  quellix.PressKey(list, VK_END);
  quellix.PressKey(list, VK_HOME);
  ASSERT_TRUE(Await([&] { return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1; }));
  const std::wstring edited = quellix.RowText(list, 0, 0);
  for (const int button : {IDCANCEL, cmdOk}) {
    SCOPED_TRACE(button);
    if (button == cmdOk) {
      // The rows may be shown anew meanwhile, with none selected.
      ASSERT_TRUE(Await([&] {
        quellix.PressKey(list, VK_END);
        quellix.PressKey(list, VK_HOME);
        return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1;
      }));
    }
    PressIn(window, cmdEdit);
    const HWND dialog = quellix.AwaitWindow(L"Edit application path");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(TextOf(GetDlgItem(dialog, lblAppPath)), edited);
    EXPECT_EQ(TextOf(GetDlgItem(dialog, txtPath)), L"C:\\qx none\\" + edited);
    SetDlgItemTextW(dialog, txtPath, L"C:\\windows");
    PressIn(dialog, button);
    ASSERT_TRUE(Await([&] { return !IsWindow(dialog); }));
    ASSERT_TRUE(
        AwaitStatus(window, button == cmdOk ? L"2 entries, 1 orphaned" : L"2 entries, 2 orphaned"));
  }
  EXPECT_EQ(GetText(HKEY_LOCAL_MACHINE, std::wstring(kApps) + L"\\" + edited, nullptr),
            L"C:\\windows");
  PressIn(window, cmdDelete);
  ASSERT_TRUE(AwaitStatus(window, L"1 entries, 0 orphaned"));
  EXPECT_EQ(quellix.RowText(list, 0, 0), edited);
}

TEST_F(RegistryScanWindowTest, ThoroughReferencesAreShownInFullAndSorted) {
  for (const wchar_t* name : {L"b", L"a"}) {
    SetText(HKEY_CURRENT_USER, kOwn, name, std::wstring(L"C:\\qx none\\") + name);
  }
  const QuellixWindow quellix;
  const HWND window = Open(quellix, mnuOrphanedFilePath, L"Orphaned File/Path Reference");
  ASSERT_TRUE(window);
  ASSERT_TRUE(AwaitStatus(window, L" invalid references"));
  const HWND list = GetDlgItem(window, lstvInvalid);
  const int plain = Count(window, lstvInvalid);
  SendDlgItemMessageW(window, chkThorough, BM_CLICK, 0, 0);
  ASSERT_TRUE(Await([&] { return !Enabled(window, cmdDelete); }));
  ASSERT_TRUE(AwaitStatus(window, L" invalid references"));
  ASSERT_GE(Count(window, lstvInvalid), plain + 2);
  const int rows = Count(window, lstvInvalid);
  const auto find = [&](const wchar_t* name) {
    for (int i = 0; i < rows; ++i) {
      if (quellix.RowText(list, i, 0) == std::wstring(L"HKEY_CURRENT_USER:") + kOwn + L"\\" &&
          quellix.RowText(list, i, 1) == name) {
        return i;
      }
    }
    return -1;
  };
  const int a = find(L"a"), b = find(L"b");
  ASSERT_TRUE(a >= 0 && b > a) << a << " " << b;
  EXPECT_FALSE(IsRowTicked(list, a));
  for (int i = 0; i <= a; ++i) quellix.PressKey(list, i == 0 ? VK_HOME : VK_DOWN);
  EXPECT_TRUE(Await([&] { return TextOf(GetDlgItem(window, txtPath)) == L"C:\\qx none\\a"; }));
  EXPECT_EQ(TextOf(GetDlgItem(window, txtValue)), L"a");

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

TEST_F(RegistryScanWindowTest, EveryControlHasAKeyOfItsOwnAndATabStop) {
  struct {
    int entry;
    const wchar_t* title;
    size_t letters;
  } const kWindows[] = {{mnuOrphanedDLL, L"Orphaned Shared DLLs", 5},
                        {mnuOrphanedFilePath, L"Orphaned File/Path Reference", 8},
                        {mnuOrphanedApplicationPath, L"Orphaned application path references", 6},
                        {mnuOrphanedHelpFile, L"Orphaned help file references", 6},
                        {mnuOrphanedActivex, L"Orphaned ActiveX control references", 4}};
  const QuellixWindow quellix;
  for (const auto& row : kWindows) {
    SCOPED_TRACE(::testing::PrintToString(row.title));
    const HWND window = Open(quellix, row.entry, row.title);
    ASSERT_TRUE(window);
    ASSERT_TRUE(Await([&] { return Enabled(window, cmdDelete); }));
    std::set<wchar_t> letters;
    for (HWND control = GetWindow(window, GW_CHILD); control;
         control = GetWindow(control, GW_HWNDNEXT)) {
      const std::wstring text = TextOf(control);
      const size_t ampersand = text.find(L'&');
      if (ampersand == text.npos) continue;
      EXPECT_TRUE(letters.insert(static_cast<wchar_t>(towlower(text[ampersand + 1]))).second)
          << ::testing::PrintToString(text);
    }
    EXPECT_EQ(letters.size(), row.letters);
    SendMessageW(window, WM_CLOSE, 0, 0);
    ASSERT_TRUE(Await([&] { return !IsWindow(window); }));
  }
}

}  // namespace
}  // namespace quellix::test
