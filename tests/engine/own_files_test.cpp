// A program that lies where its user may not write: what came with it are his defaults.
#include "settings/own_files.h"

#include <utility>

#include "app/run_logs.h"
#include "app/undo_run.h"
#include "backup/backups.h"
#include "platform/words.h"
#include "plugins/plugin_list.h"
#include "settings/list_files.h"
#include "support/forwarding_files.h"
#include "support/plugin_fixture.h"

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
    MakePlugin(came, "one", "one");
    MakePlugin(came, "two", "two");
    before = machine->Tree(came);
  }
  void MakePlugin(const std::string& folder, const std::string& name, const std::string& cleans) {
    machine->MakeFile(folder + "Plugins\\" + name + ".cdp",
                      PluginFixture::Text("F|No|No|C:\\" + cleans + "\r\n"));
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
  EXPECT_EQ(Joined(machine->Tree(mine)), Joined({"IFI.txt", "Programs.txt", "Settings.ini"}));
}

// For the uninstaller, which takes away what no other program keeps there.
TEST_F(OwnFilesTest, NameEachProgramThatKeepsThemOnce) {
  const std::string other = scratch + "\xC3\xA9t\xC3\xA9 (x)";
  for (const std::string& installed : {came, other, came}) {
    Machine at = here;
    at.installed_folder = WithoutBackslash(installed);
    WriteListFile(at, "UDFI.txt", {});
    at.installed_folder = UpCase(at.installed_folder);
    MakeProgramFolder(at);
  }
  EXPECT_EQ(Read(mine + "Programs.txt"),
            "\xFF\xFE" + ToUtf16Bytes(scratch + "Installed\r\n" + other + "\r\n"));
  for (const char* others : {"", "x", "\xFF\xFE?"}) {
    machine->MakeFile(mine + "Programs.txt", others);
    MakeProgramFolder(here);
    EXPECT_EQ(Read(mine + "Programs.txt"), "\xFF\xFE" + ToUtf16Bytes(scratch + "Installed\r\n"));
  }
}

TEST_F(OwnFilesTest, ShowPlugInsOfBothFoldersAndTheUsersFirst) {
  MakePlugin(mine, "two", "mine");
  MakePlugin(mine, "three", "three");
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
  const std::string archives = scratch + "Archives\\";
  machine->MakeFile(mine + "keep.txt", "x");
  machine->MakeFile(came + "Settings.ini", "[Backup]\r\nPath=" + archives + "\r\n");
  machine->MakeFile(archives + "other.zip", "x");
  machine->MakeFile(mine + "Settings.ini", "[Backup]\r\nPath=" + scratch + "Mine\r\n");
  ScriptedView silent;
  Engine own_engine(here, silent);
  EXPECT_EQ(own_engine.Load(nullptr), "");
  WriteListFile(here, "UDFO.txt", {came, mine, archives});
  own_engine.RunOneItem(*FindItem("CleanUserFolders"));
  EXPECT_TRUE(machine->Exists(archives + "other.zip")) << "as another copy keeps it";
  EXPECT_TRUE(machine->Exists(came + "quellix.exe"));
  EXPECT_TRUE(machine->Exists(mine + "keep.txt"));
}

// The first item writes when it was cleaned, and the second looks where that is.
TEST_F(OwnFilesTest, AreKeptFromTheRunThatMakesTheirFolder) {
  machine->MakeFile(came + "Settings.ini", "[General]\r\nDelMethod=D\r\n");
  machine->MakeFile(came + "plg.txt", PluginFixture::Text("1|one.cdp|all\r\n"));
  machine->MakeFile(came + "Plugins\\one.cdp", "F\x01Yes\x01No\x01" + scratch + "Roaming\\*.*\r\n");
  machine->MakeFile(scratch + "Roaming\\old.txt", "x");
  before = machine->Tree(came);
  ScriptedView silent;
  Engine own_engine(here, silent);
  EXPECT_EQ(own_engine.Load(nullptr), "");
  for (const char* key : {"CleanUserFolders", "CleanPlugins"})
    own_engine.selection().SetChecked(*FindItem(key), true);
  for (int run = 0; run < 2; ++run) {
    own_engine.RunCleaning();
    EXPECT_FALSE(machine->Exists(scratch + "Roaming\\old.txt")) << own_engine.state().RunLog;
    for (const RunEntry& entry : own_engine.state().Entries->all)
      EXPECT_FALSE(entry.place.starts_with(mine)) << entry.place;
  }
}

// What a copy with other rights, which keeps all of it beside the program, has left there.
struct OtherCopyTest : OwnFilesTest {
  OtherCopyTest() {
    machine->MakeFile(came + "Settings.ini",
                      "[General]\r\nDelMethod=B\r\nKeepLogs=3\r\n[Mine]\r\nKey=1\r\n");
    machine->MakeFile(came + "UDFO.txt", scratch + "gone\r\n");
    machine->MakeFile(file, "12345");
    ScriptedView silent;
    Engine other(BesideProgram(here), silent);
    EXPECT_EQ(other.Load(nullptr), "");
    other.RunOneItem(*FindItem("CleanUserFolders"));
    EXPECT_FALSE(machine->Exists(file)) << other.state().RunLog;
    before = machine->Tree(came);
  }
  const std::string file = scratch + "gone\\a.txt";
};

TEST_F(OtherCopyTest, LeavesRunsAndBackupsThatAreListedReadAndUndone) {
  const RunLogs runs(here);
  ASSERT_EQ(runs.List().size(), 1u);
  const RunTotals run = runs.Read(runs.List()[0]);
  EXPECT_EQ(run.RunFilesDeleted, 1);
  machine->MakeFile(mine + "Backup\\C_141120269057.zip", "none");
  Backups backups(here);
  ASSERT_EQ(backups.List().size(), 2u);
  const std::string name = backups.List()[0].name;
  EXPECT_TRUE(name.starts_with(came + "Backup\\")) << name;
  EXPECT_EQ(backups.List()[1].name, "C_141120269057.zip");
  EXPECT_EQ(backups.Check(name).name, name);
  for (const std::string& none : {came + "C_1.zip", came + "Backup\\", mine + "Backup\\C_1.zip"})
    EXPECT_THROW(backups.Check(none), Error) << none;
  NoPrompts prompts;
  EXPECT_EQ(backups.Restore(name, {.entry_paths = {}, .to = scratch + "to", .mode = {}}, prompts)
                .restored,
            1u);
  EXPECT_EQ(UndoRun(here, *run.Entries, prompts, {}).problems, Names());
  EXPECT_EQ(Read(file), "12345");
}

TEST_F(OtherCopyTest, LeavesWhatMayOnlyBeRead) {
  struct ReadOnly : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    void RemoveFile(std::string_view) override {
      throw Error(Error::Kind::kDenied, "You may only read here.");
    }
    std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
      if (mode != OpenMode::kRead) throw Error(Error::Kind::kDenied, "You may only read here.");
      return ForwardingFolder::Open(name, mode);
    }
  };
  ForwardingFiles files(here.files, [this](const std::string& path, auto folder) {
    std::unique_ptr<Folder> other = std::move(folder);
    if (!path.starts_with(came)) return other;
    return std::unique_ptr<Folder>(std::make_unique<ReadOnly>(std::move(other)));
  });
  machine->MakeFile(came + TemporaryName(), "left");
  before = machine->Tree(came);
  Machine plain = WithFiles(here, files);
  plain.installed_folder = here.installed_folder;
  RunLogs runs(plain);
  EXPECT_EQ(runs.Keep({}, 3), "");
  EXPECT_EQ(runs.List().size(), 2u);
  EXPECT_EQ(runs.Keep({}, 1), "");
  EXPECT_EQ(runs.List().size(), 2u) << "those of the other do not count";
  EXPECT_EQ(runs.Keep({}, 0), "");
  EXPECT_EQ(runs.List().size(), 1u) << "its own goes";
  EXPECT_THROW(Backups(plain).Delete(Backups(plain).List().at(0).name), Error);
  ScriptedView silent;
  Engine(plain, silent).ClearLeftovers();
}

TEST_F(OtherCopyTest, LeavesWhatAKilledRunLeftForWhoMayRemoveIt) {
  const std::string filler = scratch + TemporaryName();
  machine->MakeFile(filler + "\\" + TemporaryName(), "random");
  machine->MakeFile(came + TemporaryName(), "Quellix restores into\n" + filler + "\n");
  machine->MakeFile(came + "Backup\\" + TemporaryName(), "half an archive");
  ScriptedView silent;
  Engine own_engine(here, silent);
  own_engine.ClearLeftovers();
  EXPECT_FALSE(machine->Exists(filler));
  own_engine.ClearLeftovers();
}

}  // namespace
}  // namespace quellix
