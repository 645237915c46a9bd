#include "cli/console_fixture.h"

namespace quellix {
namespace {

class SearchConsoleTest : public ConsoleTest {
 protected:
  ProgramResult Search(std::vector<std::string> arguments) {
    StoreMachine(*machine);
    arguments.insert(arguments.begin(), "search");
    const std::vector<std::string> where = MachineArguments(*machine);
    arguments.insert(arguments.end(), where.begin(), where.end());
    return RunQuellixctl(arguments);
  }
};

TEST_F(SearchConsoleTest, FindsArePrintedAndRemovedOnlyWhenAsked) {
  machine->MakeFile(scratch + "one.qxj", "12345");
  machine->MakeFile(scratch + "two.QXJ", "");
  ports.files.WriteWholeFile(ports.program_folder + "\\UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  const ProgramResult listed = Search({"unnecessary"});
  EXPECT_EQ(listed.exit_code, 0);
  EXPECT_NE(listed.output.find(scratch + "one.qxj\t5\t"), std::string::npos) << listed.output;
  EXPECT_NE(listed.output.find("\tQXJ\tUnnecessary Files\n"), std::string::npos);
  EXPECT_TRUE(machine->Exists(scratch + "one.qxj"));
  const auto lock = machine->LockFile(scratch + "two.QXJ");
  const ProgramResult removed = Search({"unnecessary", "--delete", "--json"});
  EXPECT_EQ(removed.exit_code, 3) << removed.output;
  EXPECT_NE(removed.output.find("\"name\": \"one.qxj\",\n    \"bytes\": 5,"), std::string::npos)
      << removed.output;
  EXPECT_NE(removed.output.find("\"deleted\": true"), std::string::npos);
  EXPECT_NE(removed.output.find("not deleted: " + scratch + "two.QXJ"), std::string::npos);
  EXPECT_NE(removed.output.find("Files Deleted: 1 Space Gained: 5 Bytes"), std::string::npos);
  EXPECT_EQ(machine->Tree(scratch), std::vector<std::string>{"two.QXJ"});
}

TEST_F(SearchConsoleTest, NothingIsRemovedWhileTheSettingsCannotBeRead) {
  machine->MakeFile(scratch + "one.qxj", "1");
  ports.files.WriteWholeFile(ports.program_folder + "\\UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  machine->MakeFolder(ports.program_folder + "\\Settings.ini");
  EXPECT_EQ(Search({"unnecessary", "--delete"}).exit_code, 1);
  EXPECT_EQ(machine->Tree(scratch), std::vector<std::string>{"one.qxj"});
  EXPECT_EQ(Search({"unnecessary"}).exit_code, 1) << "it is said";
}

TEST_F(SearchConsoleTest, NothingToSearchForIsTold) {
  ports.files.WriteWholeFile(ports.program_folder + "\\UNFI.txt", "0\x01*.qxj\x01Ours\r\n");
  const ProgramResult searched = Search({"unnecessary"});
  EXPECT_EQ(searched.exit_code, 1);
  EXPECT_NE(searched.output.find("no type of unnecessary files is ticked"), std::string::npos);
}

TEST_F(SearchConsoleTest, AnUnknownKindIsWrongUsage) {
  EXPECT_EQ(Search({"everything"}).exit_code, 2);
  EXPECT_EQ(Search({}).exit_code, 2);
}

}  // namespace
}  // namespace quellix
