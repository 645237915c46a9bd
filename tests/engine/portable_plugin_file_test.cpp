#include <gtest/gtest.h>

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
  const std::string kRows[] = {
      "",
      "\r\n",
      Recipe("|||||||"),
      std::string(5000, kSeparator),
      Recipe("F|Yes|No"),
      Recipe("R|Yes|No|HKEY_CURRENT_USER\\a\\b"),
      Recipe("I|a.ini|s|Yes|k"),
      Recipe("f|No|No|C:\\a"),
      Recipe(" F|No|No|C:\\a"),
      Recipe("x|No|No|C:\\a\r\nDD|x"),
      Recipe("X|") + std::string(1, '\0'),
      Recipe("F|No|No|C:\\Temp") + std::string(1, '\0') + "\\*.*",
      std::string("\377\376F\0\1\0N\0o\0\1\0N\0o\0\1\0C\0:\0\\\0*\0\r\0\n\0", 28)};
  for (const std::string& row : kRows) {
    SCOPED_TRACE(row.substr(0, 40));
    EXPECT_EQ(FormatPlugin(ParsePlugin(row)), Recipe("D|\r\n"));
  }
  std::string bytes;
  for (unsigned seed = 1; bytes.size() < 100000; seed = seed * 1664525 + 1013904223) {
    bytes += static_cast<char>(seed >> 24);
  }
  std::string last;
  ReadLines(bytes + "\r\nD", [&last](const Record& record) { last = record.fields[0]; });
  EXPECT_EQ(last, "D");
  EXPECT_TRUE(ParsePlugin(bytes).files.empty());
}

}  // namespace
}  // namespace quellix::modPlugin
