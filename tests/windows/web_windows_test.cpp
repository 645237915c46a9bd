// The windows that ask the web: favorites, and new versions.
#include <gtest/gtest.h>

#include "quellix_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

const fs::path kFavorites = fs::path(_wgetenv(L"USERPROFILE")) / "Favorites";

struct WebWindowsTest : SandboxTest {
  WebWindowsTest() { fs::remove_all(kFavorites); }
  void TearDown() override { fs::remove_all(kFavorites); }

  static void Make(const fs::path& name, const std::string& address) {
    WriteBytes(kFavorites / name, "[InternetShortcut]\r\nURL=" + address + "\r\n");
  }
  static std::string Port() {
    const char* const port = std::getenv("QUELLIX_HTTP_PORT");
    return port == nullptr ? "" : port;
  }
  static std::string At(const std::string& path) { return "http://127.0.0.1:" + Port() + path; }
};

TEST_F(WebWindowsTest, WhatIsWrongWithFavoritesIsShownAndGoesByAQuestion) {
  Make("a.url", "http://a.example/");
  Make("b.url", "http://A.example");
  Make("News/c.url", "");
  fs::create_directories(kFavorites / "Empty" / "Below");
  const QuellixWindow window;
  const HWND favorites = window.Open(mnuFavorites, L"Favorites");
  const HWND list = GetDlgItem(favorites, lstvFavorites);
  ASSERT_TRUE(AwaitText(favorites, lblStatus, L"3 addresses, 3 marked"));
  ExpectKeys(favorites);
  EXPECT_EQ(window.RowText(list, 1, 0) + L"|" + window.RowText(list, 1, 3),
            L"b|The same address as a");
  EXPECT_FALSE(IsEnabled(favorites, cmdDelete));
  PressIn(favorites, cmdTickMarked);
  ASSERT_TRUE(AwaitEnabled(favorites, cmdDelete));
  for (const int button : {IDCANCEL, kYes}) {
    EXPECT_TRUE(fs::exists(kFavorites / "b.url"));
    PressIn(favorites, cmdDelete);
    EXPECT_TRUE(window.Answer(L"Move 3 favorites into the recycle bin?", button));
  }
  ASSERT_TRUE(AwaitText(favorites, lblStatus, L"1 address, 0 marked"));
  EXPECT_EQ(CountRows(list), 1);
  EXPECT_TRUE(fs::exists(kFavorites / "a.url"));
  for (const char* const gone : {"b.url", "News/c.url", "Empty"})
    EXPECT_FALSE(fs::exists(kFavorites / gone)) << gone;
  EXPECT_TRUE(CloseAndAwait(favorites) && IsWindowEnabled(window.main()));
}

TEST_F(WebWindowsTest, FavoritesAreAskedForOnlyWhenItIsWanted) {
  if (Port().empty()) GTEST_SKIP() << "scripts/with-server runs this beside its servers";
  Make("a.url", At("/ok"));
  Make("b.url", At("/status/404"));
  Make("c.url", "file:///C:/windows/win.ini");
  const QuellixWindow window;
  const HWND favorites = window.Open(mnuFavorites, L"Favorites");
  const HWND list = GetDlgItem(favorites, lstvFavorites);
  ASSERT_TRUE(AwaitText(favorites, lblStatus, L"3 addresses, 0 marked"));
  EXPECT_EQ(window.RowText(list, 0, 3), L"");
  PressIn(favorites, cmdAskWeb);
  ASSERT_TRUE(AwaitText(favorites, lblStatus, L"3 addresses, 1 marked"));
  EXPECT_EQ(window.RowText(list, 0, 3), L"It answers");
  EXPECT_EQ(window.RowText(list, 1, 3), L"The page is gone (404)");
  EXPECT_EQ(window.RowText(list, 2, 3), L"");
  Make("d.url", At("/hang"));
  ASSERT_TRUE(CloseAndAwait(favorites));
  const HWND again = window.Open(mnuFavorites, L"Favorites");
  ASSERT_TRUE(AwaitText(again, lblStatus, L"4 addresses, 0 marked"));
  PressIn(again, cmdAskWeb);
  ASSERT_TRUE(AwaitEnabled(again, cmdStop));
  PressIn(again, cmdStop);
  EXPECT_TRUE(AwaitEnabled(again, cmdAskWeb));
}

TEST_F(WebWindowsTest, EachResultOfANewVersionIsShown) {
  if (Port().empty()) GTEST_SKIP() << "scripts/with-server runs this beside its servers";
  const std::pair<std::string, const wchar_t*> kRows[] = {
      {"", L"No server is set"},
      {"http://updates.example", L"must begin with https://"},
      {At("/new"), L"There is a new version: 99.1.0."},
      {At("/old"), L"There is no newer version."},
      {At("/missing"), L"it answers with an error (404)"},
  };
  for (const auto& [server, told] : kRows) {
    SCOPED_TRACE(server);
    WriteSettings("[Updates]\r\nServer=" + server + "\r\n");
    const QuellixWindow window;
    const HWND update = window.Open(mnuUpdates, L"New versions");
    EXPECT_TRUE(AwaitPart(update, txtUpdate, told));
    ExpectKeys(update);
    EXPECT_FALSE(IsEnabled(update, cmdInstall));  // the tests' programs are built without a key
    const bool is_known = server.ends_with("/new") || server.ends_with("/old");
    const std::string settings = ReadBytes(ProgramFolder() / "Settings.ini");
    EXPECT_EQ(settings.find("LastCheck=") != std::string::npos, is_known);
    EXPECT_TRUE(CloseAndAwait(update) && IsWindowEnabled(window.main()));
    EXPECT_TRUE(window.Close());
  }
}

TEST_F(WebWindowsTest, OnceAWeekANewVersionIsToldOfWhereThatIsWanted) {
  if (Port().empty()) GTEST_SKIP() << "scripts/with-server runs this beside its servers";
  const std::tuple<const char*, std::string, std::string, bool, bool> kRows[] = {
      {"due", "1", "/new", true, true},
      {"none is newer", "1", "/old", true, false},
      {"not wanted", "0", "/new", false, false},
      {"no answer", "1", "/missing", false, false}};
  for (const auto& [name, wanted, server, is_asked, is_told] : kRows) {
    SCOPED_TRACE(name);
    WriteSettings("CheckUpdates=" + wanted + "\r\n[Updates]\r\nServer=" + At(server) +
                  "\r\nLastCheck=1000\r\n");
    const QuellixWindow window;
    SendMessageW(window.main(), WM_TIMER, tmrUpdates, 0);
    if (is_told) {
      const HWND update = window.AwaitWindow(L"New versions");
      EXPECT_TRUE(AwaitPart(update, txtUpdate, L"There is a new version: 99.1.0."));
      EXPECT_TRUE(CloseAndAwait(update));
    }
    const std::string settings = ReadBytes(ProgramFolder() / "Settings.ini");
    const bool is_kept = settings.find("LastCheck=1000\r\n") != std::string::npos;
    EXPECT_EQ(is_kept, !is_asked);
    EXPECT_EQ(window.HasWindow(L"New versions"), false);
    EXPECT_TRUE(window.Close());
  }
}

TEST_F(WebWindowsTest, AFirstStartAsksForTheWeeklyQuestionWhereThereIsAServer) {
  for (const std::string server : {"", "https://updates.example"}) {
    WriteSettings("Welcome=1\r\n[Updates]\r\nServer=" + server + "\r\n");
    const QuellixWindow window;
    const HWND welcome = window.AwaitWindow(L"Welcome to Quellix");
    const bool asks = IsWindowVisible(GetDlgItem(welcome, chkUpdates)) != FALSE;
    EXPECT_EQ(asks, !server.empty());
    if (asks) Click(welcome, chkUpdates);
    PressIn(welcome, IDOK);
    ASSERT_TRUE(AwaitGone(welcome));
    const std::string settings = ReadBytes(ProgramFolder() / "Settings.ini");
    EXPECT_EQ(settings.find("CheckUpdates=1") != std::string::npos, asks);
    EXPECT_TRUE(window.Close());
  }
}

}  // namespace
}  // namespace quellix::test
