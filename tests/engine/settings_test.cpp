#include "settings/list_files.h"
#include "shipped_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

using SettingsTest = RunFixture;

// The interval in minutes, where there is one; at start-up, Protect1, Protect2 and tip box.
TEST_F(SettingsTest, EachKeyHasItsDefaultAndSurvivesGarbage) {
  const std::optional<int16_t> none;
  const std::tuple<const char*, bool, std::optional<int16_t>, const char*> kRows[] = {
      {"", false, none, "0001"},
      {"\x01\x02[Gen\xFF\xFE\n\n===", false, none, "0001"},
      {"[General]\nDuration=7\nHM=0", false, none, "0001"},
      {"[General]\r\nAutoClean=1\r\nDuration=546\r\nHM=1\r\n", true, 32760, "0001"},
      {"[General]\nAutoClean=1\nDuration=547\nHM=1\n", true, none, "0001"},
      {"[general]\nautoclean = 1\n", true, 60, "0001"},
      {"[General]\nAutoClean=1\nDuration=7\nHM=0", true, 7, "0001"},
      {"[General]\nAutoClean=1\nDuration=40000\nHM=0", true, none, "0001"},
      {"[General]\nAutoClean=1\nHM=x", true, none, "0001"},
      {"[General]\nAutoClean=yes\nDuration=5\nHM=0", false, none, "0001"},
      {"[General]\nAutoClean=1\nDuration=x\nProtect1=on\nTipBox=yes\n", true, none, "0000"},
      {"[General]\nStartupClean=1\nProtect1=1\nProtect2=1\nTipBox=0\n", false, none, "1110"},
      {"[Other]\nProtect1=0\n[General]\n;Protect1=0\nProtect1=\"1\"\nProtect1=0\n", false, none,
       "0101"}};
  for (const auto& [text, auto_clean, interval, others] : kRows) {
    SCOPED_TRACE(text);
    WriteSettings(text);
    const Preferences got = settings.Load();
    EXPECT_EQ(got.auto_clean, auto_clean);
    EXPECT_EQ(got.IntervalMinutes(), interval);
    const bool shown[] = {got.startup_clean, got.protect1, got.protect2, got.tip_box};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(shown[i], others[i] == '1') << i;
    engine.ApplyGeneralSettings();
    EXPECT_EQ(engine.auto_clean().IsOn(), interval.has_value());
  }
}

TEST_F(SettingsTest, DeletionSettingsAreDecodedAsTheyAlwaysWere) {
  const std::string home = own + "Backup\\", safe = "D:\\Safe\\";
  const std::tuple<const char*, int, int, int, uint64_t, std::string, bool, bool> kRows[] = {
      {"", kDelete, 0, 0, 1, home, false, false},
      {"DelMethod=R\nExtraS=2\nRename=2\nWipeStep=65536", kRecycle, 2, 2, 65536, home, false,
       false},
      {"DelMethod=r\nExtraS=x\nRename=1", kBackUp, 0, 1, 1, home, false, false},
      {"DelMethod=W\nWipeStep=-4", kWipe, 0, 0, 1, home, false, false},
      {"DelMethod=\nWipeStep=1e300\n[Backup]\nPath=D:\\Safe", kBackUp, 0, 0, 16u << 20, safe, false,
       false},
      {"[Backup]\nPath=D:\\Safe\\\nStrict=1\nKeepOnAbort=0", kDelete, 0, 0, 1, safe, true, false},
      {"[Backup]\nStrict=2\nKeepOnAbort=1", kDelete, 0, 0, 1, home, false, true}};
  for (const auto& [text, mode, extra, rename, step, folder, strict, keep] : kRows) {
    SCOPED_TRACE(text);
    WriteSettings(std::string("[General]\n") + text);
    RunState state;
    settings.LoadDeletionSettings(state);
    EXPECT_EQ(state.RemovalMode, mode);
    EXPECT_EQ(state.ExtraSecurity, extra);
    EXPECT_EQ(state.RenameBeforeDelete, rename);
    EXPECT_EQ(state.WipeStep, step);
    EXPECT_EQ(state.BackupFolder, folder);
    EXPECT_TRUE(state.Strict == strict && state.KeepOnAbort == keep);
  }
}

TEST_F(SettingsTest, WhatShipsHasTodaysChoices) {
  WriteSettings(kShippedSettings);
  RunState state;
  settings.LoadDeletionSettings(state);
  EXPECT_TRUE(state.Strict && state.KeepOnAbort);
  EXPECT_EQ(state.WipeStep, 65536u);
  EXPECT_EQ(state.RemovalMode, kDelete);
  EXPECT_EQ(settings.ReadIniValue("General", "AllValues", "0"), "1");
}

TEST_F(SettingsTest, ReadingCutsAtTheBufferAndAtNul) {
  WriteSettings("[S]\nlong=" + std::string(400, 'x') + "\nnul=ab" + std::string(1, '\0') + "cd\n");
  EXPECT_EQ(settings.ReadIniValue("S", "long", ""), std::string(254, 'x'));
  EXPECT_EQ(settings.ReadIniValue("S", "long", "", 512), std::string(400, 'x'));
  EXPECT_EQ(settings.ReadIniValue("S", "nul", ""), "ab");
  EXPECT_EQ(settings.ReadIniValue("S", "none", "fallback"), "fallback");
}

TEST_F(SettingsTest, LastCleanedIsShownOnlyWhenItIsADate) {
  EXPECT_TRUE(settings.LastCleaned());  // absent: the present
  EXPECT_EQ(settings.LastCleanedText(), "Never");
  const std::string stored = settings.StoreLastCleaned();
  EXPECT_EQ(settings.LastCleaned(), stored);
  EXPECT_EQ(settings.LastCleanedText(), stored);
  settings.WriteIniValue("CleanUp", "LastCleaned", "some day");
  EXPECT_FALSE(settings.LastCleaned());
  EXPECT_EQ(settings.LastCleanedText(), "");
}

TEST_F(SettingsTest, CheckStatesAreOneLineOfThirtyValues) {
  Tick({"CleanRecycleBin", "CleanTempFiles"});
  engine.Save();
  const std::string line = "1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0,0\r\n";
  EXPECT_EQ(ReadOwn("chkItems.txt"), line);

  // checked: of Recycle Bin and Temporary files, both ticked before.
  const std::tuple<const char*, std::string, int, bool> rows[] = {
      {"short", "0", 1, false},
      {"long", "0,0,0,0,1" + std::string(400, ','), 1 + 1, true},
      {"no numbers", "x,,?,-,1 ", 2 + 1, true},
      {"only the first line", "1,1\r\n0,0,0,0,0\r\n", 2 + 1, false},
      {"binary", std::string("\x00\xFF\x01,\x02", 5), 2, false},
      {"megabytes", std::string(3 << 20, '7'), 2, false},
      {"empty", "", 2, false}};
  for (const auto& [name, file, checked, run_history] : rows) {
    SCOPED_TRACE(name);
    Tick({"CleanRecycleBin", "CleanTempFiles"});
    WriteOwn("chkItems.txt", file);
    EXPECT_EQ(engine.Load(), "");
    EXPECT_EQ(engine.selection().CountChecked(), checked);
    EXPECT_EQ(engine.selection().IsChecked(*FindItem("CleanRunMRU")), run_history);
  }
}

TEST_F(SettingsTest, WhileTheSettingsCannotBeReadTheUsersChoiceStays) {
  WriteSettings("[General]\nDelMethod=B\nRename=1\nAutoClean=1\nDuration=7\nHM=0\nProtect1=1\n" +
                ("[Backup]\nPath=" + scratch) + "Safe\nStrict=1");
  EXPECT_EQ(engine.Load(), "");
  EXPECT_TRUE(engine.is_loaded());
  MakeUnreadable(own + "Settings.ini");
  engine.ApplyGeneralSettings();
  EXPECT_EQ(engine.preferences().IntervalMinutes(), 7);
  EXPECT_TRUE(engine.auto_clean().IsOn());
  EXPECT_TRUE(engine.selection().IsEnabled(*FindItem("CleanEmptyFiles")));
  machine->MakeFile(temp + "junk.tmp", "12345");
  Tick({"CleanTempFiles"});
  engine.RunCleaning();
  EXPECT_FALSE(machine->Exists(temp + "junk.tmp"));
  EXPECT_EQ(engine.state().FilesBackedUp, 1);
  EXPECT_EQ(machine->Tree(scratch + "Safe").size(), 1u);
  EXPECT_TRUE(Holds(engine.Load(), "settings could not be read"));
  EXPECT_FALSE(engine.is_loaded());
  EXPECT_THROW(settings.WriteIniValue("a", "b", "c"), Error);
}

TEST_F(SettingsTest, TicksThatCouldNotBeReadStayInTheirFile) {
  const std::string path = own + "chkItems.txt";
  machine->MakeFile(path, "1");
  MakeUnreadable(path);
  EXPECT_TRUE(Holds(engine.Load(), "ticked items could not be read"));
  EXPECT_FALSE(engine.is_loaded());
  ports.files.RemoveFolder(path);
  machine->MakeFile(path, "0,0,0,0,1\r\n");
  engine.Save();
  EXPECT_EQ(ReadOwn("chkItems.txt"), "0,0,0,0,1\r\n");
  Tick({"CleanRecycleBin"});
  engine.Save();
  EXPECT_EQ(ReadOwn("chkItems.txt").substr(0, 9), "1,0,0,0,0");
  EXPECT_EQ(engine.Load(), "");
  machine->MakeFile(path, "");
  engine.Save();
  EXPECT_EQ(ReadOwn("chkItems.txt").substr(0, 9), "1,0,0,0,0");
  MakeUnreadable(path);
  Tick({"CleanTempFiles"});
  EXPECT_THROW(engine.Save(), Error);
}

}  // namespace
}  // namespace quellix
