#include <gtest/gtest.h>

#include "platform/path.h"
#include "platform/text.h"
#include "run/path_list.h"
#include "run/removal.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

TEST(Text, MasksMeanWhatFindFirstFileMeans) {
  // Names and masks; the last but one is one character in two UTF-16 units.
  static constexpr const char* kFit[][2] = {
      {"a.txt", "*.*"}, {"noext", "*.*"}, {"noext", "*."},   {"A.TMP", "*.tmp"}, {"ab", "?b"},
      {"a", "a.*"},     {"", "*"},        {"😀.x", "\?\?.x"}, {"Ä.LOG", "ä.log"}};
  static constexpr const char* kDiffer[][2] = {
      {"a.txt", "*."},        {"a.tmpx", "*.tmp"},
      {"a.tmp.bak", "*.tmp"}, {"b", "?b"},
      {"ab", "a.*"},          {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "*a*a*a*a*a*a*a*a*a*b"}};
  for (const auto& [name, mask] : kFit) EXPECT_TRUE(MatchesMask(name, mask)) << name << mask;
  for (const auto& [name, mask] : kDiffer) EXPECT_FALSE(MatchesMask(name, mask)) << name << mask;
}

TEST(Text, Utf16CarriesEveryNameThereAndBack) {
  const std::string lone_surrogate = "a\xED\xA0\x80z";
  for (const std::string text : {"plain", "\xC3\xBC", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
    EXPECT_EQ(ToUtf8(ToUtf16(text)), text);
    EXPECT_EQ(FromUtf16Bytes(ToUtf16Bytes(text)), text);
    EXPECT_TRUE(IsUtf8(text));
  }
  EXPECT_EQ(ToUtf8(ToUtf16(lone_surrogate)), lone_surrogate);
  for (const std::string bad :
       {"\xFF", "\xC0\x80", "\xE2\x82", "a\xED\xA0\x80z", "\xF5\x80\x80\x80"})
    EXPECT_FALSE(IsUtf8(bad));
}

TEST(Text, CaseIsFoldedBeyondAscii) {
  EXPECT_TRUE(EqualsNoCase("STRAßE Ä", "straße ä") && !EqualsNoCase("ab", "abc"));
  EXPECT_TRUE(ContainsNoCase("C:\\MyTemplates\\", "temp"));
  EXPECT_EQ(ReplaceNoCase("%systemroot%;%SystemRoot%", "%SYSTEMROOT%", "C:\\W"), "C:\\W;C:\\W");
}

TEST(Numbers, OnlyWholeNumbersCount) {
  EXPECT_EQ(ToInt16(" 1 "), 1);
  EXPECT_EQ(ToInt16("2.5"), 2);
  EXPECT_EQ(ToInt16("3.5"), 4);
  EXPECT_EQ(ToInt16("-32768"), -32768);
  for (const char* none : {"", " ", "x", "1x", "32768", "1e99", "0x10", "nan", "inf"})
    EXPECT_FALSE(ToInt16(none)) << none;
}

TEST(Sizes, FormatSizeChangesUnitAtTheLimits) {
  Locale german;
  german.decimal = ",";
  german.thousand = ".";
  Locale terse;
  terse.leading_zero = false;
  EXPECT_EQ(FormatSize(0, 2, true, {}), "0 Bytes");
  EXPECT_EQ(FormatSize(-5000, 2, true, {}), "-5,000 Bytes");
  EXPECT_EQ(FormatSize(1023, 2, true, {}), "1,023 Bytes");
  EXPECT_EQ(FormatSize(1024, 2, true, {}), "1.00 KB");
  EXPECT_EQ(FormatSize(1048575, 2, true, german), "1.024,00 KB");
  EXPECT_EQ(FormatSize(1048576, 2, true, {}), "1.00 MB");
  EXPECT_EQ(FormatSize(1073741823, 0, true, {}), "1,024 MB");
  EXPECT_EQ(FormatSize(1073741824.0 * 1.5, 1, false, {}), "1.5");
  EXPECT_EQ(FormatNumber(0.25, 1, terse), ".3");
  Locale indian;
  indian.grouping = "3;2;0";
  EXPECT_EQ(FormatNumber(123456789, 0, indian), "12,34,56,789");
}

TEST(Dates, TheLocaleDecidesFormAndValidity) {
  const LocalTime time{2026, 11, 4, 9, 5, 7};
  Locale iso;
  iso.short_date = "yyyy-MM-dd";
  iso.time_format = "HH:mm:ss";
  EXPECT_EQ(FormatDateTime(time, {}), "11/4/2026 9:05:07 AM");
  EXPECT_EQ(FormatDateTime(time, iso), "2026-11-04 09:05:07");
  EXPECT_EQ(FormatDateTime({2026, 11, 4, 0, 0, 0}, {}), "11/4/2026");
  EXPECT_TRUE(IsDateTime("11/4/2026 9:05:07 AM", {}) && IsDateTime("11/4/2026", {}));
  for (const char* bad :
       {"", "yesterday", "13/1/2026", "11/4/2026 25:00:00 AM", "11/4/2026 9:05:07",
        "2026-11-04 09:05:07", "11/4/2026 9:05:07 AM trailing"})
    EXPECT_FALSE(IsDateTime(bad, {})) << bad;
}

TEST(PathList, HoldsALittleMoreThanTheCharacters) {
  PathList list;
  size_t characters = 0;
  for (int i = 0; i < 200000; ++i) {
    const std::string name = std::to_string(i);
    list.Append("C:\\Temp\\sub\\", name, ".tmp");
    characters += 12 + name.size() + 4;
  }
  list.Append("", std::string(100000, 'x'));
  EXPECT_EQ(list[123456], "C:\\Temp\\sub\\123456.tmp");
  EXPECT_EQ(list[200000].size(), 100000u);
  EXPECT_LE(static_cast<double>(list.MemoryHeld()),
            1.5 * static_cast<double>(characters) + 64.0 * 200000);
  list.Clear();
  EXPECT_EQ(list.size(), 0u);
  EXPECT_EQ(list.MemoryHeld(), 0u);
}

TEST(TemporaryNames, OursAreKnownAndOthersAreNot) {
  EXPECT_TRUE(IsTemporaryName(TemporaryName()));
  EXPECT_EQ(TemporaryName().size(), 23u);
  EXPECT_NE(TemporaryName(), TemporaryName());
  for (const char* name : {"~QX00ffAA.TMP", "~qx123.tmp", "quellix-1-0.tmp", "Quellix-99-1.tmp",
                           "~quellix-restore.tmp"})
    EXPECT_TRUE(IsTemporaryName(name)) << name;
  for (const char* name :
       {"", ".tmp", "~qx.tmp", "~qxyz.tmp", "qx12.tmp", "~qx12.tm", "quellix-.tmp", "quellix-1.tmp",
        "quellix--1.tmp", "quellix-1-.tmp", "quellix-a-1.tmp", "~quellix-replaced.tmp"})
    EXPECT_FALSE(IsTemporaryName(name)) << name;
}

}  // namespace
}  // namespace quellix
