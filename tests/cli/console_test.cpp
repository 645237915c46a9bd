#include "cli/console_fixture.h"

namespace quellix {
namespace {

const std::string kLine(67, '-');

TEST_F(ConsoleTest, ItemsAreListedByKey) {
  const ProgramResult result = RunQuellixctl({"items"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 30);
  for (const Item& item : AllItems()) {
    EXPECT_NE(result.output.find(std::string("\n") + item.key + " ") != std::string::npos,
              item.run_order == 1)
        << item.key;
  }
  EXPECT_NE(result.output.find("Downloaded ActiveX & OCX\n"), std::string::npos);
}

TEST_F(ConsoleTest, WrongUsageIsToldWithItsOwnExitCode) {
  struct Row {
    std::vector<std::string> arguments;
    const char* told;
  };
  std::vector<std::string> unknown = {"clean", "--item", "CleanEverything"};
  const std::vector<std::string> where = MachineArguments(*machine);
  unknown.insert(unknown.end(), where.begin(), where.end());
  StoreMachine(*machine);
  const Row rows[] = {{{}, "subcommand is required"},
                      {{"polish"}, "subcommand is required"},
                      {{"clean"}, "required"},
                      {{"clean", "--item", "CleanTempFiles", "--method", "burn"}, "burn"},
                      {unknown, "there is no item \"CleanEverything\""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.told);
    const ProgramResult result = RunQuellixctl(row.arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_NE(result.output.find(row.told), std::string::npos) << result.output;
  }
  EXPECT_EQ(RunQuellixctl({"--help"}).exit_code, 0);
}

TEST_F(ConsoleTest, ACleanRunPrintsItsLogAndRemoves) {
  engine.RunOneItem(*FindItem("CleanTempFiles"));
  machine->MakeFile(temp + "sub\\\xC3\xA9t\xC3\xA9.tmp", "12345");
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  machine->SetText(kUser, kRunMruKey, "a", "cmd");
  machine->SetText(kUser, kTypedUrlsKey, "url1", "http://example.org/");
  for (const bool again : {false, true}) {
    const ProgramResult result = Clean({"--item", "CleanRunMRU", "chkTemp"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.output,
              std::string("Temporary files... Files Deleted: ") +
                  (again ? "0 Space Gained: 0" : "1 Space Gained: 5") +
                  " Bytes\nWindows run history... Files Deleted: " + (again ? "0" : "1") + "\n\n" +
                  kLine + "\nFiles Deleted:  " +
                  (again ? "0   Space Gained:  0" : "1   Space Gained:  5") + " Bytes\n");
  }
  EXPECT_TRUE(machine->Tree(temp).empty());
  EXPECT_TRUE(machine->ValueNames(kUser, kRunMruKey).empty());
  EXPECT_EQ(machine->ValueNames(kUser, kTypedUrlsKey).size(), 1u);
}

TEST_F(ConsoleTest, APreviewListsWhatWouldGoAndChangesNothing) {
  engine.RunOneItem(*FindItem("CleanTempFiles"));
  machine->MakeFile(temp + "sub\\a.tmp", "12345");
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  machine->SetText(kUser, kRunMruKey, "a", "cmd");
  const std::string stored = ReadProgramFile("Settings.ini");
  for (const char* method : {"backup", "wipe"}) {
    const ProgramResult result =
        Clean({"--item", "CleanRunMRU", "chkTemp", "--preview", "--method", method});
    EXPECT_EQ(result.exit_code, 0);
    const std::string begin = "File            " + temp + "sub\\a.tmp\nFolder          " + temp +
                              "sub\nRegistry value  HKEY_CURRENT_USER\\" + kRunMruKey +
                              ", a\nThe log of such a run:\nTemporary files... Files Deleted: 1";
    EXPECT_EQ(result.output.substr(0, begin.size()), begin);
    EXPECT_TRUE(
        result.output.ends_with("\nNothing was changed. A run would remove 1 file (5 Bytes), 1 "
                                "folder and 1 other thing.\n"))
        << result.output;
    EXPECT_EQ(machine->Tree(temp), (std::vector<std::string>{"sub\\", "sub\\a.tmp"}));
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 1u);
    EXPECT_EQ(ReadProgramFile("Settings.ini"), stored);
    EXPECT_FALSE(machine->Exists(ports.program_folder + "\\Backup"));
  }
}

TEST_F(ConsoleTest, NothingIsRemovedWhileTheSettingsCannotBeRead) {
  machine->MakeFile(temp + "a.tmp", "1");
  const std::string ini = ports.program_folder + "\\Settings.ini";
  machine->MakeFolder(ini);
  const ProgramResult result = Clean({"--item", "CleanTempFiles"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.output.find("Nothing is removed"), std::string::npos) << result.output;
  EXPECT_TRUE(machine->Exists(temp + "a.tmp"));
  EXPECT_EQ(Clean({"--item", "CleanTempFiles", "--preview"}).exit_code, 1) << "it is said";
  ports.files.RemoveFolder(ini);
  EXPECT_EQ(Clean({"--item", "CleanTempFiles"}).exit_code, 0);
  EXPECT_FALSE(machine->Exists(temp + "a.tmp"));
}

TEST_F(ConsoleTest, FilesThatStayAreSaidByTheExitCode) {
  machine->MakeFile(temp + "locked.tmp", "1");
  {
    const auto lock = machine->LockFile(temp + "locked.tmp");
    const ProgramResult result = Clean({"--item", "CleanTempFiles", "--method", "wipe"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_NE(result.output.find("Some files were not deleted"), std::string::npos);
  }
  EXPECT_EQ(Clean({"--item", "CleanTempFiles", "--method", "recycle"}).exit_code, 0);
  StoreMachine(*machine);
  EXPECT_GE(ports.shell.QueryRecycleBin().items, 1u);
}

}  // namespace
}  // namespace quellix
