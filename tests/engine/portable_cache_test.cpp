#include <gtest/gtest.h>

#include "browser_tools/cache_list.h"
#include "browser_tools/cache_preview.h"

namespace quellix {
namespace {

TEST(Cache, TheLocalFileIsShownInTwoParts) {
  static constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"", "", ""},
      {"\\", "", ""},
      {"C:\\Cache\\AB12\\page[1].htm", "page[1].htm", "C:\\Cache\\AB12\\"},
      {"page[1].htm", "", ""},
      {"C:\\Cache\\", "", "C:\\Cache\\"},
      {"\\a", "a", "\\"}};
  for (const auto& [local_file, file_name, folder] : kRows) {
    const CacheRow shown = ToCacheRow({.source = "http://s.example/", .local_file = local_file});
    EXPECT_EQ(shown.file_name, file_name) << local_file;
    EXPECT_EQ(shown.folder, folder) << local_file;
    EXPECT_FALSE(shown.checked);
  }
}

TEST(Cache, RecordsTellTheirUserAndAddress) {
  static constexpr std::tuple<const char*, bool, const char*> kRows[] = {
      {"http://news.example/a@b", false, nullptr},
      {"https://shop.example/?from=cookie:x", false, nullptr},
      {"Cookie:anna@shop.example/", true, "User: anna\nAddress: shop.example/"},
      {"Visited: anna@http://mail.example/?to=b@c.example", true,
       "User: anna\nAddress: http://mail.example/?to=b@c.example"},
      {"Cookie:shop.example", true, "Address: shop.example"},
      {"Visited:", true, "Address: "},
      {"Cookie:@", true, "User: \nAddress: "}};
  for (const auto& [source, is_record, description] : kRows) {
    EXPECT_EQ(IsCacheRecord(source), is_record) << source;
    if (is_record) {
      EXPECT_EQ(DescribeCacheRecord(source), description) << source;
    }
  }
}

}  // namespace
}  // namespace quellix
