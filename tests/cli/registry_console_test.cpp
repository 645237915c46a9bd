#include "cli/console_fixture.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

class RegistryConsoleTest : public RegistryFixture {
 protected:
  ProgramResult Run(std::vector<std::string> arguments) {
    StoreMachine(*machine);
    const std::vector<std::string> where = MachineArguments(*machine);
    arguments.insert(arguments.end(), where.begin(), where.end());
    return RunQuellixctl(arguments);
  }
};

TEST_F(RegistryConsoleTest, ReferencesAreListedDeletedWhenAskedAndRestored) {
  const std::string key = std::string(kComponents) + "\\";
  Set(kMachine, key + "{1}", "", Text("gone"));
  Set(kMachine, key + "{2}", "", Text("here"));
  Set(kMachine, key + "{2}", "IsInstalled", Number(1));
  const RegistryPicture before = PictureOfAll();
  const ProgramResult listed = Run({"registry", "components"});
  EXPECT_EQ(listed.exit_code, 0);
  EXPECT_EQ(listed.output,
            "orphaned\tgone\tFalse\t\t{1}\nvalid\there\tTrue\t\t{2}\n2 entries, 1 orphaned\n");
  const ProgramResult json = Run({"registry", "components", "--json", "--delete"});
  EXPECT_EQ(json.exit_code, 0);
  EXPECT_NE(json.output.find("\"SubKey\": \"{1}\",\n      \"state\": \"orphaned\""),
            std::string::npos)
      << json.output;
  EXPECT_NE(json.output.find("1 entries, 0 orphaned"), std::string::npos) << json.output;
  StoreMachine(*machine);
  EXPECT_FALSE(machine->KeyExists(kMachine, key + "{1}"));
  ASSERT_EQ(UndoFiles().size(), 1u);
  const ProgramResult backups_listed = Run({"backup", "list"});
  EXPECT_NE(backups_listed.output.find("1 key(s)"), std::string::npos) << backups_listed.output;
  EXPECT_EQ(Run({"backup", "restore", UndoFiles()[0]}).exit_code, 0);
  StoreMachine(*machine);
  EXPECT_EQ(PictureOfAll(), before);
}

TEST_F(RegistryConsoleTest, ThoroughReferencesAreDeletedWhenAskedForByName) {
  Set(kUser, "Qx1\\deep", "QxGone", Text(scratch + "gone.txt"));
  const ProgramResult plain = Run({"registry", "file-references"});
  EXPECT_EQ(plain.output.find("QxGone"), std::string::npos) << plain.output;
  const ProgramResult listed = Run({"registry", "file-references", "--thorough"});
  EXPECT_NE(listed.output.find("orphaned\tHKEY_CURRENT_USER:Qx1\\deep\\\tQxGone\t" + scratch +
                               "gone.txt\n"),
            std::string::npos)
      << listed.output;
  EXPECT_EQ(Run({"registry", "shared-dlls", "--thorough"}).exit_code, 2);
  EXPECT_EQ(Run({"registry", "everything"}).exit_code, 2);
}

}  // namespace
}  // namespace quellix
