#include "cli/console_fixture.h"
#include "support/hive_file.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

class VolumeConsoleTest : public ConsoleTest {
 protected:
  VolumeTestMachine& volume() { return dynamic_cast<VolumeTestMachine&>(*machine); }
  ProgramResult CleanTemp(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"--item", "CleanTempFiles"});
    return Clean(more);
  }
};

TEST_F(VolumeConsoleTest, BadVolumesAndUsersAreToldAndNothingIsTouched) {
  machine->MakeFile(temp + "a.tmp", "1");
  const std::string root = volume().options().volume;
  const std::string no_windows = root + "/Scratch";
  struct Row {
    const char* name;
    std::vector<std::string> arguments;
    const char* told;
  };
  const Row rows[] = {
      {"no Windows", {"--volume", no_windows}, no_windows.c_str()},
      {"no folder", {"--volume", root + "/none"}, "none"},
      {"no such user", {"--volume", root, "--user", "Nobody"}, kTesterName},
      {"bad drive", {"--volume", root, "--drive", "D=/x"}, "D:=DIR"},
      {"missing drive", {"--volume", root, "--drive", "D:=/no/such/folder"}, "/no/such/folder"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> arguments = {"clean", "--item", "CleanTempFiles"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    StoreMachine(*machine);
    const ProgramResult result = RunQuellixctl(arguments);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.output.find(row.told), std::string::npos) << result.output;
    EXPECT_TRUE(machine->Exists(temp + "a.tmp"));
  }
}

TEST_F(VolumeConsoleTest, OneOfSeveralUsersMustBeNamed) {
  machine->MakeFile(temp + "a.tmp", "1");
  StoreMachine(*machine);
  SeedUser(volume().options().volume, "Other One", "S-1-5-21-1004336348-1177238915-682003330-1002");
  const ProgramResult unnamed = CleanTemp();
  EXPECT_EQ(unnamed.exit_code, 1);
  EXPECT_NE(unnamed.output.find("Other One"), std::string::npos) << unnamed.output;
  EXPECT_NE(unnamed.output.find(kTesterName), std::string::npos);
  EXPECT_TRUE(machine->Exists(temp + "a.tmp"));
  EXPECT_EQ(CleanTemp({"--user", "other one"}).exit_code, 0);
  EXPECT_TRUE(machine->Exists(temp + "a.tmp"));
  EXPECT_EQ(CleanTemp({"--user", kTesterName}).exit_code, 0);
  EXPECT_FALSE(machine->Exists(temp + "a.tmp"));
}

TEST_F(VolumeConsoleTest, ARegistryNotShutDownCleanlyIsReadButNotWritten) {
  machine->MakeFile(temp + "a.tmp", "1");
  machine->SetText(kUser, kRunMruKey, "a", "cmd");
  const auto denial = machine->DenyRegistryWrites(kUser, kRunMruKey);
  const ProgramResult result = Clean({"--item", "CleanTempFiles", "CleanRunMRU"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.output.find("There was an error in cleaning the Run MRU. "), std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("Temporary files... Files Deleted: 1 "), std::string::npos);
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 1u);
}

TEST_F(VolumeConsoleTest, ADamagedRegistryEndsInASentence) {
  StoreMachine(*machine);
  const std::string hive = volume().Native("C:\\Users\\Quellix Tester\\NTUSER.DAT");
  for (const std::string& bytes : {std::string(), std::string(5000, '\x5A')}) {
    WriteNative(hive, bytes);
    const ProgramResult result =
        RunQuellixctl({"clean", "--item", "CleanRunMRU", "--volume", volume().options().volume,
                       "--settings", volume().options().settings});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.output.find("NTUSER.DAT"), std::string::npos) << result.output;
  }
}

TEST_F(VolumeConsoleTest, WhatBelongsToARunningWindowsIsLoggedAndTheRunGoesOn) {
  machine->MakeFile(temp + "a.tmp", "1");
  const ProgramResult result =
      Clean({"--item", "CleanClipboard", "CleanTempFiles", "CleanCache", "CleanHistory"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_NE(result.output.find("Temporary files... Files Deleted: 1 "), std::string::npos);
  for (const char* caption :
       {"\nWindows Clipboard...", "\nHistory...", "\nTemporary Internet Files (Cache)..."}) {
    const size_t at = result.output.find(caption);
    ASSERT_NE(at, std::string::npos) << result.output;
    EXPECT_NE(result.output.find("running Windows", at), std::string::npos) << caption;
  }
}

TEST_F(VolumeConsoleTest, TheBrowserCacheIsRefusedWithItsReason) {
  StoreMachine(*machine);
  for (const char* command : {"list", "delete"}) {
    const ProgramResult result =
        RunQuellixctl({"cache", command, "--volume", volume().options().volume});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.output, "quellixctl: The browser cache belongs to a running Windows.\n");
  }
}

}  // namespace
}  // namespace quellix
