// What needs administrator rights, and who may be given them.
#include "app/rights.h"

#include "app/item_list.h"
#include "app/recipe_sections.h"
#include "plugins/recipe_rights.h"
#include "plugins/recipe_run.h"
#include "support/plugin_fixture.h"
#include "support/recording_session.h"

namespace quellix {
namespace {

TEST(RightsTest, OnlyTheSameProfileIsCleaned) {
  const Profile wanted{"S-1-5-21-7-1001", "C:\\Users\\Jos\u00e9 \"x\""};
  const std::string arguments = RightsArguments(wanted);
  EXPECT_EQ(arguments,
            "-A S-1-5-21-7-1001 433A5C55736572735C4A6F73C3A9202278"
            "22");
  const auto parsed = ParseRightsArguments("  " + arguments + " ");
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->user + parsed->folder, wanted.user + wanted.folder);
  for (const char* other :
       {"", "-A", "-a S-1-5-21-7 43", "-A S-1-5-21-7", "-A S-1-5-21-7 4", "-A S-1-5-21-7 4g",
        "-A Administrator 43", "-A S-1-5-21-7 43 44", "-h", "-A S-1-5-21-7  43"}) {
    EXPECT_FALSE(ParseRightsArguments(other)) << other;
  }
  const struct {
    const char* name;
    Profile here;
    bool is_same;
  } kRows[] = {{"the same", wanted, true},
               {"in another case", {wanted.user, "c:\\USERS\\jos\u00c9 \"x\"\\"}, true},
               {"an administrator's", {"S-1-5-21-7-500", "C:\\Users\\Admin"}, false},
               {"another user's folder", {"S-1-5-21-7-500", wanted.folder}, false},
               {"a folder that has moved", {wanted.user, "D:\\Users\\x"}, false},
               {"nobody", {"", ""}, false}};
  for (const auto& row : kRows)
    EXPECT_EQ(WhyNotSame(wanted, row.here).empty(), row.is_same) << row.name;
  EXPECT_FALSE(WhyNotSame({"", ""}, {"", ""}).empty());
  const std::string why = WhyNotSame(wanted, kRows[2].here);
  EXPECT_TRUE(Holds(why, wanted.folder) && Holds(why, "C:\\Users\\Admin"));
}

struct RightsRunTest : PluginFixture {
  RightsRunTest() { session.is_administrator = false; }
  modPlugin::ListedRecipe Parse(const std::string& keys) {
    return modPlugin::ParseRecipeLists({"[Qx *]\r\n" + ReplaceNoCase(keys, "/", "\r\n")}).at(0);
  }

  RecordingSession session;
  Machine user = WithSession(ports, session);
  Engine run{user, view};
};

TEST_F(RightsRunTest, WhatARecipeNamesTellsWhetherItNeedsThem) {
  const std::tuple<const char*, bool, bool> kRows[] = {
      {"FileKey1=%AppData%\\Qx|*.*", false, true},
      {"FileKey1=%ProgramData%\\Qx|*.*", false, true},
      {"FileKey1=C:\\Qx|*.*", false, true},
      {"FileKey1=D:\\Windows data|*.*", false, true},
      {"RegKey1=HKCU\\Software\\Qx", false, true},
      {"FileKey1=%ProgramFiles%\\Qx|*.log", true, false},
      {"FileKey1=%CommonProgramFiles%\\Qx|*.log", true, false},
      {"FileKey1=c:\\program files (x86)\\Qx|*.log", true, false},
      {"FileKey1=%SystemDrive%\\Windows\\Qx|*.log", true, false},
      {"FileKey1=%WinDir%\\Temp|*.log", true, false},
      {"RegKey1=HKLM\\Software\\Qx", true, false},
      {"RegKey1=HKCR\\Qx", true, false},
      {"FileKey1=%WinDir%|*.log/FileKey2=%AppData%\\Qx|*.*", true, true}};
  for (const auto& [of_keys, needs, has_rest] : kRows) {
    const modPlugin::Plugin plugin = Parse(of_keys).plugin;
    EXPECT_EQ(NeedsAdministrator(plugin), needs) << of_keys;
    EXPECT_EQ(NamesAnything(WithoutAdministrator(plugin)), has_rest) << of_keys;
  }
}

TEST_F(RightsRunTest, WithoutThemThatIsSkippedAndTold) {
  const std::string windows = ports.system.WindowsFolder() + "\\";
  machine->MakeFile(windows + "qx.log", "123");
  machine->MakeFile(scratch + "qx.log", "123");
  WriteOwn("Winapp2.ini",
           "[All *]\r\nFileKey1=%WinDir%|qx.log\r\n[Part *]\r\nFileKey1=%WinDir%|"
           "qx.log\r\nFileKey2=" +
               scratch + "|qx.log\r\n");
  for (const char* name : {"All", "Part"}) run.selection().recipes().SetTicked(name, true);
  run.selection().SetChecked(*FindItem("ActiveSetupClean"), true);
  PreviewRun preview(user, view);
  preview.Run(run.selection());
  EXPECT_EQ(preview.entries()->all.size(), 1u);
  const auto shown = preview.state().Parts.Find<modPlugin::ShownRecipes>();
  NoteShown(run.selection().recipes(), shown);
  run.RunCleaning();
  for (const char* line :
       {"Active setup temporary folders is skipped: it needs administrator "
        "rights.\r\n",
        "All is skipped: it needs administrator rights.\r\n",
        "Part: what needs administrator rights was left.\r\n", "Part: Files Deleted: 1 "}) {
    EXPECT_TRUE(Holds(run.state().RunLog, line));
  }
  EXPECT_FALSE(run.state().SomeErrors);
  EXPECT_TRUE(machine->Exists(windows + "qx.log") && !machine->Exists(scratch + "qx.log"));
  session.is_administrator = true;
  run.RunCleaning();
  EXPECT_TRUE(Holds(run.state().RunLog, "Part is not cleaned: it is new")) << "that was not seen";
  EXPECT_TRUE(machine->Exists(windows + "qx.log"));
  preview.Run(run.selection());
  NoteShown(run.selection().recipes(), preview.state().Parts.Find<modPlugin::ShownRecipes>());
  run.RunCleaning();
  EXPECT_FALSE(machine->Exists(windows + "qx.log"));
  session.is_administrator = false;
  run.RunCleaning();
  EXPECT_FALSE(Holds(run.state().RunLog, "not cleaned")) << "who has seen all has seen a part";
}

TEST_F(RightsRunTest, AStartWithThemKeepsOnlyWhatNeedsThem) {
  WriteOwn("Winapp2.ini",
           "[Mine *]\r\nFileKey1=%AppData%\\Qx|*.*\r\n[Theirs *]\r\nFileKey1="
           "%WinDir%|qx.log\r\n");
  machine->MakeFile(ports.system.WindowsFolder() + "\\qx.log", "1");
  Selection& selection = run.selection();
  ItemList list(user, selection);
  list.SetSections(FindRecipeSections(user).sections);
  const size_t theirs = list.RowCount() - 1;
  EXPECT_EQ(list.Text(theirs, ItemColumn::kNote), "needs administrator rights");
  selection.SetChecked(*FindItem("CleanTempFiles"), true);
  selection.browsers().SetTicked("chrome:cache", true);
  selection.recipes().SetTicked("Mine", true);
  EXPECT_FALSE(list.LacksRights());
  list.Toggle(theirs);
  EXPECT_TRUE(list.LacksRights());
  list.Toggle(theirs);
  selection.SetChecked(*FindItem("CleanMemDump"), true);
  EXPECT_TRUE(list.LacksRights()) << "some of it";
  for (const char* name : {"Theirs", "Gone"}) selection.recipes().SetTicked(name, true);
  KeepOnlyRights(user, selection);
  EXPECT_EQ(selection.CountChecked(), 1);
  EXPECT_TRUE(selection.IsChecked(*FindItem("CleanMemDump")));
  EXPECT_TRUE(selection.browsers().empty());
  EXPECT_EQ(Joined(selection.recipes().Ticked()), "Theirs");
  session.is_administrator = true;
  EXPECT_FALSE(ItemList(user, selection).LacksRights());
}

}  // namespace
}  // namespace quellix
