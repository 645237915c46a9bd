// Deletions from the registry of a volume: what is told is what is on the disk then.
#include <fstream>

#include "cli/console_fixture.h"
#include "support/registry_fixture.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

constexpr const char* kServices = "SYSTEM\\ControlSet001\\Services\\Qx Probe";

struct VolumeRegistryConsoleTest : Console<RegistryFixture> {
  VolumeTestMachine& volume() { return dynamic_cast<VolumeTestMachine&>(*machine); }
  std::string UserHive() { return volume().Native("C:\\Users\\Quellix Tester\\NTUSER.DAT"); }
  std::string ClassesHive() {
    return volume().Native(
        "C:\\Users\\Quellix Tester\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat");
  }
  // Writes `to` over each `from` of the same length in a hive file.
  void Bend(const std::string& file, const std::string& from, const std::string& to) {
    StoreMachine(*machine);
    std::string bytes = ReadNative(file);
    for (size_t at = bytes.find(from); at != bytes.npos; at = bytes.find(from, at + 1))
      bytes.replace(at, from.size(), to);
    WriteNative(file, bytes);
  }
};

TEST_F(VolumeRegistryConsoleTest, AnItemWhoseChangesDoNotReachTheDiskFails) {
  const std::string explorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
  const std::tuple<const char*, std::string, const char*, const char*> kRows[] = {
      {"CleanRunMRU", kRunMruKey, "There was an error in cleaning the Run MRU. ",
       "Windows run history... "},
      {"CleanTypedURL", kTypedUrlsKey, "There was an error in cleaning the History. ",
       "Typed URLs... "},
      {"CleanRecentDocs", explorer + "RecentDocs",
       "There was an error in cleaning Recent Documents. ", "Recent documents... "},
      {"CleanFindHistory", explorer + "MenuOrder\\Start Menu\\Find",
       "There was an error in cleaning the Find History. ", ""},
      {"CleanInstallMRU", "InstallLocationsMRU", "There was an error in cleaning Install MRU. ",
       "Install from history..."},
      {"CleanOfficeHistory",
       "Software\\Microsoft\\Office\\9.0\\Common\\Open Find\\Microsoft Word\\Settings"
       "\\Open\\File Name MRU",
       "There was an error in cleaning the MS OfficeRegistry History Lists. ",
       "MS Office history..."}};
  Names arguments = {"clean", "--item"};
  for (const auto& [item, key, message, line] : kRows) {
    for (const char* name : {"a", "b"}) machine->SetText(kUser, key, name, "x");
    arguments.push_back(item);
  }
  StoreMachine(*machine);
  const std::string before = ReadNative(UserHive());
  {
    const auto read_only = machine->LockFile("C:\\Users\\Quellix Tester\\NTUSER.DAT");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exit_code, 1);
    for (const auto& [item, key, message, line] : kRows) {
      EXPECT_TRUE(Holds(result.output, message)) << item << ": " << result.output;
      EXPECT_TRUE(*line == '\0' || !Holds(result.output, line)) << result.output;
    }
  }
  EXPECT_EQ(ReadNative(UserHive()), before);
  Expect(arguments, 0, {"Windows run history... Files Deleted: 2\n"});
  for (const auto& [item, key, message, line] : kRows)
    EXPECT_TRUE(machine->ValueNames(kUser, key).empty());
}

TEST_F(VolumeRegistryConsoleTest, WhatAHiveWithLostChangesDoesNotShowIsNotTakenForGone) {
  machine->SetText(kUser, "Software\\Qx", "v", "x");
  const Names kRows[] = {{"clean", "--item", "CleanRunMRU"},
                         {"clean", "--item", "CleanRunMRU", "--preview"}};
  for (const bool dirty : {true, false}) {
    StoreMachine(*machine);
    SetHiveDirty(UserHive(), dirty);
    const std::string before = ReadNative(UserHive());
    for (const Names& row : kRows) {
      const ProgramResult result = Run(row);
      EXPECT_EQ(result.exit_code, dirty ? 1 : 0) << result.output;
      EXPECT_EQ(Holds(result.output, "Not all could be looked for. Windows was not shut down"),
                dirty)
          << result.output;
      EXPECT_TRUE(ReadNative(UserHive()) == before);
    }
    EXPECT_EQ(Holds(Run({"registry", "startup"}).output, "Windows was not shut down"), dirty);
  }
}

TEST_F(VolumeRegistryConsoleTest, ReferencesThatStayAreCountedAndEndInOne) {
  machine->SetText(kUser, "Qx1", "goes", scratch + "none");
  machine->SetText(kUser, "Qx1", "QxNameWithNul", "x");
  Bend(UserHive(), "QxNameWithNul", std::string("QxName\0ithNul", 13));
  const std::string stays = "Software\\Classes\\Qx2";  // in a hive of its own
  machine->SetText(kUser, stays, "stays", scratch + "none");
  Set(kMachine, kServices, "ImagePath", Text(scratch + "none.sys"));
  StoreMachine(*machine);
  SetHiveDirty(ClassesHive(), true);
  Expect({"registry", "file-references", "--thorough", "--delete"}, 1,
         {"2 reference(s) in keys that Windows depends on are left\n", ", 1 could not be deleted\n",
          "1 reference(s) could not be deleted: "});
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), (Names{std::string("QxName\0ithNul", 13)}))
      << "what no other name could be given is no obstacle";
  EXPECT_EQ(machine->ValueNames(kUser, stays), Names{"stays"});
  EXPECT_EQ(machine->ValueNames(kMachine, kServices), Names{"ImagePath"});
}

TEST_F(VolumeRegistryConsoleTest, WhatAVolumeCannotJudgeIsToldApart) {
  const std::tuple<const char*, std::string, const char*> kRows[] = {
      {"a.exe", scratch + "none.exe", "orphaned"},
      {"b.exe", scratch + "there.exe", "valid"},
      {"c.exe", scratch + "none.exe /switch", "not judged"},
      {"d.exe", "relative.exe", "not judged"},
      {"e.exe", "Q:\\not mapped.exe", "not judged"},
      {"f.exe", "\\\\server\\share\\far.exe", "not judged"}};
  machine->MakeFile(scratch + "there.exe", "x");
  for (const auto& [name, path, state] : kRows) {
    Set(kMachine, std::string(kApps) + "\\" + name, "", Text(path));
    Set(kMachine, kDlls, path, Number(1));
  }
  const ProgramResult apps = Run({"registry", "app-paths"}),
                      dlls = Run({"registry", "shared-dlls"});
  for (const auto& [name, path, state] : kRows) {
    EXPECT_TRUE(Holds(apps.output, std::string(state) + "\t" + name + "\t"));
    EXPECT_TRUE(Holds(dlls.output, std::string(state) + "\t1\t" + path + "\n"));
  }
  EXPECT_TRUE(Holds(apps.output, "6 entries, 1 orphaned, 4 not judged\n"));
  EXPECT_TRUE(Holds(dlls.output,
                    "5 entries, 1 with missing files, 0 with zero usage count, 4 not judged\n"));
  Expect({"registry", "app-paths", "--delete"}, 0, {"5 entries, 0 orphaned, 4 not judged\n"});
}

TEST_F(VolumeRegistryConsoleTest, NamesThatDifferInCaseAloneGoAsThePreviewSays) {
  machine->SetText(kUser, kRunMruKey, "QxTwin", "1");
  machine->SetText(kUser, kRunMruKey, "QxTwix", "2");
  for (const char* key : {"QxKey", "QxKez"})
    machine->SetText(kUser, std::string("Software\\Qx\\") + key, "v", key);
  Bend(UserHive(), "QxTwix", "qXtWiN");
  Bend(UserHive(), "QxKez", "qXkEY");
  machine->MakeFile(own + "Plugins\\qx.cdp",
                    "R\x01Yes\x01No\x01HKEY_CURRENT_USER\\Software\\Qx\x01\r\n");
  for (const char* command : {"preview", "process"}) {
    const ProgramResult result = Run({"plugins", command, "qx"});
    EXPECT_EQ(result.exit_code, 0) << result.output;
    EXPECT_EQ(Holds(result.output, "1 other thing."), std::string_view(command) == "preview")
        << result.output;
  }
  const ProgramResult preview = Run({"clean", "--item", "CleanRunMRU", "--preview"});
  const ProgramResult run = Run({"clean", "--item", "CleanRunMRU"});
  for (const ProgramResult& result : {preview, run}) {
    EXPECT_EQ(result.exit_code, 0) << result.output;
    EXPECT_TRUE(Holds(result.output, "Windows run history... Files Deleted: 2\n"));
  }
  EXPECT_TRUE(Holds(preview.output, "RunMRU, QxTwin\n") &&
              Holds(preview.output, "RunMRU, qXtWiN\n"))
      << preview.output;
  EXPECT_TRUE(machine->ValueNames(kUser, kRunMruKey).empty());
  EXPECT_FALSE(machine->KeyExists(kUser, "Software\\Qx"));
}

}  // namespace
}  // namespace quellix
