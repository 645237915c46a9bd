#include "cli/console_fixture.h"
#include "support/cache_entry_win32.h"

namespace quellix {
namespace {

struct CacheConsoleTest : ConsoleTest {
  CacheConsoleTest() {
    for (const UrlCacheEntry& entry : ports.url_cache.Entries()) {
      ports.url_cache.Delete(entry.source);
    }
    MakeCacheEntry({.source = L"http://a.example/page", .bytes = "12345"});
    MakeCacheEntry({.source = L"http://b.example/page", .type = 0x40});
    MakeCacheEntry({.source = L"Cookie:anna@c.example/", .type = COOKIE_CACHE_ENTRY});
  }
};

TEST_F(CacheConsoleTest, EntriesAreListedAndDeletedByKind) {
  const ProgramResult all = RunQuellixctl({"cache", "list"});
  EXPECT_EQ(all.exit_code, 0);
  EXPECT_EQ(std::ranges::count(all.output, '\n'), 3) << all.output;
  EXPECT_TRUE(Holds(all.output, "http://a.example/page\t"));
  EXPECT_TRUE(Holds(all.output, "\\\t5\t"));
  const ProgramResult urls = RunQuellixctl({"cache", "list", "--kind", "urls"});
  EXPECT_TRUE(urls.output.starts_with("http://b.example/page\t")) << urls.output;

  EXPECT_EQ(RunQuellixctl({"cache", "delete", "--kind", "cookies"}).output,
            "1 entries deleted, 0 left\n");
  EXPECT_EQ(ports.url_cache.Entries().size(), 2u);
  {
    const UsedCacheEntry used(L"http://a.example/page");
    const ProgramResult result = RunQuellixctl({"cache", "delete"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(Holds(result.output, "1 entries deleted, 1 left\n"));
    EXPECT_TRUE(Holds(result.output, "not deleted: http://a.example/page\n"));
  }
  EXPECT_EQ(RunQuellixctl({"cache", "delete"}).exit_code, 0);
  EXPECT_EQ(RunQuellixctl({"cache", "list"}).output, "");
  EXPECT_EQ(RunQuellixctl({"cache", "list", "--kind", "pages"}).exit_code, 2);
}

}  // namespace
}  // namespace quellix
