// The program by its keyboard alone: no control is named to it, every key is pressed as a person
// does.
#include <gtest/gtest.h>

#include <algorithm>

#include "quellix_window.h"

#include <commctrl.h>

#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr WORD kAlt = VK_MENU, kShift = VK_SHIFT;

// What has the keyboard after each further press, until it is back where it was.
std::vector<HWND> Walk(HWND window, const std::vector<WORD>& keys) {
  constexpr size_t kMost = 60;
  std::vector<HWND> reached = {FocusOf(window)};
  while (reached.size() < kMost) {
    PressKeys(window, keys);
    HWND now = nullptr;
    EXPECT_TRUE(Await([&] { return (now = FocusOf(window)) && now != reached.back(); }));
    if (now == reached.front()) break;
    reached.push_back(now);
  }
  return reached;
}

// Tab goes round through all that takes input, and Shift+Tab back the same way; `pressed` is what
// Enter presses.
void ExpectRound(HWND window, int pressed) {
  SCOPED_TRACE(testing::PrintToString(TextOf(window)));
  ExpectKeys(window);
  const std::vector<HWND> there = Walk(window, {VK_TAB});
  std::vector<HWND> back = Walk(window, {kShift, VK_TAB});
  std::reverse(back.begin() + 1, back.end());
  EXPECT_GT(there.size(), 2u);
  EXPECT_EQ(there, back);
  EXPECT_EQ(LOWORD(SendMessageW(window, DM_GETDEFID, 0, 0)), pressed);
}

struct KeyboardTest : SandboxTest {
  KeyboardTest() {
    for (const char* name : {"a.tmp", "b.tmp", "c.tmp"}) WriteBytes(TempFolder() / name, "12345");
  }
  static bool Exists(const char* name) { return fs::exists(TempFolder() / name); }
  // Ticks the item that the word is the beginning of.
  static void Tick(const QuellixWindow& window, std::wstring_view word, int item) {
    ASSERT_TRUE(AwaitFocus(window.main(), lstvItems));
    TypeWord(window.main(), word);
    EXPECT_TRUE(Await([&] {
      const LRESULT row = SendMessageW(window.Control(lstvItems), LVM_GETNEXTITEM,
                                       static_cast<WPARAM>(-1), LVNI_SELECTED);
      return row == window.RowOf(item);
    }));
    Sleep(1500);  // until then a blank belongs to the word
    PressKeys(window.main(), {VK_SPACE});
    EXPECT_TRUE(Await([&] { return window.IsChecked(item); }));
  }
};

// Of three files the first is unticked, and the second kept from now on.
void LeaveTheThird(HWND preview) {
  ASSERT_TRUE(AwaitFocus(preview, lstvRun));
  PressKeys(preview, {VK_HOME});
  PressKeys(preview, {VK_SPACE});
  EXPECT_TRUE(AwaitText(preview, lblRunSummary, L"2 entries to be removed, 10 Bytes."));
  PressKeys(preview, {VK_DOWN});
  PressKeys(preview, {kAlt, L'N'});
  EXPECT_TRUE(AwaitText(preview, lblRunSummary, L"1 entry to be removed, 5 Bytes."));
}

TEST_F(KeyboardTest, WhatIsSeenIsUntickedKeptAskedAboutAndCleaned) {
  WriteSettings("DelMethod=D\r\nAsk=1\r\n");
  const QuellixWindow window;
  ExpectRound(window.main(), cmdPreview);
  Tick(window, L"temp", chkTemp);
  PressKeys(window.main(), {VK_RETURN});
  const HWND preview = window.AwaitWindow(L"Preview"), list = GetDlgItem(preview, lstvRun);
  ASSERT_EQ(CountRows(list), 3);
  EXPECT_EQ(Shown(preview, lblRunSummary), L"3 entries to be removed, 15 Bytes.");
  EXPECT_EQ(window.RowText(list, 0, 5), L"to be deleted");
  ExpectRound(preview, IDCANCEL);
  const fs::path unticked = window.RowText(list, 0, 0), kept = window.RowText(list, 1, 0);
  LeaveTheThird(preview);
  PressKeys(preview, {kAlt, L'I'});
  ASSERT_TRUE(AwaitFocus(preview, txtFilter));
  TypeWord(preview, kept.stem().wstring());
  EXPECT_TRUE(Await([&] { return CountRows(list) < 3; }));
  WriteBytes(TempFolder() / "came later.tmp", "1");

  // Enter cancels the question, and another letter than its own does nothing.
  PressKeys(preview, {kAlt, L'C'});
  const HWND question = window.AwaitMessage(L"Delete 1 file (5 Bytes) for good?");
  ASSERT_TRUE(question);
  PressKeys(question, {VK_RETURN});
  EXPECT_TRUE(AwaitGone(question) && IsWindowEnabled(preview));
  PressKeys(preview, {kAlt, L'C'});
  const HWND again = window.AwaitMessage(L"Delete 1 file (5 Bytes) for good?");
  ASSERT_TRUE(again);
  PressKeys(again, {kAlt, L'D'});
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_NE(ReadBytes(ProgramFolder() / "keep.txt").find(kept.stem().string()), std::string::npos);
  EXPECT_TRUE(fs::exists(unticked) && fs::exists(kept) && Exists("came later.tmp"));
  EXPECT_EQ(std::distance(fs::directory_iterator(TempFolder()), fs::directory_iterator()), 3);
  EXPECT_TRUE(AwaitPart(log, txtLog, L"not in the preview: 1"));
  PressKeys(log, {VK_ESCAPE});
  EXPECT_TRUE(AwaitGone(log));
  PressKeys(window.main(), {kAlt, VK_F4});
  EXPECT_TRUE(window.AwaitEnd());
}

TEST_F(KeyboardTest, ARunIsUndone) {
  WriteSettings("DelMethod=B\r\n");
  const QuellixWindow window;
  Tick(window, L"temp", chkTemp);
  PressKeys(window.main(), {kAlt, L'C'});
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_FALSE(Exists("a.tmp"));
  ASSERT_TRUE(AwaitFocus(log, IDCANCEL));
  ExpectRound(log, IDCANCEL);
  constexpr wchar_t kQuestion[] = L"Put back everything that this run backed up?";
  for (const WORD answer : {WORD{VK_RETURN}, WORD{L'Y'}}) {
    PressKeys(log, {kAlt, L'U'});
    const HWND question = window.AwaitMessage(kQuestion);
    ASSERT_TRUE(question);
    PressKeys(question, {answer});
    EXPECT_TRUE(AwaitGone(question));
    EXPECT_TRUE(answer != VK_RETURN || !Exists("a.tmp")) << "No is what Enter presses";
  }
  const HWND told = window.AwaitMessage(L"3 restored");
  ASSERT_TRUE(told);
  PressKeys(told, {VK_RETURN});
  EXPECT_TRUE(AwaitGone(told));
  for (const char* name : {"a.tmp", "b.tmp", "c.tmp"}) EXPECT_TRUE(Exists(name)) << name;
}

TEST_F(KeyboardTest, ALineIsWrittenIntoTheKeepListByItsPage) {
  WriteSettings("DelMethod=D\r\n");
  const QuellixWindow window;
  PressKeys(window.main(), {kAlt, L'T'});
  ASSERT_TRUE(window.AwaitMenu());
  PressKeys(window.main(), {L'T'});
  const HWND options = window.AwaitWindow(L"Options");
  ASSERT_TRUE(AwaitFocus(options, lstPages));
  TypeWord(options, L"ke");
  PressKeys(options, {VK_TAB});
  HWND field = nullptr;
  for (int i = 0; i < 4 && !IsOfClass(field, L"Edit"); ++i) {
    const HWND before = FocusOf(options);
    EXPECT_TRUE(Await([&] { return (field = FocusOf(options)) && field != before; }) || i > 0);
    if (!IsOfClass(field, L"Edit")) PressKeys(options, {VK_TAB});
  }
  ASSERT_TRUE(IsOfClass(field, L"Edit"));
  PressKeys(options, {kShift, L'8'});
  TypeWord(options, L"tmp");
  PressKeys(options, {VK_RETURN});
  PressKeys(options, {VK_RETURN});
  EXPECT_TRUE(AwaitGone(options));
  EXPECT_NE(ReadBytes(ProgramFolder() / "keep.txt").find("*tmp"), std::string::npos);
}

}  // namespace
}  // namespace quellix::test
