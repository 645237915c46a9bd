#include <gtest/gtest.h>

#include <string>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr wchar_t kRunHistory[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU";

void SetRunHistory(const wchar_t* name, const std::wstring& text) {
  const DWORD size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kRunHistory, name, REG_SZ, text.c_str(), size),
            ERROR_SUCCESS);
}

DWORD CountRunHistory() {
  HKEY key = nullptr;
  DWORD count = 0;
  RegOpenKeyExW(HKEY_CURRENT_USER, kRunHistory, 0, KEY_READ, &key);
  RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                   nullptr, nullptr, nullptr);
  RegCloseKey(key);
  return count;
}

const std::string kDashes(67, '-');
const std::string kExpectedLog =
    "Temporary files... Files Deleted: 3 Space Gained: 1.50 KB\r\n"
    "Windows run history... Files Deleted: 3\r\n"
    "\r\n" +
    kDashes +
    "\r\n"
    "Files Deleted:  3   Space Gained:  1.50 KB";

// The text box inside a window, however deep, that holds a text.
HWND FindEdit(HWND window, std::wstring_view text) {
  HWND child = nullptr;
  while ((child = FindWindowExW(window, child, nullptr, nullptr)) != nullptr) {
    wchar_t window_class[20] = {};
    GetClassNameW(child, window_class, 20);
    if (window_class == std::wstring_view(L"Edit") && TextOf(child) == text) return child;
    if (const HWND found = FindEdit(child, text)) return found;
  }
  return nullptr;
}

class FrmLogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetSandbox();
    WriteBytes(TempFolder() / "a.tmp", std::string(512, 'a'));
    WriteBytes(TempFolder() / "nested" / "deep" / "b.tmp", std::string(1000, 'b'));
    WriteBytes(TempFolder() / L"\u6771\u4eac.tmp", std::string(24, 'c'));
    SetRunHistory(L"a", L"notepad\\1");
    SetRunHistory(L"b", L"regedit\\1");
    SetRunHistory(L"MRUList", L"ba");
  }

  // Runs the two items; returns the log window.
  static HWND Clean(const QuellixWindow& window) {
    window.Click(chkTemp);
    window.Click(chkRunMRU);
    window.Press(cmdClean);
    return window.AwaitWindow(L"Cleaning log");
  }
};

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

TEST_F(FrmLogTest, ShowsWhatTheRunDid) {
  const QuellixWindow window;
  EXPECT_EQ(TextOf(window.Control(lblCleanDate)), L"Never");
  const HWND log = Clean(window);
  ASSERT_TRUE(log);
  EXPECT_TRUE(std::filesystem::is_empty(TempFolder()));
  EXPECT_EQ(CountRunHistory(), 0u);
  EXPECT_EQ(TextOf(GetDlgItem(log, txtLog)), Wide(kExpectedLog));
  EXPECT_EQ(TextOf(GetDlgItem(log, lblFiles)), L"3");
  EXPECT_EQ(TextOf(GetDlgItem(log, lblSpace)), L"1.50 KB");
  const wchar_t* const kRows[][2] = {{L"Folders and Files", L"Cleaned"},
                                     {L"Miscellaneous", L"Cleaned"},
                                     {L"Internet Explorer", L"Not Cleaned: not chosen"},
                                     {L"Firefox", L"Not Cleaned: not chosen"},
                                     {L"Plugins", L"Not Cleaned: not chosen"},
                                     {L"System Registry", L"Cleaned"}};
  const HWND list = GetDlgItem(log, lstvCategories);
  for (int row = 0; row < 6; ++row) {
    EXPECT_EQ(window.RowText(list, row, 0), kRows[row][0]);
    EXPECT_EQ(window.RowText(list, row, 1), kRows[row][1]) << row;
  }
  EXPECT_NE(ReadBytes(ProgramFolder() / "Settings.ini").find("LastCleaned="), std::string::npos);
  EXPECT_TRUE(TextOf(window.Control(lblCleanDate)).find(L':') != std::wstring::npos);

  window.PressKey(GetDlgItem(log, txtLog), VK_ESCAPE);
  EXPECT_TRUE(Await([&] { return !IsWindow(log); }));
  window.Press(cmdClean);  // a second run finds nothing left
  const HWND again = window.AwaitWindow(L"Cleaning log");
  EXPECT_EQ(TextOf(GetDlgItem(again, lblFiles)), L"0");
}

TEST_F(FrmLogTest, SavesTheText) {
  const std::filesystem::path folder = L"C:\\quellix-tests\\log";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const QuellixWindow window;
  const HWND log = Clean(window);
  PressIn(log, cmdSave);
  const HWND dialog = window.AwaitWindow(L"Save As");
  ASSERT_TRUE(dialog);
  HWND name = nullptr;
  ASSERT_TRUE(Await([&] { return (name = FindEdit(dialog, L"cleanup")) != nullptr; }));
  EXPECT_FALSE(IsWindowEnabled(window.main()));  // a run would take the dialog away
  const std::wstring path = folder / L"\u00fcber";
  SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  PressIn(dialog, IDOK);
  const std::filesystem::path file = folder / L"\u00fcber.log";
  EXPECT_TRUE(Await([&] { return ReadBytes(file) == kExpectedLog; }));
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(window.main()); }));
}

}  // namespace
}  // namespace quellix::test
