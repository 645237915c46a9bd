#include "browser_tools/cache_preview.h"

#include "browser_tools/cache_list.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct CachePreviewTest : RunFixture {
  CacheContent Content(const std::string& name) {
    return ReadCacheContent(ports, {.source = "http://x.example/", .local_file = scratch + name});
  }
};

TEST_F(CachePreviewTest, AFileIsShownAsWhatItIs) {
  const std::string long_text = std::string((64 << 10) - 1, 'a') + "\xC3\xA4 and more";
  const std::string kPicture = "(a picture)",
                    kNeither = "The file of this entry is neither a text nor a picture.";
  const std::tuple<const char*, std::string, std::string> kRows[] = {
      {"page.htm", "<p>\r\none\rtwo\n", "<p>\none\ntwo\n"},
      {"empty.htm", "", ""},
      {"utf8.txt", "﻿Größe", "Größe"},
      {"ansi.txt", "Gr\366\337e", "Größe"},
      {"wide.txt", std::string("\377\376a\0\xE4\0b", 7), "a\xC3\xA4"},
      {"long.txt", long_text, long_text.substr(0, (64 << 10) - 1)},
      {"photo.txt", "\xFF\xD8\xFF\xE0....", kPicture},
      {"dot.gif", "GIF89a\1", kPicture},
      {"dot.png", std::string("\x89PNG\r\n\x1A\n\0", 9), kPicture},
      {"dot.bmp", std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0", 14), kPicture},
      {"letters.txt", "BMX wheels", "BMX wheels"},
      {"tool.exe", std::string("MZ\0\0", 4), kNeither}};
  for (const auto& [name, bytes, text] : kRows) {
    SCOPED_TRACE(name);
    machine->MakeFile(scratch + name, bytes);
    const CacheContent content = Content(name);
    EXPECT_EQ(content.text, text == kPicture ? "" : text);
    EXPECT_EQ(content.picture, text == kPicture ? scratch + name : "");
    EXPECT_EQ(ports.files.ReadWholeFile(scratch + name), bytes);
  }
}

TEST_F(CachePreviewTest, WhatCannotBeShownIsSaid) {
  EXPECT_EQ(ReadCacheContent(ports, {.source = "http://x.example/", .local_file = {}}).text,
            "This entry has no file.");
  EXPECT_TRUE(Holds(Content("gone.htm").text, "gone.htm"));
  machine->MakeFolder(scratch + "folder.htm");
  EXPECT_NE(Content("folder.htm").text, "");
}

TEST_F(CachePreviewTest, DatesAreLocalTimeInOneForm) {
  const int64_t kNoon = 129130416000000000;  // 2010-03-14 12:00 UTC
  const LocalTime local = ports.system.ToLocalTime(kNoon);
  const std::string day = FormatCacheDate(ports.system, kNoon);
  EXPECT_TRUE(day.starts_with("03/1")) << day;
  EXPECT_TRUE(
      Holds(day, "/2010 " + std::to_string(local.hour % 12 == 0 ? 12 : local.hour % 12) + ":"));
  EXPECT_TRUE(day.ends_with(local.hour < 12 ? ":00 AM" : ":00 PM")) << day;
  EXPECT_EQ(FormatCacheDate(ports.system, 0), "");
  EXPECT_EQ(FormatCacheDate(ports.system, -1), "");
}

}  // namespace
}  // namespace quellix
