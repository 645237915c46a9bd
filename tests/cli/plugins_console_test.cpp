#include "cli/console_fixture.h"

namespace quellix {
namespace {

class PluginsConsoleTest : public ConsoleTest {
 protected:
  ProgramResult Plugins(std::vector<std::string> arguments) {
    StoreMachine(*machine);
    arguments.insert(arguments.begin(), "plugins");
    const std::vector<std::string> where = MachineArguments(*machine);
    arguments.insert(arguments.end(), where.begin(), where.end());
    return RunQuellixctl(arguments);
  }
};

TEST_F(PluginsConsoleTest, APluginIsCheckedEnabledListedAndProcessed) {
  machine->MakeFile(scratch + "logs\\a.log", "123");
  machine->MakeFile(ports.program_folder + "\\Plugins\\qx.cdp",
                    "D\x01My logs\r\nF\x01No\x01No\x01" + scratch + "logs\\*.log\r\n");
  machine->MakeFile(ports.program_folder + "\\Plugins\\bad.cdp",
                    "nothing\nF\x01Maybe\x01No\x01%WINDIR%\\*.*\nR\x01Yes\nQ\x01\n");
  EXPECT_EQ(
      Plugins({"check", "qx.cdp"}).output,
      "line 1: Description: My logs\nline 2: Removes the files *.log in " + scratch + "logs.\n");
  const ProgramResult bad = Plugins({"check", "bad"});
  EXPECT_EQ(bad.exit_code, 1);
  for (const char* told : {"line 1: fault: It has no separator", "line 2: fault: \"Maybe\"",
                           "line 2: fault: ", "line 3: fault: It has 2 fields of 5",
                           "line 4: fault: \"Q\" is no kind"}) {
    EXPECT_NE(bad.output.find(told), std::string::npos) << bad.output;
  }
  EXPECT_EQ(Plugins({"list"}).output, "[ ] bad.cdp  \n[ ] qx.cdp  My logs\n");
  EXPECT_EQ(Plugins({"enable", "QX"}).exit_code, 0);
  EXPECT_EQ(Plugins({"list"}).output, "[ ] bad.cdp  \n[x] qx.cdp  My logs\n");
  EXPECT_EQ(Plugins({"disable", "qx.cdp"}).exit_code, 0);
  EXPECT_EQ(Plugins({"list"}).output, "[ ] bad.cdp  \n[ ] qx.cdp  My logs\n");
  for (const char* name : {"none", "..\\Settings.ini"}) {
    EXPECT_EQ(Plugins({"enable", name}).exit_code, 2) << name;
  }
  EXPECT_EQ(Clean({"--item", "CleanPlugins"}).exit_code, 0);
  EXPECT_TRUE(machine->Exists(scratch + "logs\\a.log")) << "it is disabled";
  EXPECT_EQ(Plugins({"process", "qx", "none"}).exit_code, 1);
  EXPECT_TRUE(machine->Exists(scratch + "logs\\a.log")) << "one name is wrong";
  const ProgramResult preview = Plugins({"preview", "qx"});
  EXPECT_EQ(preview.exit_code, 0);
  EXPECT_EQ(preview.output, "File            " + scratch +
                                "logs\\a.log\nNothing was changed. A run would remove 1 file "
                                "(3 Bytes), 0 folders and 0 other things.\n");
  EXPECT_TRUE(machine->Exists(scratch + "logs\\a.log")) << "a preview removes nothing";
  for (const bool again : {false, true}) {
    const ProgramResult result = Plugins({"process", "qx"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.output, again ? "Files Deleted: 0 Space Gained: 0 Bytes\n"
                                   : "Files Deleted: 1 Space Gained: 3 Bytes\n");
  }
}

}  // namespace
}  // namespace quellix
