#include <gtest/gtest.h>

#include "browser_tools/cache_list.h"
#include "browser_tools/cache_preview.h"

namespace quellix {
namespace {

TEST(Cache, TheLocalFileIsShownInTwoParts) {
  struct Row {
    const char *local_file, *file_name, *folder;
  };
  static constexpr Row kRows[] = {
      {"", "", ""},
      {"\\", "", ""},
      {"C:\\Cache\\AB12\\page[1].htm", "page[1].htm", "C:\\Cache\\AB12\\"},
      {"page[1].htm", "", ""},
      {"C:\\Cache\\", "", "C:\\Cache\\"},
      {"\\a", "a", "\\"},
  };
  for (const Row& row : kRows) {
    const CacheRow shown =
        ToCacheRow({.source = "http://s.example/", .local_file = row.local_file});
    EXPECT_EQ(shown.file_name, row.file_name) << row.local_file;
    EXPECT_EQ(shown.folder, row.folder) << row.local_file;
    EXPECT_FALSE(shown.checked);
  }
}

TEST(Cache, RecordsTellTheirUserAndAddress) {
  struct Row {
    const char* source;
    bool is_record;
    const char* description;
  };
  static constexpr Row kRows[] = {
      {"http://news.example/a@b", false, nullptr},
      {"https://shop.example/?from=cookie:x", false, nullptr},
      {"Cookie:anna@shop.example/", true, "User: anna\nAddress: shop.example/"},
      {"Visited: anna@http://mail.example/?to=b@c.example", true,
       "User: anna\nAddress: http://mail.example/?to=b@c.example"},
      {"Cookie:shop.example", true, "Address: shop.example"},
      {"Visited:", true, "Address: "},
      {"Cookie:@", true, "User: \nAddress: "},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(IsCacheRecord(row.source), row.is_record) << row.source;
    if (row.is_record) {
      EXPECT_EQ(DescribeCacheRecord(row.source), row.description) << row.source;
    }
  }
}

}  // namespace
}  // namespace quellix
