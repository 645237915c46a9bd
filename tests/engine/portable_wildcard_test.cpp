#include <gtest/gtest.h>

#include "platform/text.h"
#include "search/drive_list.h"
#include "search/ignore_lists.h"
#include "search/wildcard.h"

namespace quellix {
namespace {

// Patterns and texts, parted by "|", with a blank between two rows.
constexpr const char* kFits =
    "*.log|ERROR.LOG *.log|error.log *.log|.log ?.log|é.log *| ***|x | file#|file7 [a-c]x|bX "
    "[!a-c]x|dx [!]|! [a!]|! [-a]|- [a-]|- [*]|* [a-c0-9]|7 [^a]|^ a[]b|ab a]|a] a.b|a.b "
    "*a*b|xaybzb a*|a é*|Été";
constexpr const char* kDiffers =
    "*.log|error.log.txt ?.log|ab.log |x file#|filex [a-c]x|dx [!a-c]x|Bx [!a-c]x|x [*]|x [#]|5 "
    "[|[ *[a|xa [c-a]|b a.b|axb *.*|name";

TEST(WildcardTest, EveryRowOfTheDialect) {
  const auto matches = [](const std::string& row) {
    const size_t bar = row.find('|');
    return Wildcard(UpCase(row.substr(0, bar))).Matches(ToUtf16(UpCase(row.substr(bar + 1))));
  };
  for (const std::string& row : Split(kFits, ' ')) EXPECT_TRUE(matches(row)) << row;
  for (const std::string& row : Split(kDiffers, ' ')) EXPECT_FALSE(matches(row)) << row;
}

TEST(WildcardTest, ManyStarsStayCheap) {
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "*A";
  EXPECT_FALSE(Wildcard(pattern + "*B").Matches(std::u16string(20000, u'A')));
}

TEST(DriveLineTest, RootsComeInTheOrderOfTheLine) {
  const std::tuple<const char*, const char*, std::vector<std::string>> rows[] = {
      {"two", " C: Hard drive D: CD-ROM drive", {"C:\\", "D:\\"}},
      {"other order and case", " d: cd-rom DRIVE C: hard drive", {"d:\\", "C:\\"}},
      {"every name",
       " A: Floppy drive E: Removable drive N: Remote (network) drive R: RAM disk"
       " U: The drive type cannot be determined X: The root directory does not exist",
       {"A:\\", "E:\\", "N:\\", "R:\\", "U:\\", "X:\\"}},
      {"empty", "", {}},
      {"no colon", " C Hard drive", {}},
      {"behind the last colon", "C:D", {"C:\\"}}};
  for (const auto& [name, line, want] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ParseDriveLine(line), want);
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
  EXPECT_TRUE(lists.IsIgnoredFile("DESKTOP.INI") && !lists.IsIgnoredFile("desktop.ini2"));
  EXPECT_TRUE(lists.IsIgnoredExtension("a.b.SYS"));
  EXPECT_FALSE(lists.IsIgnoredExtension("sys") || lists.IsIgnoredExtension("a.sys.b"));
  EXPECT_TRUE(lists.IsIgnoredFolder("C:\\MyTemplates\\") && !lists.IsIgnoredFolder("C:\\Tem\\p\\"));
  for (const char* bin : {"C:\\$Recycle.Bin\\S-1\\", "D:\\RECYCLER", "D:\\recycled\\"})
    EXPECT_TRUE(lists.IsIgnoredFolder(bin)) << "halves that belong together: " << bin;
  EXPECT_FALSE(lists.IsIgnoredFolder("C:\\x\\RECYCLER\\"));
  EXPECT_TRUE(lists.Ignores("X.SYS") && lists.Ignores("DESKTOP.INI"));
  EXPECT_FALSE(lists.Ignores("X."));
}

}  // namespace
}  // namespace quellix
