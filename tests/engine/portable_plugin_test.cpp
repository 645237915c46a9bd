#include <gtest/gtest.h>

#include "platform/text.h"
#include "plugins/ini_outline.h"
#include "plugins/key_generator.h"
#include "plugins/plugin_file.h"

namespace quellix::modPlugin {
namespace {

// Recipes are written with "|" for the separator.
std::string Recipe(std::string text) {
  for (char& character : text) {
    if (character == '|') character = kSeparator;
  }
  return text;
}

TEST(PluginFile, AWholeRecipeComesBackByteForByte) {
  const std::string text = Recipe(
      "D|Größe\r\nF|Yes|No|C:\\Temp\\*.*\r\nF|No|Yes|%WINDIR%\\Temp\\*.log\r\n"
      "F|Yes|Yes|C:\\a\\*.*|Yes\r\nF|No|No|C:\\b\\*.*|No|Yes\r\n"
      "R|No|Yes|HKEY_CURRENT_USER\\Software\\MyEditor|File1\r\nR|Yes|No|HKEY_USERS\\a\\b|\r\n"
      "R|Yes|No|HKEY_USERS\\c|v|Yes\r\nI|my.ini|Recent|No|File1|C:\\My\\\r\n"
      "I|my.ini|All|Yes||C:\\My\\\r\nW|Yes|lost\r\nX|File|C:\\My\\a|more\r\nT|Key|a\\b|v\r\n"
      "Q|of tomorrow||\r\nG|Grün\r\nP|a.exe\r\nX|\r\n");
  EXPECT_EQ(FormatPlugin(ParsePlugin(text)), text);
  EXPECT_EQ(FormatPlugin({}), Recipe("D|\r\n"));
  // Any order and any line end are read, in one order they are written.
  EXPECT_EQ(FormatPlugin(ParsePlugin(Recipe("I|i|s|Yes|k|C:\\|more\rF|yes|Yes |C:\\x\\*.*\n\n"
                                            "junk\nD|d|cut\r\nR|No|No|K|v"))),
            Recipe("D|d\r\nF|No|No|C:\\x\\*.*\r\nR|No|No|K|v\r\nI|i|s|Yes|k|C:\\\r\n"));
}

TEST(PluginFile, WhatIsNoRecordIsSkipped) {
  std::vector<std::string> rows = Split(
      "/\r\n/|||||||/F|Yes|No/R|Yes|No|HKEY_CURRENT_USER\\a\\b/I|a.ini|s|Yes|k/"
      "f|No|No|C:\\a/ F|No|No|C:\\a/x|No|No|C:\\a\r\nDD|x/X|~/F|No|No|C:\\Temp~\\*.*",
      '/');
  rows.push_back(std::string(5000, kSeparator));
  rows.emplace_back("\377\376F\0\1\0N\0o\0\1\0N\0o\0\1\0C\0:\0\\\0*\0\r\0\n\0", 28);
  for (const std::string& text : rows) {
    const std::string row = Recipe(ReplaceNoCase(text, "~", std::string(1, '\0')));
    SCOPED_TRACE(row.substr(0, 40));
    EXPECT_EQ(FormatPlugin(ParsePlugin(row)), Recipe("D|\r\n"));
  }
}

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
