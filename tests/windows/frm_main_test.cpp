

#include "quellix_window.h"

namespace quellix::test {
namespace {

struct FrmMainTest : SandboxTest {
  static void ClickAt(HWND list, POINT place) {
    ScreenToClient(list, &place);
    PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(place.x, place.y));
    PostMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(place.x, place.y));
  }
  static bool AwaitRun(const QuellixWindow& window) {
    return Await(
        [&] { return window.IsEnabled(cmdStop) && IsWindowVisible(window.Control(imgCurrent)); });
  }
};

// Box images: 1 not ticked, 2 ticked, 3 in part, 4 cannot be ticked.
TEST_F(FrmMainTest, AHeadingTogglesItsGroupByKeyAndClickAndTheBoxBelowEveryItem) {
  WriteChecks({25, 26, 27, 28, 29});
  const QuellixWindow window;
  const HWND list = window.Control(lstvItems);
  EXPECT_EQ(window.BoxOf(lblFirefox), 3);
  window.Click(lblFirefox);
  EXPECT_EQ(window.BoxOf(lblFirefox), 2);
  EXPECT_EQ(window.RowText(list, window.RowOf(lblFirefox), 3), L"6 of 6 ticked");
  window.Select(lblFirefox);
  const RECT name = window.PlaceOf(lblFirefox);
  ClickAt(list, {name.left + 5, (name.top + name.bottom) / 2});
  EXPECT_TRUE(Await([&] { return window.BoxOf(lblFirefox) == 1; })) << "a click on its name";
  EXPECT_TRUE(AwaitPart(window.main(), lnkRemoval, L"Nothing is ticked"));
  EXPECT_EQ(window.BoxOf(chkEmptyFiles), 4);
  window.Click(chkEmptyFiles);
  EXPECT_EQ(window.BoxOf(chkEmptyFiles), 4);
  EXPECT_TRUE(window.RightClick(chkEmptyFiles)) << "no menu for what is switched off";
  window.Select(chkTemp);
  const RECT row = window.PlaceOf(chkTemp);
  for (const int ticked : {2, 1}) {
    ClickAt(list, {row.left - 10, (row.top + row.bottom) / 2});
    EXPECT_TRUE(Await([&] { return window.BoxOf(chkTemp) == ticked; })) << "a click on its box";
  }
  for (const bool checked : {true, false}) {
    window.Click(Check3);
    EXPECT_EQ(window.IsChecked(Check3), checked);
    EXPECT_EQ(window.IsChecked(chkTemp), checked);
    EXPECT_FALSE(window.IsChecked(chkEmptyFiles));
  }
}

void ExpectKeysMoveRowsOnly(const QuellixWindow& window) {
  const HWND list = window.Control(lstvItems);
  // A row stays selected wherever it goes; a letter finds one, and a space within a name no box.
  SendMessageW(list, WM_NULL, 0, 0);
  for (const WPARAM key : {VK_RIGHT, VK_LEFT}) {
    window.PressKey(list, key);
    EXPECT_EQ(Shown(window.main(), lblItem), L"Temporary files");
    EXPECT_EQ(SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED),
              window.RowOf(chkTemp));
  }
  for (const WPARAM letter : {L'r', L'e', L'c'}) PostMessageW(list, WM_CHAR, letter, 1);
  window.PressKey(list, VK_SPACE);
  EXPECT_TRUE(AwaitText(window.main(), lblItem, L"Recycle Bin"));
  EXPECT_FALSE(window.IsChecked(chkRecycleBin));
  // Esc closes nothing, wherever the keyboard is.
  PostMessageW(window.Control(txtItem), WM_KEYDOWN, VK_ESCAPE, 1);
  window.PressKey(window.Control(txtItem), VK_ESCAPE);
  EXPECT_FALSE(window.HasEnded());
}

TEST_F(FrmMainTest, ThePaneTellsOfTheRowAndAfterALookWhatWasFound) {
  WriteSettings("DelMethod=R\r\n");
  WriteBytes(TempFolder() / "a.tmp", "12345");
  const QuellixWindow window;
  const HWND list = window.Control(lstvItems), found = window.Control(lstvRun);
  EXPECT_TRUE(IsWindowVisible(window.Control(txtTip)) && !IsWindowVisible(window.Control(txtItem)));
  window.Select(chkTemp);
  EXPECT_TRUE(AwaitText(window.main(), lblItem, L"Temporary files"));
  EXPECT_TRUE(AwaitPart(window.main(), txtItem, L"Everything in your temporary folder"));
  EXPECT_FALSE(IsWindowVisible(window.Control(txtTip)) || IsWindowVisible(found));
  window.Click(chkTemp);
  window.Click(chkRunMRU);
  EXPECT_TRUE(AwaitText(window.main(), lnkRemoval, L"2 items, <a>moved to the recycle bin</a>"));
  window.Press(cmdPreview);
  EXPECT_TRUE(CloseAndAwait(window.AwaitWindow(L"Preview")));
  EXPECT_EQ(window.RowText(list, window.RowOf(chkTemp), 1), L"5 Bytes");
  EXPECT_EQ(window.RowText(list, window.RowOf(lblFolderFiles), 2), L"1");
  EXPECT_TRUE(
      AwaitText(window.main(), lnkRemoval, L"2 items, 5 Bytes, <a>moved to the recycle bin</a>"));
  EXPECT_TRUE(IsWindowVisible(found));
  EXPECT_EQ(CountRows(found), 0) << "of Windows run history";
  window.Select(chkTemp);
  EXPECT_TRUE(Await([&] { return CountRows(found) == 1; }));
  EXPECT_TRUE(window.RowText(found, 0, 0).ends_with(L"a.tmp"));
  window.Press(cmdClean);
  EXPECT_TRUE(CloseAndAwait(window.AwaitWindow(L"Cleaning log")));
  EXPECT_EQ(window.RowText(list, window.RowOf(chkTemp), 1), L"") << "what was found is gone";
  EXPECT_FALSE(IsWindowVisible(found));
  EXPECT_TRUE(AwaitPart(window.main(), txtItem, L"Cleaned last: "));
  ExpectKeysMoveRowsOnly(window);
}

// A file lies where the backup folder should be.
TEST_F(FrmMainTest, WithoutABackupFolderTheUserIsAskedFirst) {
  WriteChecks({22});
  WriteBytes(ProgramFolder() / "no folder", "x");
  WriteSettings("DelMethod=B\r\n[Backup]\r\nStrict=0\r\nPath=" +
                (ProgramFolder() / "no folder").string() + "\r\n");
  const fs::path file = TempFolder() / "old.tmp";
  WriteBytes(file, "x");
  const QuellixWindow window;
  const auto ask = [&](int answer) {
    PressIn(window.main(), cmdClean);
    return window.Answer(L"Files would be deleted without a backup. Go on?", answer) &&
           Await([&] { return window.IsEnabled(cmdClean); });
  };
  ASSERT_TRUE(ask(IDNO));
  EXPECT_TRUE(fs::exists(file) && !window.HasWindow(L"Cleaning log"));
  ASSERT_TRUE(ask(IDYES));
  EXPECT_NE(window.AwaitWindow(L"Cleaning log"), nullptr);
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(FrmMainTest, OneItemMenuCleansAnUncheckedItem) {
  const QuellixWindow window;
  for (const bool by_keyboard : {false, true}) {
    SCOPED_TRACE(by_keyboard ? "keyboard" : "mouse");
    WriteBytes(TempFolder() / "a.tmp", "12345");
    const HWND list = window.Control(lstvItems);
    window.Select(by_keyboard ? chkTemp : chkRunMRU);
    const RECT row = window.PlaceOf(chkTemp);
    POINT place{row.left + 5, (row.top + row.bottom) / 2};
    if (by_keyboard) {
      PostMessageW(window.main(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list), -1);
    } else {
      ScreenToClient(list, &place);
      PostMessageW(list, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(place.x, place.y));
      PostMessageW(list, WM_RBUTTONUP, 0, MAKELPARAM(place.x, place.y));
    }
    ASSERT_TRUE(window.AwaitMenu());
    window.PressKey(window.main(), VK_DOWN);
    window.PressKey(window.main(), VK_RETURN);
    EXPECT_TRUE(Await([] { return fs::is_empty(TempFolder()); }));
    SendMessageW(window.AwaitWindow(L"Cleaning log"), WM_CLOSE, 0, 0);
    EXPECT_FALSE(window.IsChecked(chkTemp));
  }
}

TEST_F(FrmMainTest, NothingButStopActsDuringARun) {
  const fs::path wiped = SeedEndlessRun();
  const QuellixWindow window;
  window.Press(cmdClean);
  ASSERT_TRUE(AwaitRun(window));
  EXPECT_TRUE(!window.IsEnabled(cmdClean) && IsWindowVisible(window.Control(pgClean)));
  RECT picture;
  GetWindowRect(window.Control(imgCurrent), &picture);
  const RECT box = window.PlaceOf(chkTemp);
  EXPECT_TRUE(picture.right <= box.left && picture.top < box.bottom && picture.bottom > box.top);
  for (const int id : {chkTemp, chkRunMRU, Check3, lblMiscellaneous}) window.Click(id);
  EXPECT_TRUE(window.IsChecked(chkTemp));
  EXPECT_FALSE(window.IsChecked(chkRunMRU) || window.IsChecked(chkRecycleBin));
  EXPECT_TRUE(window.RightClick(chkRunMRU));
  SendMessageW(window.main(), WM_COMMAND, mnuBackups, 0);
  EXPECT_FALSE(window.HasWindow(L"Backups"));

  window.PressKey(window.Control(cmdStop), VK_ESCAPE);
  EXPECT_TRUE(Await([&] { return window.IsEnabled(cmdClean) && !window.IsEnabled(cmdStop); }));
  EXPECT_EQ(TextOf(window.Control(lblStatus)), L"Aborted by user");
  EXPECT_FALSE(IsWindowVisible(window.Control(imgCurrent)));
  EXPECT_FALSE(IsWindowVisible(window.Control(pgClean)) || window.HasWindow(L"Cleaning log"));
  window.Press(cmdClean);
  ASSERT_TRUE(AwaitRun(window));
  EXPECT_TRUE(window.Close()) << "closing stops it first";
  EXPECT_TRUE(fs::exists(wiped));
  EXPECT_EQ(ReadBytes(ProgramFolder() / "chkItems.txt"), CheckStates({22}));
}

TEST_F(FrmMainTest, ClosingStoresTheBoxesOrTellsOnceThatItCannot) {
  const fs::path path = ProgramFolder() / "chkItems.txt";
  {
    const QuellixWindow window;
    window.Click(chkRecycleBin);
    window.Click(chkTemp);
    EXPECT_TRUE(window.Close());
  }
  EXPECT_EQ(ReadBytes(path), CheckStates({1, 22}));
  const QuellixWindow again;
  EXPECT_TRUE(again.IsChecked(chkRecycleBin) && again.IsChecked(chkTemp));
  EXPECT_EQ(again.RowText(again.Control(lstvItems), again.RowOf(lblFolderFiles), 3).front(), L'2');
  again.Click(chkRecycleBin);
  const HeldFile lock(path);
  PostMessageW(again.main(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(again.Answer(L"could not be saved", IDOK));
  EXPECT_TRUE(again.AwaitEnd());
  EXPECT_EQ(ReadBytes(path), CheckStates({1, 22}));
}

}  // namespace
}  // namespace quellix::test
