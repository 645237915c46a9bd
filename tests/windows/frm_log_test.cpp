#include <gtest/gtest.h>

#include "quellix_window.h"
#include "support/holds.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr wchar_t kRunHistory[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU";

const std::string kExpectedLog =
    "Temporary files... Files Deleted: 2 Space Gained: 1.00 KB\r\n"
    "Windows run history... Files Deleted: 1\r\n"
    "\r\n" +
    std::string(67, '-') + "\r\nFiles Deleted:  2   Space Gained:  1.00 KB";

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

TEST(FrmLogTest, ShowsWhatTheRunDidAndSavesItsText) {
  const fs::path folder = L"C:\\quellix-tests\\log", file = folder / L"\u00fcber.log";
  ResetSandbox();
  WriteBytes(TempFolder() / "nested" / "deep" / "b.tmp", std::string(1000, 'b'));
  WriteBytes(TempFolder() / L"\u6771\u4eac.tmp", std::string(24, 'c'));
  RegDeleteKeyW(HKEY_CURRENT_USER, kRunHistory);
  SetRegistryText(HKEY_CURRENT_USER, kRunHistory, L"a", L"notepad\\1");
  fs::remove_all(folder);
  fs::create_directories(folder);
  const QuellixWindow window;
  EXPECT_EQ(TextOf(window.Control(lblCleanDate)), L"Never");
  for (const int item : {chkTemp, chkRunMRU}) window.Click(item);
  window.Press(cmdClean);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_TRUE(fs::is_empty(TempFolder()));
  EXPECT_EQ(RegistryText(HKEY_CURRENT_USER, kRunHistory, L"a"), L"<missing>");
  const std::wstring shown = Shown(log, txtLog);
  EXPECT_EQ(WithoutFreeSpace(std::string(shown.begin(), shown.end())), kExpectedLog);
  EXPECT_EQ(Shown(log, lblFiles) + L", " + Shown(log, lblSpace), L"2, 1.00 KB");
  const wchar_t* const kRows[][2] = {{L"Folders and Files", L"Cleaned"},
                                     {L"Miscellaneous", L"Cleaned"},
                                     {L"Internet Explorer", L"Not Cleaned: not chosen"}};
  for (int row = 0; row < 3; ++row) {
    EXPECT_EQ(window.RowText(GetDlgItem(log, lstvCategories), row, 0), kRows[row][0]);
    EXPECT_EQ(window.RowText(GetDlgItem(log, lstvCategories), row, 1), kRows[row][1]);
  }
  EXPECT_NE(TextOf(window.Control(lblCleanDate)).find(L':'), std::wstring::npos);

  PressIn(log, cmdSave);
  const HWND dialog = window.AwaitWindow(L"Save As");
  HWND name = nullptr;
  ASSERT_TRUE(Await([&] { return (name = FindEdit(dialog, L"cleanup")) != nullptr; }));
  EXPECT_FALSE(IsWindowEnabled(window.main()));  // a run would take the dialog away
  const std::wstring path = folder / L"\u00fcber";
  SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  PressIn(dialog, IDOK);
  EXPECT_TRUE(Await([&] { return WithoutFreeSpace(ReadBytes(file)) == kExpectedLog; }));
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(window.main()); }));
  window.PressKey(GetDlgItem(log, txtLog), VK_ESCAPE);
  EXPECT_TRUE(AwaitGone(log));
}

}  // namespace
}  // namespace quellix::test
