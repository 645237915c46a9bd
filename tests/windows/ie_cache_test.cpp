

#include "quellix_window.h"
#include "support/cache_entry_win32.h"

namespace quellix::test {
namespace {

// The sources of all entries of the user's cache.
std::vector<std::wstring> CachedSources() {
  std::vector<std::wstring> sources;
  alignas(INTERNET_CACHE_ENTRY_INFOW) static char buffer[16384];
  const auto info = reinterpret_cast<INTERNET_CACHE_ENTRY_INFOW*>(buffer);
  DWORD size = sizeof buffer;
  const HANDLE search = FindFirstUrlCacheEntryW(nullptr, info, &size);
  for (bool found = search != nullptr; found;) {
    sources.push_back(info->lpszSourceUrlName);
    size = sizeof buffer;
    found = FindNextUrlCacheEntryW(search, info, &size);
  }
  if (search) FindCloseUrlCache(search);
  return sources;
}

void EmptyCache() {
  for (const std::wstring& source : CachedSources()) DeleteUrlCacheEntryW(source.c_str());
}

// A red square of 8 by 8 points.
std::string RedBitmap() {
  std::string bytes("BM\xF6\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x08\0\0\0\x08\0\0\0\x01\0\x18\0", 30);
  bytes.resize(54);
  for (int i = 0; i < 64; ++i) bytes += std::string("\0\0\xFF", 3);
  return bytes;
}

struct FrmIECacheTest : SandboxTest {
  FrmIECacheTest() {
    EmptyCache();
    MakeCacheEntry(
        {.source = L"http://a.example/page", .bytes = "<p>\nplain words", .extension = L"htm"});
    MakeCacheEntry({.source = L"http://b.example/red",
                    .type = 0x40,
                    .bytes = RedBitmap(),
                    .extension = L"bmp"});
    MakeCacheEntry({.source = L"Cookie:anna@c.example/", .type = COOKIE_CACHE_ENTRY});
    MakeCacheEntry({.source = L"Visited: anna@http://d.example/", .type = URLHISTORY_CACHE_ENTRY});
  }
  void TearDown() override { EmptyCache(); }

  static HWND Open(const QuellixWindow& window) {
    const HWND cache = window.Open(mnuIECache, L"Temporary Internet Files (Cache)");
    EXPECT_TRUE(AwaitStatus(cache, L"4 entries"));
    return cache;
  }
  static bool AwaitStatus(HWND cache, std::wstring_view text) {
    return AwaitText(cache, lblStatus, text);
  }
  // Moves to the row of a source with the keys of the list.
  static void Select(const QuellixWindow& window, HWND cache, std::wstring_view source) {
    const HWND list = GetDlgItem(cache, lstvCache);
    window.PressKey(list, VK_HOME);
    for (int row = 0; window.RowText(list, row, 0) != source; ++row) {
      ASSERT_LT(row, CountRows(list));
      window.PressKey(list, VK_DOWN);
    }
  }
  // Chooses a row; whether it is shown as this text.
  static bool ShowsAs(const QuellixWindow& window, HWND cache, std::wstring_view source,
                      std::wstring_view text) {
    Select(window, cache, source);
    return AwaitText(cache, txtCache, text) && IsWindowVisible(GetDlgItem(cache, txtCache));
  }
};

TEST_F(FrmIECacheTest, EntriesAreListedByKindAndShown) {
  const QuellixWindow window;
  const HWND cache = Open(window);
  EXPECT_EQ(Shown(cache, lblDisplaying), L"Displaying: None");
  const std::wstring cookie = L"Cookie:anna@c.example/", visit = L"Visited: anna@http://d.example/";
  const std::pair<int, std::wstring> kRows[] = {
      {optCookies, cookie}, {optHistory, visit}, {optURL, L"http://b.example/red"}};
  for (const auto& [option, source] : kRows) {
    Press(AwaitControl(cache, option));
    EXPECT_TRUE(AwaitStatus(cache, L"1 entries")) << option;
    EXPECT_EQ(window.RowText(GetDlgItem(cache, lstvCache), 0, 0), source);
  }
  Press(AwaitControl(cache, optAll));
  EXPECT_TRUE(AwaitStatus(cache, L"4 entries"));
  EXPECT_TRUE(ShowsAs(window, cache, cookie, L"User: anna\r\nAddress: c.example/"));
  EXPECT_TRUE(ShowsAs(window, cache, visit, L"User: anna\r\nAddress: http://d.example/"));
  EXPECT_TRUE(ShowsAs(window, cache, L"http://a.example/page", L"<p>\r\nplain words"));
  EXPECT_EQ(Shown(cache, lblDisplaying), L"Displaying: http://a.example/page");

  Select(window, cache, L"http://b.example/red");
  const HWND pane = GetDlgItem(cache, wbCache);
  EXPECT_TRUE(Await([&] { return IsWindowVisible(pane) != FALSE; }));
  EXPECT_TRUE(Await([&] {
    RECT area;
    GetClientRect(pane, &area);
    POINT middle{area.right / 2, area.bottom / 2};
    ClientToScreen(pane, &middle);
    const HDC screen = GetDC(nullptr);
    const COLORREF color = GetPixel(screen, middle.x, middle.y);
    ReleaseDC(nullptr, screen);
    return color == RGB(255, 0, 0);
  })) << "the picture is not in the middle of its pane";
}

TEST_F(FrmIECacheTest, TickedRowsAreDeletedAndThenAll) {
  const QuellixWindow window;
  const HWND cache = Open(window);
  const HWND list = GetDlgItem(cache, lstvCache);
  MakeCacheEntry({.source = L"http://e.example/new"});
  PressIn(cache, cmdRefresh);
  EXPECT_TRUE(AwaitStatus(cache, L"5 entries"));
  for (const wchar_t* source : {L"http://e.example/new", L"http://a.example/page"}) {
    Select(window, cache, source);
    window.PressKey(list, VK_SPACE);
  }
  PressIn(cache, cmdDelete);
  EXPECT_TRUE(AwaitStatus(cache, L"3 entries"));
  EXPECT_EQ(CachedSources().size(), 3u);
  PressIn(cache, cmdSelectAll);
  EXPECT_TRUE(IsRowTicked(list, 0) && IsRowTicked(list, 2));
  PressIn(cache, cmdDeselectAll);
  EXPECT_TRUE(!IsRowTicked(list, 0) && !IsRowTicked(list, 2));
  PressIn(cache, cmdClear);
  EXPECT_TRUE(AwaitStatus(cache, L"0 entries") && CachedSources().empty());
}

}  // namespace
}  // namespace quellix::test
