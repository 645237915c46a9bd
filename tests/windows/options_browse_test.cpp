#include <gtest/gtest.h>

#include "options_window.h"

#include <shlobj.h>

namespace quellix::test {
namespace {

constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr int kFileName = 0x47C, kFileNameWithoutList = 0x480;  // of the system's file dialogs

// The Options window with the system's dialogs it opens, and what it shows after Apply.
class OptionsBrowseTest : public ::testing::Test {
 protected:
  void SetUp() override { Reset(); }
  void TearDown() override { Reset(); }

  static void Reset() {
    ResetSandbox();
    for (const char* name : {"srch.txt", "UDIFO.txt", "UDFI.txt", "UDFO.txt"}) {
      std::filesystem::remove(ProgramFolder() / name);
    }
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Quellix");
  }

  // Presses a Browse button, waits for the dialog, lets `choose` act in it and presses a button.
  static bool Browse(const QuellixWindow& program, HWND button,
                     const std::function<void(HWND dialog)>& choose, int answer) {
    Press(button);
    HWND dialog = nullptr;
    const HWND owner = GetAncestor(button, GA_ROOT);
    if (!Await([&] {
          dialog = GetLastActivePopup(owner);
          return dialog != owner && IsWindowVisible(dialog) && !IsWindowEnabled(owner);
        })) {
      return false;
    }
    EXPECT_FALSE(IsWindowEnabled(program.main()));
    choose(dialog);
    PressIn(dialog, answer);
    return Await([&] { return !IsWindow(dialog) && IsWindowEnabled(owner); });
  }

  const std::filesystem::path folder_ = L"C:\\quellix-tests\\br\u00F6wse";
  const std::filesystem::path own_ =
      L"C:\\quellix-tests\\own";  // no backups are kept where cleaned
};

TEST_F(OptionsBrowseTest, WhatIsChosenInADialogArrivesInItsField) {
  WriteBytes(folder_ / "chosen.txt", "1");
  std::filesystem::create_directories(own_);
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  const auto folder = [&](HWND dialog) { program.SelectFolder(dialog, folder_); };
  const auto own = [&](HWND dialog) { program.SelectFolder(dialog, own_); };
  const auto file = [&](HWND dialog) {
    HWND name = nullptr;
    ASSERT_TRUE(Await([&] {
      name = GetDlgItem(dialog, kFileName);
      if (!name) name = GetDlgItem(dialog, kFileNameWithoutList);
      return name != nullptr;
    }));
    const std::wstring path = folder_ / L"chosen.txt";
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  };
  const struct {
    const char* name;
    OptionsPage page;
    int button, field;
    std::function<void(HWND)> choose;
    std::wstring want;
  } kRows[] = {
      {"backups", OptionsPage::kDeletion, cmdBrowseBackup, txtBackup, folder, folder_},
      {"ignored folders", OptionsPage::kIgnoredFolders, cmdBrowse, txtEntry, folder,
       folder_.wstring() + L"\\"},
      {"own files", OptionsPage::kUserFiles, cmdBrowse, txtEntry, file, folder_ / L"chosen.txt"},
      {"own folders", OptionsPage::kUserFolders, cmdBrowse, txtEntry, own, own_.wstring() + L"\\"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    options.GoTo(row.page);
    const std::wstring before = TextOf(options.Control(row.field));
    ASSERT_TRUE(Browse(program, options.Control(row.button), row.choose, IDCANCEL));
    EXPECT_EQ(TextOf(options.Control(row.field)), before);
    ASSERT_TRUE(Browse(program, options.Control(row.button), row.choose, IDOK));
    EXPECT_EQ(TextOf(options.Control(row.field)), row.want);
    if (row.button == cmdBrowse) options.Click(cmdAdd);
  }
  EXPECT_TRUE(options.PressAndClose(IDOK));
  const std::string path = "C:\\quellix-tests\\br\xC3\xB6wse\\";
  EXPECT_EQ(ReadBytes(ProgramFolder() / "UDIFO.txt"), path + "\r\n");
  EXPECT_EQ(ReadBytes(ProgramFolder() / "UDFI.txt"), path + "chosen.txt\r\n");
  EXPECT_EQ(ReadBytes(ProgramFolder() / "UDFO.txt"), "C:\\quellix-tests\\own\\\r\n");
  EXPECT_NE(ReadBytes(ProgramFolder() / "Settings.ini").find("Path=" + path + "\r\n"),
            std::string::npos);
}

TEST_F(OptionsBrowseTest, ApplyLeavesTheKeyboardAndThePagesShowWhatIsSaved) {
  const std::wstring changed = L"changed by another program";
  RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Quellix", REG_SZ, changed.c_str(),
                  static_cast<DWORD>((changed.size() + 1) * sizeof(wchar_t)));
  const QuellixWindow program;
  const OptionsWindow options(program);
  ASSERT_TRUE(options.window());
  options.GoTo(OptionsPage::kGeneral);
  EXPECT_NE(TextOf(options.Control(lblRunEntry)), L"");
  options.GoTo(OptionsPage::kDeletion);
  options.Type(txtBackup, folder_);
  PostMessageW(options.window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(options.Control(cmdApply)),
               TRUE);
  program.PressKey(options.Control(cmdApply), VK_SPACE);
  ASSERT_TRUE(Await([&] { return !options.IsEnabled(cmdApply); }));
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  ASSERT_TRUE(GetGUIThreadInfo(GetWindowThreadProcessId(options.window(), nullptr), &thread));
  EXPECT_TRUE(IsWindowEnabled(thread.hwndFocus));
  options.GoTo(OptionsPage::kGeneral);
  EXPECT_EQ(TextOf(options.Control(lblRunEntry)), L"");
  options.GoTo(OptionsPage::kBackups);
  EXPECT_EQ(TextOf(options.Control(txtBackupHint)), folder_.wstring() + L"\\");
}

}  // namespace
}  // namespace quellix::test
