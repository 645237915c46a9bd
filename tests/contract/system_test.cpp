#include "contract/contract_fixture.h"
#include "platform/locale.h"
#include "platform/text.h"

namespace quellix {
namespace {

struct SystemContract : ContractFixture {
  System& system_ = machine_.system;
};

TEST_F(SystemContract, FoldersExistAndEndAsPromised) {
  const std::string windows = system_.WindowsFolder(), temp = system_.TempFolder();
  ASSERT_FALSE(windows.empty() || temp.empty());
  EXPECT_NE(windows.back(), '\\');
  EXPECT_EQ(temp.back(), '\\');
  EXPECT_TRUE(EqualsNoCase(system_.SystemFolder(), windows + "\\System32"));
  for (const std::string& folder : {windows, system_.SystemFolder(), temp}) {
    const auto info = machine_.files.Look(folder);
    EXPECT_TRUE(info && info->is_folder) << folder;
  }
}

TEST_F(SystemContract, EnvironmentIsExpandedAndComparesWithoutCase) {
  EXPECT_TRUE(EqualsNoCase(system_.Environment("WINDIR").value_or(""), system_.WindowsFolder()));
  EXPECT_EQ(system_.Environment("SystemRoot"), system_.Environment("SYSTEMROOT"));
  EXPECT_EQ(system_.Environment("OS"), "Windows_NT");
  EXPECT_FALSE(system_.Environment("QuellixNotSet"));
  for (const char* name : {"TEMP", "USERPROFILE", "APPDATA", "LOCALAPPDATA", "USERNAME"}) {
    const auto value = system_.Environment(name);
    ASSERT_TRUE(value && !value->empty()) << name;
    EXPECT_EQ(value->find('%'), std::string::npos) << name;
  }
}

TEST_F(SystemContract, DrivesHoldTheOneOfWindows) {
  const auto drives = system_.Drives();
  EXPECT_TRUE(std::is_sorted(drives.begin(), drives.end(),
                             [](const Drive& a, const Drive& b) { return a.letter < b.letter; }));
  const auto own = std::find_if(drives.begin(), drives.end(), [this](const Drive& drive) {
    return drive.letter == system_.WindowsFolder()[0];
  });
  ASSERT_NE(own, drives.end());
  EXPECT_EQ(own->type, DriveType::kFixed);
}

TEST_F(SystemContract, VersionTimeAndLocaleArePlausible) {
  EXPECT_EQ(system_.Version().platform, 2);
  EXPECT_GE(system_.Version().major, 5);
  EXPECT_FALSE(system_.IsProgramRunning("qx-none.exe") || system_.IsProgramRunning(""));
  const LocalTime now = system_.Now();
  EXPECT_GE(now.year, 2024);
  EXPECT_TRUE(now.month >= 1 && now.month <= 12 && now.day >= 1 && now.day <= 31);
  const Locale locale = system_.UserLocale();
  EXPECT_TRUE(IsDateTime(FormatDateTime(now, locale), locale)) << FormatDateTime(now, locale);
}

TEST_F(SystemContract, AnsiBytesBecomeUtf8) {
  EXPECT_EQ(system_.FromAnsi("plain \r\n\x01 text"), "plain \r\n\x01 text");
  EXPECT_EQ(system_.FromAnsi("gr\xFC\xDF \x80"), "grüß €");
  EXPECT_EQ(system_.FromAnsi(""), "");
  EXPECT_EQ(system_.FromAnsi(std::string(3000, '\xE4')).size(), 6000u);
}

}  // namespace
}  // namespace quellix
