#include "browser_tools/cache_list.h"

#include "platform/win32/win32_text.h"
#include "support/cache_entry_win32.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

const FILETIME kExpires = {0xDF60E000, 0x01CAC36D};   // 2010-03-14 12:00:00 UTC
const FILETIME kModified = {0xF68AD800, 0x01CAC343};  // five hours before

struct CacheListTest : RunFixture {
  CacheListTest() : list(ports) { DeleteEverything(); }
  ~CacheListTest() override { DeleteEverything(); }

  void DeleteEverything() {
    for (const UrlCacheEntry& entry : ports.url_cache.Entries())
      ports.url_cache.Delete(entry.source);
  }
  static void Seed(const std::wstring& source, DWORD type = 0, const std::string& bytes = "data") {
    MakeCacheEntry({.source = source, .type = type, .bytes = bytes});
  }
  Names Sources() const {
    Names sources;
    for (size_t row = 0; row < list.RowCount(); ++row)
      sources.push_back(list.Text(row, CacheColumn::kSource));
    return sources;
  }
  Names SortedSources() const {
    Names sources = Sources();
    std::sort(sources.begin(), sources.end());
    return sources;
  }
  void SeedOneOfEachKind() {
    Seed(L"http://a.example/plain");
    Seed(L"http://b.example/modern", 0x40);
    Seed(L"Cookie:anna@c.example/", COOKIE_CACHE_ENTRY);
    Seed(L"Visited: anna@http://d.example/", URLHISTORY_CACHE_ENTRY);
  }

  CacheList list;
  const Pause kGoOn;
};

TEST_F(CacheListTest, EachKindListsTheEntriesThatHaveAllItsBits) {
  SeedOneOfEachKind();
  const std::pair<CacheKind, Names> kRows[] = {
      {CacheKind::kAll,
       {"Cookie:anna@c.example/", "Visited: anna@http://d.example/", "http://a.example/plain",
        "http://b.example/modern"}},
      {CacheKind::kCookies, {"Cookie:anna@c.example/"}},
      {CacheKind::kHistory, {"Visited: anna@http://d.example/"}},
      {CacheKind::kUrls, {"http://b.example/modern"}}};
  for (const auto& [kind, sources] : kRows) {
    list.LoadCacheEntries(kind);
    EXPECT_EQ(SortedSources(), sources);
    EXPECT_EQ(list.Status(), std::to_string(sources.size()) + " entries");
    EXPECT_EQ(list.problem(), "");
  }
}

TEST_F(CacheListTest, ColumnsShowWhatWindowsKeepsOfAnEntry) {
  const std::filesystem::path file = MakeCacheEntry({.source = L"http://a.example/one",
                                                     .bytes = "12345",
                                                     .extension = L"htm",
                                                     .expires = kExpires,
                                                     .modified = kModified});
  { const UsedCacheEntry once(L"http://a.example/one"); }
  list.LoadCacheEntries(CacheKind::kAll);
  ASSERT_EQ(list.RowCount(), 1u);
  EXPECT_EQ(list.Text(0, CacheColumn::kFileName), file.filename().string());
  EXPECT_EQ(list.Text(0, CacheColumn::kFolder), file.parent_path().string() + "\\");
  EXPECT_EQ(list.Text(0, CacheColumn::kSize), "5");
  EXPECT_GE(std::stoi(list.Text(0, CacheColumn::kHitRate)), 1);
  EXPECT_EQ(list.Text(0, CacheColumn::kExpires), FormatCacheDate(ports.system, 0x01CAC36DDF60E000));
  EXPECT_TRUE(list.Text(0, CacheColumn::kLastModified).starts_with("03/1"));
  EXPECT_NE(list.Text(0, CacheColumn::kLastAccess), "");
}

TEST_F(CacheListTest, EntriesOfEveryShapeAreListedAndDeleted) {
  const std::wstring long_source = L"http://long.example/" + std::wstring(2000, L'x');
  MakeCacheEntry({.source = L"http://nofile.example/", .with_file = false});
  Seed(long_source);
  Seed(L"http://\u6771\u4eac.example/\u00fc");
  Seed(L"http://empty.example/", 0, "");
  list.LoadCacheEntries(CacheKind::kAll);
  ASSERT_EQ(list.RowCount(), 4u);
  const Names sources = Sources();
  const size_t at =
      static_cast<size_t>(std::ranges::find(sources, "http://nofile.example/") - sources.begin());
  ASSERT_LT(at, sources.size());
  EXPECT_EQ(list.Text(at, CacheColumn::kFileName) + list.Text(at, CacheColumn::kFolder), "");
  EXPECT_EQ(list.Text(at, CacheColumn::kSize), "0");
  EXPECT_EQ(std::ranges::count(sources, "http://long.example/" + std::string(2000, 'x')), 1);
  list.DeleteAllListed(kGoOn);
  EXPECT_EQ(Sources(), Names{});
  EXPECT_TRUE(ports.url_cache.Entries().empty());
}

TEST_F(CacheListTest, ChosenRowsAreDeletedWhetherCheckedOrNotAndTheQuestionCountsThem) {
  SeedOneOfEachKind();
  list.LoadCacheEntries(CacheKind::kAll);
  list.SetChecked(0, true);
  const size_t count = list.RowCount();
  const std::string left = list.Text(0, CacheColumn::kSource);
  std::vector<size_t> chosen;
  for (size_t row = 1; row < count; ++row) chosen.push_back(row);
  EXPECT_EQ(list.CheckedCount(), 1u);
  EXPECT_EQ(list.QuestionFor(1), "") << "without the setting";
  list.DeleteRows(chosen, kGoOn);
  EXPECT_EQ(Sources(), Names{left});
  EXPECT_EQ(list.CheckedCount(), 1u);
}

TEST_F(CacheListTest, OnlyCheckedRowsAreDeleted) {
  SeedOneOfEachKind();
  list.LoadCacheEntries(CacheKind::kAll);
  list.CheckAll(true);
  for (size_t row = 0; row < list.RowCount(); ++row) {
    if (list.Text(row, CacheColumn::kSource).starts_with("http:")) list.SetChecked(row, false);
  }
  list.DeleteSelected(kGoOn);
  const Names kLeft = {"http://a.example/plain", "http://b.example/modern"};
  EXPECT_EQ(SortedSources(), kLeft);
  EXPECT_EQ(list.Status(), "2 entries");
  list.DeleteSelected(kGoOn);
  list.LoadCacheEntries(CacheKind::kAll);
  EXPECT_EQ(SortedSources(), kLeft);
}

TEST_F(CacheListTest, WhatIsInUseStaysInTheList) {
  SeedOneOfEachKind();
  list.LoadCacheEntries(CacheKind::kAll);
  {
    const UsedCacheEntry used(L"http://a.example/plain");
    list.DeleteAllListed(kGoOn);
    EXPECT_EQ(Sources(), Names{"http://a.example/plain"});
    EXPECT_EQ(list.Status(), "1 entries");
    EXPECT_EQ(ports.url_cache.Entries().size(), 1u);
  }
  // Windows deletes it by itself when it is no longer used; the list learns that when read anew.
  list.LoadCacheEntries(CacheKind::kAll);
  EXPECT_EQ(list.RowCount(), 0u);
}

TEST_F(CacheListTest, DeletionGoesFromTheLastRowUpAndCanBeStopped) {
  for (const wchar_t* source :
       {L"http://1.example/", L"http://2.example/", L"http://3.example/", L"http://4.example/"})
    Seed(source);
  list.LoadCacheEntries(CacheKind::kAll);
  list.Sort(CacheColumn::kSource);
  list.Sort(CacheColumn::kSource);
  const UsedCacheEntry used(L"http://4.example/");
  int breaths = 0;
  list.DeleteAllListed([&](const Progress&) { return ++breaths > 3; });
  EXPECT_EQ(Sources(), (Names{"http://1.example/", "http://4.example/"}));
}

TEST_F(CacheListTest, ColumnsSortByWhatTheyMean) {
  Seed(L"http://b.example/", 0, std::string(9, 'x'));
  Seed(L"http://A.example/", 0, std::string(10, 'x'));
  Seed(L"http://c.example/", 0, std::string(100, 'x'));
  list.LoadCacheEntries(CacheKind::kAll);
  const Names kAToC = {"http://A.example/", "http://b.example/", "http://c.example/"};
  const Names kCToA(kAToC.rbegin(), kAToC.rend());
  list.Sort(CacheColumn::kSource);  // the first click turns the unsorted list downwards
  EXPECT_TRUE(list.descending());
  EXPECT_EQ(Sources(), kCToA);
  list.SetChecked(0, true);
  list.Sort(CacheColumn::kSource);
  EXPECT_EQ(Sources(), kAToC);
  EXPECT_TRUE(list.Row(2).checked);
  list.Sort(CacheColumn::kSize);
  EXPECT_EQ(list.Text(0, CacheColumn::kSize), "100");
  list.Sort(CacheColumn::kSize);
  EXPECT_EQ(list.Text(0, CacheColumn::kSize), "9");
  EXPECT_EQ(list.Text(1, CacheColumn::kSize), "10");
  list.LoadCacheEntries(CacheKind::kAll);
  EXPECT_EQ(list.Text(2, CacheColumn::kSize), "100") << "reading anew keeps the order";
}

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
