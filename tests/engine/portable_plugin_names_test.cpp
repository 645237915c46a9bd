#include <gtest/gtest.h>

#include "plugins/ini_outline.h"
#include "plugins/key_generator.h"

namespace quellix::modPlugin {
namespace {

TEST(KeyGenerator, NumbersAreInclusiveAndPadded) {
  const std::tuple<const char*, NumberRange, std::vector<std::string>> kRows[] = {
      {"both bounds", {"8", "10", false, "0"}, {"8", "9", "10"}},
      {"one number", {"3", "3", false, "0"}, {"3"}},
      {"the width of the last", {"8", "10", true, "0"}, {"08", "09", "10"}},
      {"wider than the padding", {"99", "101", true, "0"}, {"099", "100", "101"}},
      {"one zero", {"1", "2", true, "0"}, {"01", "02"}},
      {"two zeros", {"9", "10", true, "00"}, {"009", "010"}},
      {"zero", {"0", "1", false, ""}, {"0", "1"}},
      {"blanks", {" 1", "2 ", false, ""}, {"1", "2"}}};
  for (const auto& [what, range, texts] : kRows) {
    SCOPED_TRACE(what);
    const Numbers numbers = GenerateNumbers(range);
    EXPECT_EQ(numbers.refusal, "");
    EXPECT_EQ(numbers.texts, texts);
  }
}

TEST(KeyGenerator, ARangeThatIsNoneIsRefused) {
  EXPECT_EQ(GenerateNumbers({"2", "1", false, "0"}).refusal,
            "The To value should be greater than from");
  for (const NumberRange& range : {NumberRange{"", "1", false, ""},
                                   {"1", "x", false, ""},
                                   {"-1", "1", false, ""},
                                   {"1.5", "2", false, ""},
                                   {"1", "99999999999", false, ""}}) {
    const Numbers numbers = GenerateNumbers(range);
    EXPECT_EQ(numbers.refusal, "Please enter whole numbers") << range.from << " " << range.to;
    EXPECT_TRUE(numbers.texts.empty());
  }
  EXPECT_EQ(GenerateNumbers({"1", "10000", false, ""}).texts.size(), 10000u);
  EXPECT_NE(GenerateNumbers({"0", "10000", false, ""}).refusal, "");
  EXPECT_NE(GenerateNumbers({"0", "4294967295", false, ""}).refusal, "");
}

TEST(IniOutline, SectionsAndKeysAreOfferedOnce) {
  const auto outline = OutlineIni(
      "lost=1\r\n[A]\r\n k = 1\r\n;c=2\r\nK=3\r\nno equals\r\n=none\r\n\r\n[ B ]trailing\n"
      "l=1=2\n[a]\nm=\n[open\n[]\nn=1");
  const std::vector<std::pair<std::string, std::vector<std::string>>> kExpected = {
      {"A", {"k", "m"}}, {"B", {"l"}}, {"open", {}}, {"", {"n"}}};
  ASSERT_EQ(outline.size(), kExpected.size());
  for (size_t i = 0; i < kExpected.size(); ++i) {
    EXPECT_EQ(outline[i].name, kExpected[i].first);
    EXPECT_EQ(outline[i].keys, kExpected[i].second);
  }
  EXPECT_TRUE(OutlineIni("").empty());
  std::string huge;
  for (int i = 0; i < 100000; ++i) huge += "[s" + std::to_string(i % 50000) + "]\nk=1\nk=2\n";
  EXPECT_EQ(OutlineIni(huge).size(), 50000u);
}

}  // namespace
}  // namespace quellix::modPlugin
