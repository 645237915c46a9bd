// Windows' own cleaners on the console, by the one of the tests.
#include "cli/console_fixture.h"
#include "platform/win32/win32_text.h"
#include "support/cache_entry_win32.h"
#include "support/registered_cleaner_win32.h"

namespace quellix {
namespace {

using WindowsConsoleTest = ConsoleTest;

TEST_F(WindowsConsoleTest, CleanersAreListedAskedAndLetWorkByName) {
  for (const char* name : {"a", "b"}) machine->MakeFile(scratch + name, "12345");
  {
    const RegisteredCleaner cleaner(L"Qx", Wide(scratch));
    Expect({"windows", "list"}, 0, {"Qx   "});
    Expect({"windows", "list", "--sizes"}, 0, {"10 Bytes", "Qx by itself (usual)", "It is new."});
    Expect({"windows", "list", "--sizes", "--json"}, 0,
           {"\"name\":\"Qx\"", "\"bytes\":10", "\"isUsual\":true", "\"problem\":null"});
    Expect({"windows", "process", "Qy"}, 2, {"Did you mean \"Qx\"?"});
    Expect({"windows", "preview", "qx"}, 0,
           {"Windows cleaner Qx", "Found: 10 Bytes", "1 other thing"});
    EXPECT_EQ(machine->Tree(scratch).size(), 2u);
    Expect({"windows", "process", "qx"}, 0, {"Qx (Windows)... Freed: 10 Bytes by its own count"});
    EXPECT_TRUE(machine->Tree(scratch).empty());
    Expect({"windows", "process", "qx"}, 0, {"Nothing to remove"});
  }
  machine->MakeFile(scratch + "a", "1");
  const RegisteredCleaner asking(L"Qx", Wide(scratch), L"asks");
  Expect({"windows", "process", "Qx"}, 1, {"Qx asked something, and nobody was there."});
  EXPECT_TRUE(machine->Exists(scratch + "a"));
}

struct CacheConsoleTest : ConsoleTest {
  CacheConsoleTest() {
    for (const UrlCacheEntry& entry : ports.url_cache.Entries())
      ports.url_cache.Delete(entry.source);
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
