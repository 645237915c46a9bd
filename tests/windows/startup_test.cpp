#include <gtest/gtest.h>

#include <vector>

#include "quellix_window.h"

#include <shellapi.h>

#include "run/exit_code.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr wchar_t kTipStore[] = L"Software\\VB and VBA Program Settings\\kvmo\\Settings";

constexpr UINT kTrayMessage = WM_APP + 1;

struct StartupTest : SandboxTest {
  StartupTest() {
    RegDeleteKeyW(HKEY_CURRENT_USER, kTipStore);
    WriteChecks({22});  // temporary files
    WriteBytes(junk_, "12345");
  }
  bool HasJunk() const { return fs::exists(junk_); }
  static HWND HiddenWindow() { return FindWindowW(L"ThunderRT6Main", L"Quellix"); }
  // The main window of a hidden run that has begun.
  static HWND AwaitHiddenRun() {
    HWND main = nullptr;
    EXPECT_TRUE(Await([&] {
      main = HiddenWindow() ? GetWindow(HiddenWindow(), GW_HWNDPREV) : nullptr;
      return main && Shown(main, lblStatus) != L"";
    }));
    return main;
  }
  // The end of a program that was started to run hidden, watched for windows.
  static std::optional<DWORD> EndUnseen(const QuellixProcess& process) {
    Await([&] {
      EXPECT_EQ(process.AnyWindow(), nullptr);
      return process.HasEnded() || process.AnyWindow();
    });
    return process.AwaitExitCode();
  }

  const fs::path junk_ = TempFolder() / "large.tmp";  // also of an endless run
};

TEST_F(StartupTest, ASecondCopyBringsTheFirstForward) {
  const QuellixWindow window;
  const HWND owner = HiddenWindow();
  ASSERT_TRUE(owner);
  EXPECT_FALSE(IsWindowVisible(owner));
  EXPECT_EQ(GetWindow(window.main(), GW_OWNER), owner);
  EXPECT_TRUE(GetWindowLongW(window.main(), GWL_EXSTYLE) & WS_EX_APPWINDOW);
  const std::pair<const char*, int> kRows[] = {
      {"minimized", SW_MINIMIZE}, {"behind", SW_SHOWNA}, {"not shown", SW_HIDE}};
  for (const auto& [name, state] : kRows) {
    SCOPED_TRACE(name);
    ShowWindow(window.main(), state);
    const QuellixProcess second;
    EXPECT_EQ(second.AwaitExitCode(), DWORD{0});
    EXPECT_TRUE(IsWindowVisible(window.main()) && !IsIconic(window.main()));
    EXPECT_TRUE(Await([&] { return GetForegroundWindow() == window.main(); }));
  }
  ShowWindow(window.main(), SW_MINIMIZE);
  const QuellixProcess hidden(L"-h");
  EXPECT_EQ(EndUnseen(hidden), DWORD{kHandedOn});
  EXPECT_TRUE(Await([&] { return !HasJunk(); })) << "the open copy cleans";
  EXPECT_TRUE(IsIconic(window.main()));
  PostMessageW(owner, WM_CLOSE, 0, 0);
  EXPECT_TRUE(window.AwaitEnd());
}

TEST_F(StartupTest, OfCopiesStartedTogetherOneStays) {
  for (int round = 0; round < 8; ++round) {
    const QuellixProcess first({}, CREATE_SUSPENDED), second({}, CREATE_SUSPENDED);
    first.Resume();
    second.Resume();
    ASSERT_TRUE(Await([&] { return first.HasEnded() || second.HasEnded(); }));
    const QuellixProcess& ended = first.HasEnded() ? first : second;
    const QuellixProcess& stays = first.HasEnded() ? second : first;
    EXPECT_EQ(ended.AwaitExitCode(), DWORD{0});
    EXPECT_TRUE(Await([&] { return stays.AnyWindow() != nullptr; }));
    EXPECT_FALSE(stays.HasEnded());
  }
}

TEST_F(StartupTest, AHiddenRunEndsWithItsOutcome) {
  {
    const HeldFile in_use(junk_, 0);
    const QuellixProcess stayed(L"-h");
    EXPECT_EQ(EndUnseen(stayed), DWORD{3});
  }
  WriteSettings("");
  for (const char* name : {"Settings.ini", "chkItems.txt"}) {
    const HeldFile unreadable(ProgramFolder() / name, 0);
    const QuellixProcess failed(L"-h");
    EXPECT_EQ(EndUnseen(failed), DWORD{1}) << name;
    EXPECT_TRUE(HasJunk());
  }
  fs::rename(ProgramFolder() / "tips.txt", ProgramFolder() / "tips.old");
  const QuellixProcess done(L"-h");
  EXPECT_EQ(EndUnseen(done), DWORD{0});
  fs::rename(ProgramFolder() / "tips.old", ProgramFolder() / "tips.txt");
  EXPECT_FALSE(HasJunk());
}

TEST_F(StartupTest, AHiddenRunIsEndedOrShownToWhoStartsTheProgram) {
  SeedEndlessRun();
  {
    const QuellixProcess ended(L"-h");
    AwaitHiddenRun();
    PostMessageW(HiddenWindow(), WM_CLOSE, 0, 0);
    EXPECT_EQ(EndUnseen(ended), DWORD{1}) << "ending it stops its run";
  }
  const QuellixProcess hidden(L"-h");
  ASSERT_TRUE(Await([] { return HiddenWindow() && GetWindow(HiddenWindow(), GW_HWNDPREV); }));
  ASSERT_TRUE(Await([&] {
    const QuellixProcess second;
    return second.AwaitExitCode() == DWORD{0} && hidden.AnyWindow();
  }));
  const HWND main = hidden.AnyWindow();
  EXPECT_EQ(TextOf(main), L"Quellix");
  PressIn(main, cmdStop);
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(GetDlgItem(main, cmdClean)); }));
  EXPECT_TRUE(IsWindowVisible(main));
  PostMessageW(main, WM_CLOSE, 0, 0);
  EXPECT_EQ(hidden.AwaitExitCode(), DWORD{0});
  EXPECT_TRUE(HasJunk());
}

// One that has only just claimed to be the first.
TEST_F(StartupTest, AHiddenStartWaitsForACopyThatIsStarting) {
  const QuellixProcess first({}, CREATE_SUSPENDED), hidden(L"-h", CREATE_SUSPENDED);
  first.Resume();
  ASSERT_TRUE(Await([] {
    const HANDLE claim = OpenMutexW(SYNCHRONIZE, FALSE, L"Local\\Quellix runs");
    if (claim) CloseHandle(claim);
    return claim != nullptr;
  }));
  hidden.Resume();
  EXPECT_EQ(hidden.AwaitExitCode(), DWORD{kHandedOn});
  EXPECT_TRUE(Await([&] { return !HasJunk(); }));
  EXPECT_FALSE(first.HasEnded());
}

TEST_F(StartupTest, WhatAHiddenStartAsksOfAHiddenRunFollows) {
  SeedEndlessRun();
  const QuellixProcess running(L"-h");
  const HWND main = AwaitHiddenRun();
  const QuellixProcess second(L"-h");
  EXPECT_EQ(EndUnseen(second), DWORD{kHandedOn});
  EXPECT_TRUE(HasJunk() && !running.HasEnded());
  WriteSettings("DelMethod=D\r\n");
  PostMessageW(main, WM_COMMAND, cmdStop, 0);
  EXPECT_EQ(EndUnseen(running), DWORD{kFailed}) << "its own run was stopped";
  EXPECT_FALSE(HasJunk()) << "the run that it was asked for did it";
}

TEST_F(StartupTest, SwitchesThatShowTheWindowCleanWhenTheyShould) {
  const std::tuple<const char*, const wchar_t*, const char*, bool> kRows[] = {
      {"start", L"", "StartupClean=1\r\n", false},
      {"with Windows", L"-S", "", false},
      {"with Windows, cleaning", L"-S", "StartupClean=1\r\n", true},
      {"clean now", L"-c", "", true}};
  for (const auto& [name, arguments, settings, cleans] : kRows) {
    SCOPED_TRACE(name);
    WriteSettings(settings);
    WriteBytes(junk_, "12345");
    const QuellixWindow window(arguments);
    EXPECT_TRUE(IsWindowVisible(window.main()));
    EXPECT_TRUE(!cleans || window.AwaitWindow(L"Cleaning log"));
    EXPECT_EQ(TextOf(window.Control(lblStatus)), L"");
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(HasJunk(), !cleans);
  }
}

TEST_F(StartupTest, NothingIsCleanedUnaskedWhileTheSettingsCannotBeRead) {
  WriteSettings("DelMethod=B\r\n");
  for (const char* name : {"Settings.ini", "chkItems.txt"}) {
    SCOPED_TRACE(name);
    const std::string before = ReadBytes(ProgramFolder() / name);
    {
      const HeldFile unreadable(ProgramFolder() / name, 0);
      const QuellixWindow window(L"-c");
      ASSERT_TRUE(window.Answer(L"could not be read", IDOK));
      ASSERT_TRUE(Await([&] { return IsWindowEnabled(window.main()); }));
      EXPECT_TRUE(window.Open(mnuAbout, L"About Quellix"));  // not while a run is in progress
      EXPECT_TRUE(!window.HasWindow(L"Cleaning log") && window.Close());
    }
    EXPECT_TRUE(HasJunk());
    EXPECT_EQ(ReadBytes(ProgramFolder() / name), before);
  }
}

TEST_F(StartupTest, TipsGoOnFromTheLastOneShownAndAMissingFileIsTold) {
  {
    const QuellixWindow window;
    const std::wstring first = Shown(window.main(), txtTip);
    window.Click(cmdNextTip);
    EXPECT_NE(Shown(window.main(), txtTip), first);
    EXPECT_TRUE(window.Close());
  }
  EXPECT_EQ(RegistryText(HKEY_CURRENT_USER, kTipStore, L"Last Tip"), L"1");
  fs::rename(ProgramFolder() / "tips.txt", ProgramFolder() / "tips.old");
  const QuellixWindow window;
  const bool is_told = window.Answer(
      L"A file needed is missing. Re-installing this application may fix this problem.\n", IDOK);
  fs::rename(ProgramFolder() / "tips.old", ProgramFolder() / "tips.txt");
  EXPECT_TRUE(is_told);
  EXPECT_TRUE(Await([&] { return IsWindowEnabled(window.main()); }));
  EXPECT_FALSE(IsWindowVisible(window.Control(txtTip)));
}

TEST_F(StartupTest, ARunThatIsDueWaitsForWindowsAndMenus) {
  WriteSettings("AutoClean=1\r\nDuration=0\r\nHM=0\r\n");
  const QuellixWindow window(L"-s");
  SYSTEMTIME started;
  GetLocalTime(&started);
  const auto tick = [&] {
    SendMessageW(window.main(), WM_TIMER, tmrClean, 0);
    return true;
  };
  const auto is_next_minute = [&] {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return now.wMinute != started.wMinute;
  };
  const HWND backups = window.Open(mnuBackups, L"Backups");
  ASSERT_TRUE(Await(is_next_minute) || Await(is_next_minute));
  EXPECT_TRUE(tick() && HasJunk());
  SendMessageW(backups, WM_CLOSE, 0, 0);
  window.Select(chkTemp);
  PostMessageW(window.main(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window.Control(lstvItems)),
               -1);
  ASSERT_TRUE(window.AwaitMenu());
  EXPECT_TRUE(tick() && HasJunk());
  window.PressKey(window.main(), VK_ESCAPE);
  // Nobody sees it, so no window opens; whoever comes later is told.
  ShowWindow(window.main(), SW_HIDE);
  EXPECT_TRUE(Await([&] { return tick() && !HasJunk(); }));
  EXPECT_EQ(window.AnyWindow(), nullptr);
  ShowWindow(window.main(), SW_SHOW);
  EXPECT_EQ(TextOf(window.Control(lblStatus)), L"Cleaned by itself: 1 file, 5 Bytes.");
  EXPECT_TRUE(AwaitPart(window.Open(mnuLastLog, L"Cleaning log"), txtLog,
                        L"Temporary files... Files Deleted: 1 Space Gained: 5 Bytes"));
  EXPECT_TRUE(window.Close());
}

TEST_F(StartupTest, ALowDiskIsCleaned) {
  const fs::space_info disk = fs::space(L"C:\\");
  if (disk.available * 100 >= disk.capacity * 50) GTEST_SKIP() << "half of the disk is free";
  WriteSettings("TrayIcon=1\r\nLowDisk=50\r\n");
  const QuellixWindow window;
  EXPECT_TRUE(HasJunk()) << "before the first look";
  ShowWindow(window.main(), SW_HIDE);
  SendMessageW(window.main(), WM_TIMER, tmrClean, 0);
  EXPECT_TRUE(Await([&] { return !HasJunk(); }));
  ShowWindow(window.main(), SW_SHOW);
  EXPECT_EQ(TextOf(window.Control(lblStatus)), L"Cleaned by itself: 1 file, 5 Bytes.");
  EXPECT_NE(ReadBytes(ProgramFolder() / "Settings.ini").find("LowDiskTime="), std::string::npos);
}

// Whether the notification area has the program's icon.
bool HasTrayIcon(HWND window, DWORD what = NIM_MODIFY) {
  NOTIFYICONDATAW icon{};
  icon.cbSize = sizeof(icon);
  icon.hWnd = window;
  icon.uID = 1;
  return Shell_NotifyIconW(what, &icon) != FALSE;
}

TEST_F(StartupTest, ClosingLeavesAnIconOnlyWhenTheSettingsSaySo) {
  for (const char* settings :
       {"AutoClean=1\r\n", "TrayIcon=1\r\n", "AutoClean=1\r\nDuration=x\r\nTrayIcon=1\r\n"}) {
    WriteSettings(settings);
    const QuellixWindow window;
    EXPECT_TRUE(window.Close()) << settings;
  }
}

TEST_F(StartupTest, TheIconOpensCleansAndExits) {
  WriteSettings("AutoClean=1\r\nTrayIcon=1\r\n");
  const QuellixWindow window;
  const HWND main = window.main();
  const auto hide = [&] {
    PostMessageW(main, WM_CLOSE, 0, 0);
    return Await([&] { return !IsWindowVisible(main) && HasTrayIcon(main); });
  };
  const auto choose = [&](WPARAM letter) {
    PostMessageW(main, kTrayMessage, MAKEWPARAM(100, 100), MAKELPARAM(WM_CONTEXTMENU, 1));
    ASSERT_TRUE(window.AwaitMenu());
    PostMessageW(main, WM_CHAR, letter, 1);
  };
  const std::function<void()> kWaysToOpen[] = {
      [&] { PostMessageW(main, kTrayMessage, 0, MAKELPARAM(WM_USER, 1)); },  // NIN_SELECT
      [&] { choose(L'o'); }, [&] { EXPECT_EQ(QuellixProcess().AwaitExitCode(), DWORD{0}); }};
  for (const auto& open : kWaysToOpen) {
    SCOPED_TRACE(&open - kWaysToOpen);
    EXPECT_FALSE(HasTrayIcon(main));
    ShowWindow(main, SW_MINIMIZE);
    ASSERT_TRUE(hide());
    open();
    ASSERT_TRUE(Await([&] { return IsWindowVisible(main) && !HasTrayIcon(main); }));
    EXPECT_TRUE(Await([&] { return !IsIconic(main); }));
  }
  ASSERT_TRUE(hide());
  EXPECT_TRUE(HasTrayIcon(main, NIM_DELETE));
  SendMessageW(main, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(HasTrayIcon(main));
  choose(L'c');
  EXPECT_TRUE(Await([&] { return !HasJunk(); }));
  const HWND log = window.AwaitWindow(L"Cleaning log");
  EXPECT_FALSE(IsWindowVisible(main));
  SendMessageW(log, WM_CLOSE, 0, 0);
  choose(L'x');
  EXPECT_TRUE(window.AwaitEnd() && !HasTrayIcon(main));
}

}  // namespace
}  // namespace quellix::test
