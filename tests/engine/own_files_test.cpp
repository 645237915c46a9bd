// A program that lies where its user may not write: what came with it are his defaults.
#include "settings/own_files.h"

#include "plugins/plugin_list.h"
#include "settings/list_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct OwnFilesTest : RunFixture {
  OwnFilesTest() {
    here.installed_folder = scratch + "Installed";
    here.program_folder = scratch + "Roaming\\Quellix";
    machine->MakeFile(came + "quellix.exe", "MZ");
    machine->MakeFile(came + "Settings.ini",
                      "[General]\r\nDelMethod=R\r\nTipBox=0\r\n[Mine]\r\nKey=1\r\n");
    machine->MakeFile(came + "DefIFI.txt", "shipped.ini\r\n");
    machine->MakeFile(came + "Plugins\\one.cdp",
                      "F\x01No\x01No\x01"
                      "C:\\one\r\n");
    machine->MakeFile(came + "Plugins\\two.cdp",
                      "F\x01No\x01No\x01"
                      "C:\\two\r\n");
    before = machine->Tree(came);
  }
  void TearDown() override {
    EXPECT_EQ(machine->Tree(came), before) << "nothing is written beside the program";
    EXPECT_EQ(Read(came + "Settings.ini").find("DelMethod=W"), std::string::npos);
  }

  const std::string came = scratch + "Installed\\", mine = scratch + "Roaming\\Quellix\\";
  Machine here = ports;
  Names before;
};

TEST_F(OwnFilesTest, AreDefaultsUntilTheUserHasHisOwn) {
  Settings settings_here(here);
  EXPECT_EQ(settings_here.Load().RemovalMode, kRecycle);
  EXPECT_EQ(settings_here.Load().BackupFolder, mine + "Backup\\");
  EXPECT_EQ(ReadListFile(here, "IFI.txt", "DefIFI.txt"), Names{"shipped.ini"});
  EXPECT_FALSE(machine->Exists(scratch + "Roaming")) << "reading writes nothing";

  Preferences changed = settings_here.Load();
  changed.RemovalMode = kWipe;
  settings_here.Save(changed, settings_here.Load(), false);
  EXPECT_EQ(settings_here.Load().RemovalMode, kWipe);
  EXPECT_FALSE(settings_here.Load().tip_box) << "the other defaults came along";
  EXPECT_EQ(settings_here.ReadIniValue("Mine", "Key", ""), "1");
  WriteListFile(here, "IFI.txt", {"own.ini"});
  EXPECT_EQ(ReadListFile(here, "IFI.txt", "DefIFI.txt"), Names{"own.ini"});
  EXPECT_EQ(Joined(machine->Tree(mine)), Joined({"IFI.txt", "Settings.ini"}));
}

TEST_F(OwnFilesTest, ShowPlugInsOfBothFoldersAndTheUsersFirst) {
  machine->MakeFile(mine + "Plugins\\two.cdp",
                    "F\x01No\x01No\x01"
                    "C:\\mine\r\n");
  machine->MakeFile(mine + "Plugins\\three.cdp",
                    "F\x01No\x01No\x01"
                    "C:\\three\r\n");
  Names files;
  for (const auto& plugin : modPlugin::ReadPluginList(here)) files.push_back(plugin.file);
  std::ranges::sort(files);
  EXPECT_EQ(files, (Names{"one.cdp", "three.cdp", "two.cdp"}));
  EXPECT_EQ(modPlugin::PluginPath(here, "one.cdp"), came + "Plugins\\one.cdp");
  EXPECT_EQ(modPlugin::PluginPath(here, "two.cdp"), mine + "Plugins\\two.cdp");
  EXPECT_EQ(modPlugin::PluginPath(here, "four.cdp"), mine + "Plugins\\four.cdp");
  modPlugin::WritePluginList(here, {{true, "one.cdp", "the first"}});
  EXPECT_TRUE(machine->Exists(mine + "plg.txt"));
  ASSERT_EQ(modPlugin::ReadPluginList(here).size(), 1u);
  EXPECT_TRUE(modPlugin::ReadPluginList(here)[0].ticked);
}

TEST_F(OwnFilesTest, AreAllBesideTheProgramWhereItIsAllOneFolder) {
  here.program_folder = here.installed_folder;
  EXPECT_EQ(OwnPath(here, "keep.txt"), came + "keep.txt");
  EXPECT_EQ(FoundPath(here, "keep.txt"), came + "keep.txt");
  TakeOver(here, "Settings.ini");
}

TEST_F(OwnFilesTest, OfBothFoldersAreKeptFromCleaning) {
  machine->MakeFile(mine + "keep.txt", "x");
  ScriptedView silent;
  Engine own_engine(here, silent);
  EXPECT_EQ(own_engine.Load(nullptr), "");
  WriteListFile(here, "UDFO.txt", {came, mine});
  own_engine.RunOneItem(*FindItem("CleanUserFolders"));
  EXPECT_TRUE(machine->Exists(came + "quellix.exe"));
  EXPECT_TRUE(machine->Exists(mine + "keep.txt"));
}

}  // namespace
}  // namespace quellix
