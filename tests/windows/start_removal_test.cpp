// What is in use and left to the next start of Windows: from the question to that start.
#include <gtest/gtest.h>

#include <memory>

#include "quellix_window.h"
#include "support/embedded_win32.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr const wchar_t* kListKey = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
constexpr const wchar_t* kListValue = L"PendingFileRenameOperations";

// The system's list, its texts behind one another; "" for none.
std::wstring StartList() {
  std::wstring text(4096, L'\0');
  DWORD size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue, RRF_RT_REG_MULTI_SZ,
                                      nullptr, text.data(), &size);
  text.resize(status == ERROR_SUCCESS ? size / sizeof(wchar_t) : 0);
  std::erase(text, L'\0');
  return text;
}

// What the system does first of all at each start.
void StartWindows() {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  std::wstring line = L"wineboot.exe";
  ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &start, &process));
  WaitForSingleObject(process.hProcess, 60000);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

// The further choice of a question; null for none.
HWND ChoiceIn(HWND question) {
  HWND box = nullptr;
  while ((box = FindWindowExW(question, box, L"Button", nullptr)) != nullptr) {
    if ((GetWindowLongW(box, GWL_STYLE) & BS_TYPEMASK) == BS_AUTOCHECKBOX) return box;
  }
  return nullptr;
}

struct LeftToStartTest : SandboxTest {
  LeftToStartTest() {
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue);
    fs::remove_all(folder_);
    for (const fs::path& file : {used_, free_}) WriteBytes(file, "12345");
    Unpack(L"window_owner", owner_);
    WriteSettings("Ask=1\r\nDelMethod=D\r\n");
  }
  void TearDown() override {
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kListKey, kListValue);
    fs::remove_all(folder_);
  }
  // Of the preview of the item that is ticked.
  static HWND Question(const QuellixWindow& window) {
    window.Press(cmdPreview);
    PressIn(window.AwaitWindow(L"Preview"), cmdCleanTicked);
    return window.AwaitMessage(L"for good?");
  }
  static void Leave(const QuellixWindow& window, HWND question) {
    PressIn(question, IDCANCEL);
    ASSERT_TRUE(AwaitGone(question));
    ASSERT_TRUE(CloseAndAwait(window.AwaitWindow(L"Preview")));
  }

  const fs::path folder_ = L"C:\\windows\\LiveKernelReports", used_ = folder_ / "used.dmp",
                 free_ = folder_ / "free.dmp", owner_ = L"C:\\quellix-tests\\windows_owner.dll";
};

TEST_F(LeftToStartTest, TheChoiceIsOfThePreviewThatFoundSomethingInUse) {
  const QuellixWindow window;
  window.Click(chkDump);
  const std::pair<const char*, bool> kRows[] = {
      {"nothing is in use", false}, {"one is", true}, {"none any more", false}};
  for (const auto& [name, is_used] : kRows) {
    SCOPED_TRACE(name);
    const auto held = is_used ? std::make_unique<HeldFile>(used_) : nullptr;
    const HWND question = Question(window);
    const HWND box = ChoiceIn(question);
    ASSERT_EQ(box != nullptr, is_used);
    if (box) {
      EXPECT_EQ(TextOf(box),
                L"Have Windows remove at its next start what is in use in its own folder (1 in use "
                L"in all)");
      EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    }
    Leave(window, question);
  }
  EXPECT_TRUE(fs::exists(used_) && fs::exists(free_) && StartList().empty());
}

TEST_F(LeftToStartTest, WhatIsChosenGoesAtTheNextStartAndOnlyThen) {
  {
    const HeldFile held(used_);
    const QuellixWindow window;
    window.Load(owner_);
    window.Click(chkDump);
    const HWND question = Question(window);
    ASSERT_TRUE(ChoiceIn(question));
    SendMessageW(ChoiceIn(question), BM_CLICK, 0, 0);
    PressIn(question, kYes);
    const HWND log = window.AwaitWindow(L"Cleaning log");
    EXPECT_NE(Shown(log, txtLog).find(L"Left to the next start of Windows: 1 file(s)"),
              std::wstring::npos)
        << testing::PrintToString(Shown(log, txtLog));
    EXPECT_EQ(StartList(), L"\\??\\" + used_.wstring());
    EXPECT_TRUE(fs::exists(used_) && !fs::exists(free_));
    ASSERT_TRUE(CloseAndAwait(log));
    // It was chosen for that run alone, and the file stays on the list once.
    WriteBytes(free_, "12345");
    PressIn(Question(window), kYes);
    const HWND second = window.AwaitWindow(L"Cleaning log");
    EXPECT_EQ(Shown(second, txtLog).find(L"Left to the next start"), std::wstring::npos);
    EXPECT_EQ(StartList(), L"\\??\\" + used_.wstring());
  }
  ASSERT_TRUE(fs::exists(used_));
  StartWindows();
  EXPECT_FALSE(fs::exists(used_));
  EXPECT_EQ(StartList(), L"");
}

}  // namespace
}  // namespace quellix::test
