#include <gtest/gtest.h>

#include "platform/text.h"
#include "search/drive_list.h"
#include "search/ignore_lists.h"
#include "search/wildcard.h"

namespace quellix {
namespace {

TEST(WildcardTest, EveryRowOfTheDialect) {
  struct Row {
    const char *pattern, *text;
    bool want;
  };
  const Row rows[] = {
      {"*.log", "ERROR.LOG", true},
      {"*.log", "error.log", true},
      {"*.log", "error.log.txt", false},
      {"*.log", ".log", true},
      {"?.log", "ab.log", false},
      {"?.log", "\xC3\xA9.log", true},
      {"*", "", true},
      {"***", "x", true},
      {"", "", true},
      {"", "x", false},
      {"file#", "file7", true},
      {"file#", "filex", false},
      {"[a-c]x", "bX", true},
      {"[a-c]x", "dx", false},
      {"[!a-c]x", "dx", true},
      {"[!a-c]x", "Bx", false},
      {"[!a-c]x", "x", false},
      {"[!]", "!", true},
      {"[a!]", "!", true},
      {"[-a]", "-", true},
      {"[a-]", "-", true},
      {"[*]", "*", true},
      {"[*]", "x", false},
      {"[#]", "5", false},
      {"[a-c0-9]", "7", true},
      {"[^a]", "^", true},
      {"a[]b", "ab", true},
      {"a]", "a]", true},
      {"[", "[", false},
      {"*[a", "xa", false},
      {"[c-a]", "b", false},
      {"a.b", "a.b", true},
      {"a.b", "axb", false},
      {"*a*b", "xaybzb", true},
      {"a*", "a", true},
      {"*.*", "name", false},
      {"\xC3\xA9*", "\xC3\x89t\xC3\xA9", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " / " + row.text);
    EXPECT_EQ(Wildcard(UpCase(row.pattern)).Matches(ToUtf16(UpCase(row.text))), row.want);
  }
}

TEST(WildcardTest, ManyStarsStayCheap) {
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "*A";
  EXPECT_FALSE(Wildcard(pattern + "*B").Matches(std::u16string(20000, u'A')));
}

TEST(DriveLineTest, RootsComeInTheOrderOfTheLine) {
  struct Row {
    const char *name, *line;
    std::vector<std::string> want;
  };
  const Row rows[] = {
      {"two", " C: Hard drive D: CD-ROM drive", {"C:\\", "D:\\"}},
      {"other order and case", " d: cd-rom DRIVE C: hard drive", {"d:\\", "C:\\"}},
      {"every name",
       " A: Floppy drive E: Removable drive N: Remote (network) drive R: RAM disk"
       " U: The drive type cannot be determined X: The root directory does not exist",
       {"A:\\", "E:\\", "N:\\", "R:\\", "U:\\", "X:\\"}},
      {"empty", "", {}},
      {"no colon", " C Hard drive", {}},
      {"behind the last colon", "C:D", {"C:\\"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(ParseDriveLine(row.line), row.want);
  }
}

TEST(DriveLineTest, FloppiesAreRemovableDrivesAAndB) {
  EXPECT_EQ(DriveTypeName({'A', DriveType::kRemovable}), "Floppy drive");
  EXPECT_EQ(DriveTypeName({'b', DriveType::kRemovable}), "Floppy drive");
  EXPECT_EQ(DriveTypeName({'C', DriveType::kRemovable}), "Removable drive");
  EXPECT_EQ(DriveTypeName({'A', DriveType::kFixed}), "Hard drive");
}

TEST(IgnoreListsTest, NamesExtensionsAndPartsOfPaths) {
  const IgnoreLists lists({"Desktop.ini", ""}, {"sys", ""}, {"temp", ""});
  EXPECT_TRUE(lists.IsIgnoredFile("DESKTOP.INI"));
  EXPECT_FALSE(lists.IsIgnoredFile("desktop.ini2"));
  EXPECT_TRUE(lists.IsIgnoredExtension("a.b.SYS"));
  EXPECT_FALSE(lists.IsIgnoredExtension("sys"));
  EXPECT_FALSE(lists.IsIgnoredExtension("a.sys.b"));
  EXPECT_TRUE(lists.IsIgnoredFolder("C:\\MyTemplates\\"));
  EXPECT_FALSE(lists.IsIgnoredFolder("C:\\Tem\\p\\"));
  EXPECT_TRUE(lists.Ignores("X.SYS") && lists.Ignores("DESKTOP.INI"));
  EXPECT_FALSE(lists.Ignores("X."));
}

}  // namespace
}  // namespace quellix
