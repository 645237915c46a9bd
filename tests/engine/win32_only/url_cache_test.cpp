#include "platform/win32/win32_text.h"
#include "support/cache_entry_win32.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct UrlCacheTest : RunFixture {
  // Returns the entry's file.
  std::string Cache(const std::wstring& source, DWORD type = 0) {
    return Narrow(MakeCacheEntry({.source = source, .type = type}).wstring());
  }

  // The sources of this test that are in the cache, sorted.
  Names Sources() {
    Names sources;
    for (const UrlCacheEntry& entry : ports.url_cache.Entries()) {
      if (entry.source.find("qxtest") != std::string::npos) sources.push_back(entry.source);
    }
    std::sort(sources.begin(), sources.end());
    return sources;
  }
};

TEST_F(UrlCacheTest, CacheAndCookiesGoApartAndKeptCookiesStay) {
  const std::string page = Cache(L"http://qxtest.example/page");
  const std::string kept = Cache(L"Cookie:tester@qxtest.example/kept", COOKIE_CACHE_ENTRY);
  Cache(L"Cookie:tester@qxtest.example/", COOKIE_CACHE_ENTRY);
  Cache(L"Visited: tester@http://qxtest.example/", URLHISTORY_CACHE_ENTRY);
  ASSERT_EQ(Sources().size(), 4u);

  Clean("CleanCache");
  EXPECT_TRUE(view.report->log.starts_with("Temporary Internet Files (Cache)...\r\n"));
  EXPECT_FALSE(machine->Exists(page));
  EXPECT_EQ(Sources(), (Names{"Cookie:tester@qxtest.example/", "Cookie:tester@qxtest.example/kept",
                              "Visited: tester@http://qxtest.example/"}));

  WriteOwn("ck.txt", UpCase(kept) + "\x01\r\n");
  Clean("CleanCookies");
  EXPECT_EQ(Sources(),
            (Names{"Cookie:tester@qxtest.example/kept", "Visited: tester@http://qxtest.example/"}));
  EXPECT_TRUE(machine->Exists(kept) && view.criticals.empty());
  for (const std::string& source : Sources()) ports.url_cache.Delete(source);
}

}  // namespace
}  // namespace quellix
