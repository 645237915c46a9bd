#include <gtest/gtest.h>

#include <set>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

// The 1st to 30th value of chkItems.txt that are set; the rest are not.
std::string CheckStates(const std::set<int>& set) {
  std::string line;
  for (int place = 1; place <= 30; ++place) {
    line += (place > 1 ? "," : "") + std::string(set.contains(place) ? "1" : "0");
  }
  return line + "\r\n";
}

class FrmMainTest : public ::testing::Test {
 protected:
  void SetUp() override { ResetSandbox(); }

  static int CountChecked(const QuellixWindow& window, int first, int last) {
    int count = 0;
    for (int box = first; box <= last; ++box) count += window.IsChecked(box);
    return count;
  }
  static void SeedCheckStates(const std::set<int>& set) {
    WriteBytes(ProgramFolder() / "chkItems.txt", CheckStates(set));
  }
  // Wiping byte by byte keeps a run busy until it is stopped.
  static void SeedEndlessRun() {
    SeedCheckStates({22});
    WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\nDelMethod=W\r\n");
    WriteBytes(TempFolder() / "large.tmp", std::string(4 << 20, 'x'));
  }
  static bool AwaitRun(const QuellixWindow& window) {
    return Await(
        [&] { return window.IsEnabled(cmdStop) && IsWindowVisible(window.Control(imgCurrent)); });
  }
};

TEST_F(FrmMainTest, AHeadingChecksItsGroupAndTheBoxBelowEveryItem) {
  const struct {
    const char* name;
    int heading, first, last;   // boxes that belong to the heading
    std::set<int> all_but_one;  // places in chkItems.txt
  } kGroups[] = {
      {"Folders and Files", lblFolderFiles, chkRecycleBin, chkTemp, {1, 2, 3, 4, 6, 7, 10, 11, 12}},
      {"Miscellaneous", lblMiscellaneous, chkPlugins, chkFindHistory, {5, 19, 20, 21, 23}},
      {"Internet Explorer", lblInternet, chkCache, chkActiveX, {13, 14, 15, 16, 17}},
      {"Firefox", lblFirefox, chkCleanMozillaCache, chkCleanMozillaDownloads, {25, 26, 27, 28, 29}},
  };
  std::set<int> seeds;
  for (const auto& group : kGroups)
    seeds.insert(group.all_but_one.begin(), group.all_but_one.end());
  SeedCheckStates(seeds);
  const QuellixWindow window;
  for (const auto& group : kGroups) {
    SCOPED_TRACE(group.name);
    const int boxes = group.last - group.first + 1;
    ASSERT_EQ(CountChecked(window, group.first, group.last), boxes - 1);
    window.Click(group.heading);
    EXPECT_EQ(CountChecked(window, group.first, group.last), boxes);
    window.Click(group.heading);
    EXPECT_EQ(CountChecked(window, group.first, group.last), 0);
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
      const int expected = key == VK_RETURN ? boxes : 0;
      window.PressKey(window.Control(group.heading), key);
      ASSERT_TRUE(Await([&] { return CountChecked(window, group.first, group.last) == expected; }));
    }
  }
  EXPECT_EQ(CountChecked(window, chkEmptyFiles, chkDeadShortcut), 0);
  for (const bool checked : {true, false}) {
    window.Click(Check3);
    EXPECT_EQ(window.IsChecked(Check3), checked);
    for (int box = chkRecycleBin; box <= chkCleanMozillaDownloads; ++box) {
      EXPECT_EQ(window.IsChecked(box), checked && window.IsEnabled(box))
          << TextOf(window.Control(box));
    }
  }
}

// A file lies where the backup folder should be.
TEST_F(FrmMainTest, WithoutABackupFolderTheUserIsAskedFirst) {
  SeedCheckStates({22});
  WriteBytes(ProgramFolder() / "no folder", "x");
  WriteBytes(ProgramFolder() / "Settings.ini",
             "[General]\r\nDelMethod=B\r\n[Backup]\r\nStrict=0\r\nPath=" +
                 (ProgramFolder() / "no folder").string() + "\r\n");
  const std::filesystem::path file = TempFolder() / "old.tmp";
  WriteBytes(file, "x");
  const QuellixWindow window;
  const auto ask = [&](int answer) {
    PressIn(window.main(), cmdClean);
    return window.Answer(L"Files would be deleted without a backup. Go on?", answer) &&
           Await([&] { return window.IsEnabled(cmdClean); });
  };
  ASSERT_TRUE(ask(IDNO));
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_FALSE(window.HasWindow(L"Cleaning log"));
  ASSERT_TRUE(ask(IDYES));
  EXPECT_NE(window.AwaitWindow(L"Cleaning log"), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(FrmMainTest, OneItemMenuCleansAnUncheckedItem) {
  const QuellixWindow window;
  for (const bool by_keyboard : {false, true}) {
    SCOPED_TRACE(by_keyboard ? "keyboard" : "mouse");
    WriteBytes(TempFolder() / "a.tmp", "12345");
    if (by_keyboard) {
      PostMessageW(window.main(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window.Control(chkTemp)),
                   -1);
    } else {
      PostMessageW(window.Control(chkTemp), WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 5));
      PostMessageW(window.Control(chkTemp), WM_RBUTTONUP, 0, MAKELPARAM(5, 5));
    }
    ASSERT_TRUE(window.AwaitMenu());
    window.PressKey(window.main(), VK_DOWN);
    window.PressKey(window.main(), VK_RETURN);
    EXPECT_TRUE(Await([] { return std::filesystem::is_empty(TempFolder()); }));
    SendMessageW(window.AwaitWindow(L"Cleaning log"), WM_CLOSE, 0, 0);
    EXPECT_FALSE(window.IsChecked(chkTemp));
  }
}

TEST_F(FrmMainTest, NothingButStopActsDuringARun) {
  SeedEndlessRun();
  const QuellixWindow window;
  window.Press(cmdClean);
  ASSERT_TRUE(AwaitRun(window));
  EXPECT_FALSE(window.IsEnabled(cmdClean));
  EXPECT_TRUE(IsWindowVisible(window.Control(pgClean)));
  RECT picture, box;
  GetWindowRect(window.Control(imgCurrent), &picture);
  GetWindowRect(window.Control(chkTemp), &box);
  EXPECT_TRUE(picture.right <= box.left && picture.top < box.bottom && picture.bottom > box.top);
  for (const int id : {chkTemp, chkRunMRU, Check3, lblMiscellaneous}) window.Click(id);
  EXPECT_EQ(CountChecked(window, chkRecycleBin, chkCleanMozillaDownloads), 1);
  EXPECT_TRUE(window.RightClick(chkRunMRU));
  SendMessageW(window.main(), WM_COMMAND, mnuBackups, 0);
  EXPECT_FALSE(window.HasWindow(L"Backups"));

  window.PressKey(window.Control(cmdStop), VK_ESCAPE);
  EXPECT_TRUE(Await([&] { return window.IsEnabled(cmdClean) && !window.IsEnabled(cmdStop); }));
  EXPECT_EQ(TextOf(window.Control(lblStatus)), L"Aborted by user");
  EXPECT_FALSE(IsWindowVisible(window.Control(imgCurrent)));
  EXPECT_FALSE(IsWindowVisible(window.Control(pgClean)));
  EXPECT_FALSE(window.HasWindow(L"Cleaning log"));
  window.Press(cmdClean);
  ASSERT_TRUE(AwaitRun(window));
  EXPECT_TRUE(window.Close()) << "closing stops it first";
  EXPECT_TRUE(std::filesystem::exists(TempFolder() / "large.tmp"));
  EXPECT_EQ(ReadBytes(ProgramFolder() / "chkItems.txt"), CheckStates({22}));
}

TEST_F(FrmMainTest, ClosingStoresTheBoxesOrTellsOnceThatItCannot) {
  const std::wstring path = ProgramFolder() / "chkItems.txt";
  {
    const QuellixWindow window;
    window.Click(chkRecycleBin);
    window.Click(chkTemp);
    EXPECT_TRUE(window.Close());
  }
  EXPECT_EQ(ReadBytes(path), CheckStates({1, 22}));
  const QuellixWindow again;
  EXPECT_TRUE(again.IsChecked(chkRecycleBin) && again.IsChecked(chkTemp));
  EXPECT_EQ(CountChecked(again, chkRecycleBin, chkCleanMozillaDownloads), 2);
  again.Click(chkRecycleBin);
  const HANDLE lock =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  PostMessageW(again.main(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(again.Answer(L"could not be saved", IDOK));
  EXPECT_TRUE(again.AwaitEnd());
  CloseHandle(lock);
  EXPECT_EQ(ReadBytes(path), CheckStates({1, 22}));
}

}  // namespace
}  // namespace quellix::test
