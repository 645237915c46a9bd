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
  struct Row {
    const char* name;
    std::string bytes;
    std::string text;
    bool picture = false;
  };
  const std::string kNeither = "The file of this entry is neither a text nor a picture.";
  const Row kRows[] = {{"page.htm", "<p>\r\none\rtwo\n", "<p>\none\ntwo\n"},
                       {"empty.htm", "", ""},
                       {"utf8.txt", "﻿Größe", "Größe"},
                       {"ansi.txt", "Gr\366\337e", "Größe"},
                       {"wide.txt", std::string("\377\376a\0\xE4\0b", 7), "a\xC3\xA4"},
                       {"long.txt", long_text, long_text.substr(0, (64 << 10) - 1)},
                       {"photo.txt", "\xFF\xD8\xFF\xE0....", "", true},
                       {"dot.gif", "GIF89a\1", "", true},
                       {"dot.png", std::string("\x89PNG\r\n\x1A\n\0", 9), "", true},
                       {"dot.bmp", std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0", 14), "", true},
                       {"letters.txt", "BMX wheels", "BMX wheels"},
                       {"tool.exe", std::string("MZ\0\0", 4), kNeither}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    machine->MakeFile(scratch + row.name, row.bytes);
    const CacheContent content = Content(row.name);
    EXPECT_EQ(content.text, row.text);
    EXPECT_EQ(content.picture, row.picture ? scratch + row.name : "");
    EXPECT_EQ(ports.files.ReadWholeFile(scratch + row.name), row.bytes);
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
