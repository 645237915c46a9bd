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

struct ShellContract : ContractFixture {
  Shell& shell_ = machine_.shell;
};

TEST_F(ShellContract, RecycledFilesAreCountedAndEmptied) {
  shell_.EmptyRecycleBin();
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);

  const std::string names[] = {"plain.txt", "no extension", "Größe Ключ.dat", "read-only.txt"};
  for (const std::string& name : names) test_->MakeFile(scratch_ + name, "12345");
  if (test_->Can(Ability::kEmptyReadOnlyFiles)) {
    files_.SetAttributes(scratch_ + "read-only.txt", kReadOnly);
  }
  for (const std::string& name : names) {
    files_.Recycle(scratch_ + name);
    EXPECT_FALSE(test_->Exists(scratch_ + name)) << name;
  }
  EXPECT_EQ(shell_.QueryRecycleBin().items, std::size(names));
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 5 * std::size(names));

  shell_.EmptyRecycleBin();
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 0u);
  EXPECT_NO_THROW(shell_.EmptyRecycleBin()) << "an empty bin is no error";
}

TEST_F(ShellContract, AFileThatCannotBeRecycledStays) {
  const std::string file = scratch_ + "locked\\file.txt";
  test_->MakeFile(file, "kept");
  shell_.EmptyRecycleBin();
  EXPECT_TRUE(KindOf([&] { files_.Recycle(scratch_ + "missing"); }));
  {
    const auto lock = test_->LockFile(file);
    EXPECT_TRUE(KindOf([&] { files_.Recycle(file); }));
  }
  EXPECT_EQ(files_.ReadWholeFile(file), "kept");
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);
}

struct ProfileContract : ContractFixture {
  std::string Text() { return Content("Settings.ini"); }
  const std::string file_ = scratch_ + "Settings.ini";
};

TEST_F(ProfileContract, ReadsAsWindowsReads) {
  test_->MakeFile(file_,
                  "; note\r\n[General]\r\nPlain=value\r\n Blanks =  inner blanks  \r\n"
                  "Quoted=\"  kept  \"\r\nEmpty=\r\n;Comment=1\r\nEqual=a=b\r\nPlain=second\r\n"
                  "Name=Größe\r\nno equals sign\r\n[Other]\r\nPlain=other\r\nLast=end");
  const std::tuple<const char*, const char*, std::optional<std::string>> kRows[] = {
      {"General", "Plain", "value"},     {"GENERAL", "plain", "value"},
      {"General", "Equal", "a=b"},       {"General", "Blanks", "inner blanks"},
      {"General", "Quoted", "  kept  "}, {"General", "Empty", ""},
      {"General", "Name", "Größe"},      {"Other", "Plain", "other"},
      {"Other", "Last", "end"},          {"General", "Last", std::nullopt},
      {"Missing", "Plain", std::nullopt}};
  for (const auto& [section, key, value] : kRows)
    EXPECT_EQ(machine_.profile.Read(file_, section, key), value) << section << "/" << key;
  EXPECT_FALSE(machine_.profile.Read(scratch_ + "missing.ini", "General", "Plain"));
}

TEST_F(ProfileContract, ReadsAnsiAndMarkedFiles) {
  test_->MakeFile(file_, "\xEF\xBB\xBF[General]\r\nKey=gr\xC3\xBCn\r\n");
  EXPECT_EQ(machine_.profile.Read(file_, "General", "Key"), "grün");
  test_->MakeFile(file_, "[General]\r\nKey=gr\xFCn\r\n");
  EXPECT_EQ(machine_.profile.Read(file_, "General", "Key"), "grün");
}

TEST_F(ProfileContract, WritingMakesTheFileAndKeepsEveryOtherByte) {
  machine_.profile.Write(file_, {"General", "Key", "1"});
  EXPECT_EQ(Text(), "[General]\r\nKey=1\r\n");
  test_->MakeFile(file_, "; mine\r\n[Else]\r\nk = v  \r\n[General]\r\n\r\nB=2\r\n\r\n[Z]\r\nB=9");
  for (const char* run : {"first", "again"}) {
    machine_.profile.Write(file_, {"general", "C", "1"});
    machine_.profile.Write(file_, {"GENERAL", "b", "3"});
    machine_.profile.Write(file_, {"Größe", "Ключ", "Мир"});
    EXPECT_EQ(Text(),
              "; mine\r\n[Else]\r\nk = v  "
              "\r\n[General]\r\n\r\nb=3\r\nC=1\r\n\r\n[Z]\r\nB=9\r\n[Größe]\r\nКлюч=Мир\r\n")
        << run;
  }
}

TEST_F(ProfileContract, DeletingKeepsEveryOtherByte) {
  const std::tuple<const char*, const char*, const char*, const char*, const char*> kRows[] = {
      {"a key", "[A]\r\n k = 1\n;k=2\r\nl=3", "a", "K", "[A]\r\n;k=2\r\nl=3"},
      {"every key of the name", "[A]\nk=1\nk=2\n[B]\nk=3\n[a]\nk=4\n", "A", "k",
       "[A]\n[B]\nk=3\n[a]\n"},
      {"a section", "x\r\n[A]\r\nk=1\r\n\r\n[B]\r\nk=2", "A", nullptr, "x\r\n[B]\r\nk=2"},
      {"the last section", "[B]\r\n[ A ]\r\nk=1", "A", nullptr, "[B]\r\n"},
      {"every section of the name", "[A]\n1\n[B]\n[A]\n2\n", "A", nullptr, "[B]\n"},
      {"ANSI", "[gr\xFCn]\r\nk=1\r\n[\xE4]\r\nk=\xE4\r\n", "GR\xC3\x9CN", nullptr,
       "[\xE4]\r\nk=\xE4\r\n"},
      {"byte-order mark", "\xEF\xBB\xBF[A]\r\nk=1\r\n[B]", "A", nullptr, "\xEF\xBB\xBF[B]"},
      {"missing section", "[A]\nk=1", "B", "k", "[A]\nk=1"},
      {"no section", "[]\nk=1", "", nullptr, "[]\nk=1"},
      {"no key", "[A]\n=1", "A", "", "[A]\n=1"}};
  for (const auto& [name, before, section, key, after] : kRows) {
    SCOPED_TRACE(name);
    test_->MakeFile(file_, before);
    for (int run = 0; run < 2; ++run) {
      if (key != nullptr) {
        machine_.profile.DeleteKey(file_, section, key);
      } else {
        machine_.profile.DeleteSection(file_, section);
      }
      EXPECT_EQ(Text(), after);
    }
  }
  machine_.profile.DeleteSection(scratch_ + "none.ini", "A");
  EXPECT_FALSE(test_->Exists(scratch_ + "none.ini"));
}

TEST_F(ProfileContract, Utf16IsReadAndStaysUtf16) {
  const auto utf16 = [](const char* text) { return "\xFF\xFE" + ToUtf16Bytes(text); };
  const std::string before = utf16("[Größe]\r\nk=1\r\nl=Мир\r\n[B]\r\nk=😀");
  test_->MakeFile(file_, before);
  EXPECT_EQ(machine_.profile.Read(file_, "GRÖSSE", "l"), std::nullopt);
  EXPECT_EQ(machine_.profile.Read(file_, "GRÖßE", "l"), "Мир");
  machine_.profile.DeleteKey(file_, "Größe", "none");
  EXPECT_EQ(Text(), before);
  for (int run = 0; run < 2; ++run) {
    machine_.profile.DeleteKey(file_, "größe", "K");
    EXPECT_EQ(Text(), utf16("[Größe]\r\nl=Мир\r\n[B]\r\nk=😀"));
  }
  machine_.profile.DeleteSection(file_, "Größe");
  EXPECT_EQ(Text(), utf16("[B]\r\nk=😀"));
  test_->MakeFile(file_, before + "x");  // half a character is no UTF-16
  machine_.profile.DeleteSection(file_, "B");
  EXPECT_EQ(Text(), before + "x");
}

TEST_F(ProfileContract, AFileThatCannotBeWrittenStaysWhole) {
  test_->MakeFile(scratch_ + "locked\\x.ini", "[General]\r\nKey=1\r\n");
  {
    const auto lock = test_->LockFile(scratch_ + "locked\\x.ini");
    EXPECT_TRUE(KindOf([&] {
      machine_.profile.Write(scratch_ + "locked\\x.ini", {"General", "Key", "2"});
    }));
  }
  EXPECT_EQ(machine_.profile.Read(scratch_ + "locked\\x.ini", "General", "Key"), "1");
}

}  // namespace
}  // namespace quellix
