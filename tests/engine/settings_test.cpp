#include "settings/list_files.h"
#include "shipped_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

using SettingsTest = RunFixture;

TEST_F(SettingsTest, EachKeyHasItsDefaultAndSurvivesGarbage) {
  struct Row {
    const char* name;
    const char* text;
    bool auto_clean = false;
    std::optional<int16_t> interval = {};
    const char* others = "0001";  // at start-up, Protect1, Protect2, tip box
  };
  const Row rows[] = {
      {"empty", ""},
      {"binary", "\x01\x02[Gen\xFF\xFE\n\n==="},
      {"off", "[General]\nDuration=7\nHM=0"},
      {"hours", "[General]\r\nAutoClean=1\r\nDuration=546\r\nHM=1\r\n", true, 32760},
      {"hours beyond 16 bits", "[General]\nAutoClean=1\nDuration=547\nHM=1\n", true},
      {"one hour by default", "[general]\nautoclean = 1\n", true, 60},
      {"minutes", "[General]\nAutoClean=1\nDuration=7\nHM=0", true, 7},
      {"no unit", "[General]\nAutoClean=1\nHM=x", true},
      {"no number",
       "[General]\nAutoClean=1\nDuration=x\nProtect1=on\nTipBox=yes\n",
       true,
       {},
       "0000"},
      {"all on",
       "[General]\nStartupClean=1\nProtect1=1\nProtect2=1\nTipBox=0\n",
       false,
       {},
       "1110"},
      {"first match counts, comments do not",
       "[Other]\nProtect1=0\n[General]\n;Protect1=0\nProtect1=\"1\"\nProtect1=0\n",
       false,
       {},
       "0101"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    WriteSettings(row.text);
    const Preferences got = settings.Load();
    EXPECT_EQ(got.auto_clean, row.auto_clean);
    EXPECT_EQ(got.IntervalMinutes(), row.interval);
    std::string others;
    for (const bool on : {got.startup_clean, got.protect1, got.protect2, got.tip_box}) {
      others += on ? '1' : '0';
    }
    EXPECT_EQ(others, row.others);
  }
}

TEST_F(SettingsTest, DeletionSettingsAreDecodedAsTheyAlwaysWere) {
  struct Row {
    const char* text;
    int mode, extra, rename;
    uint64_t step;
    std::string folder;
  };
  const std::string home = ports.program_folder + "\\Backup\\";
  const Row rows[] = {
      {"", kDelete, 0, 0, 1, home},
      {"DelMethod=R\nExtraS=2\nRename=2\nWipeStep=65536", kRecycle, 2, 2, 65536, home},
      {"DelMethod=r\nExtraS=x\nRename=1", kBackUp, 0, 1, 1, home},
      {"DelMethod=W\nWipeStep=-4", kWipe, 0, 0, 1, home},
      {"DelMethod=\nWipeStep=1e300\n[Backup]\nPath=D:\\Safe", kBackUp, 0, 0, 16u << 20,
       "D:\\Safe\\"},
      {"[Backup]\nPath=D:\\Safe\\", kDelete, 0, 0, 1, "D:\\Safe\\"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    WriteSettings(std::string("[General]\n") + row.text);
    RunState state;
    settings.LoadDeletionSettings(state);
    EXPECT_EQ(state.RemovalMode, row.mode);
    EXPECT_EQ(state.ExtraSecurity, row.extra);
    EXPECT_EQ(state.RenameBeforeDelete, row.rename);
    EXPECT_EQ(state.WipeStep, row.step);
    EXPECT_EQ(state.BackupFolder, row.folder);
  }
}

TEST_F(SettingsTest, BackupOptionsAreOffUnlessTheyAreOne) {
  for (const auto& [text, strict, keep] :
       {std::tuple("", false, false), std::tuple("Strict=1\nKeepOnAbort=0", true, false),
        std::tuple("Strict=2\nKeepOnAbort=1", false, true)}) {
    SCOPED_TRACE(text);
    WriteSettings(std::string("[Backup]\n") + text);
    RunState state;
    settings.LoadDeletionSettings(state);
    EXPECT_EQ(state.Strict, strict);
    EXPECT_EQ(state.KeepOnAbort, keep);
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

TEST_F(SettingsTest, WritingKeepsEveryOtherByte) {
  WriteSettings("; mine\r\n[Else]\r\nk = v  \r\n[General]\r\n\r\nDelMethod=R\r\n\r\n[Z]\r\nz=1");
  settings.WriteIniValue("general", "ExtraS", "1");
  settings.WriteIniValue("General", "DELMETHOD", "W");
  settings.WriteIniValue("CleanUp", "Name", "\xC3\xBC");
  EXPECT_EQ(
      ReadProgramFile("Settings.ini"),
      "; mine\r\n[Else]\r\nk = v  \r\n[General]\r\n\r\nDELMETHOD=W\r\nExtraS=1\r\n\r\n[Z]\r\nz=1"
      "\r\n[CleanUp]\r\nName=\xC3\xBC\r\n");
}

TEST_F(SettingsTest, FilesOfOlderVersionsAreReadInTheAnsiCodePage) {
  WriteSettings("[Backup]\nPath=C:\\\xC4rger\n");
  EXPECT_EQ(settings.ReadIniValue("Backup", "Path", ""), "C:\\\xC3\x84rger");
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

TEST_F(SettingsTest, ListsKeepEveryLineInOrder) {
  const std::vector<std::string> entries = {"b", "", " a ", "\xE6\x97\xA5\xE6\x9C\xAC", "b"};
  WriteListFile(ports, "UDFI.txt", entries);
  EXPECT_EQ(ReadProgramFile("UDFI.txt"), "b\r\n\r\n a \r\n\xE6\x97\xA5\xE6\x9C\xAC\r\nb\r\n");
  EXPECT_EQ(ReadListFile(ports, "UDFI.txt", "DefUDFI.txt"), entries);
  EXPECT_TRUE(ReadListFile(ports, "IFI.txt", "DefIFI.txt").empty());
  WriteListFile(ports, "DefIFI.txt", {"x"});
  EXPECT_EQ(ReadListFile(ports, "IFI.txt", "DefIFI.txt"), std::vector<std::string>{"x"});
  WriteListFile(ports, "IFI.txt", {});
  EXPECT_TRUE(ReadListFile(ports, "IFI.txt", "DefIFI.txt").empty());
}

TEST_F(SettingsTest, CheckStatesAreOneLineOfThirtyValues) {
  Tick({"CleanRecycleBin", "CleanTempFiles"});
  engine.Save();
  const std::string line = "1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0,0\r\n";
  EXPECT_EQ(ReadProgramFile("chkItems.txt"), line);

  struct Row {
    const char* name;
    std::string file;
    int checked;  // of Recycle Bin and Temporary files, both ticked before
    bool run_history;
  };
  const Row rows[] = {
      {"short", "0", 1, false},
      {"long", "0,0,0,0,1" + std::string(400, ','), 1 + 1, true},
      {"no numbers", "x,,?,-,1 ", 2 + 1, true},
      {"only the first line", "1,1\r\n0,0,0,0,0\r\n", 2 + 1, false},
      {"binary", std::string("\x00\xFF\x01,\x02", 5), 2, false},
      {"megabytes", std::string(3 << 20, '7'), 2, false},
      {"empty", "", 2, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Tick({"CleanRecycleBin", "CleanTempFiles"});
    ports.files.WriteWholeFile(ports.program_folder + "\\chkItems.txt", row.file);
    EXPECT_EQ(engine.Load(), "");
    EXPECT_EQ(engine.selection().CountChecked(), row.checked);
    EXPECT_EQ(engine.selection().IsChecked(*FindItem("CleanRunMRU")), row.run_history);
  }
}

// A file that is there but cannot be read, until it is written again.
void MakeUnreadable(TestMachine& machine, const std::string& path) {
  machine.machine().files.RemoveFile(path);
  machine.MakeFolder(path);
}

TEST_F(SettingsTest, WhileTheSettingsCannotBeReadTheUsersChoiceStays) {
  WriteSettings("[General]\nDelMethod=B\nRename=1\nAutoClean=1\nDuration=7\nHM=0\nProtect1=1\n" +
                ("[Backup]\nPath=" + scratch) + "Safe\nStrict=1");
  EXPECT_EQ(engine.Load(), "");
  EXPECT_TRUE(engine.is_loaded());
  MakeUnreadable(*machine, ports.program_folder + "\\Settings.ini");
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
  EXPECT_NE(engine.Load(), "");
  EXPECT_FALSE(engine.is_loaded());
}

TEST_F(SettingsTest, TicksThatCouldNotBeReadStayInTheirFile) {
  const std::string path = ports.program_folder + "\\chkItems.txt";
  machine->MakeFile(path, "1");
  MakeUnreadable(*machine, path);
  EXPECT_NE(engine.Load(), "");
  EXPECT_FALSE(engine.is_loaded());
  ports.files.RemoveFolder(path);
  machine->MakeFile(path, "0,0,0,0,1\r\n");
  engine.Save();
  EXPECT_EQ(ReadProgramFile("chkItems.txt"), "0,0,0,0,1\r\n");
  Tick({"CleanRecycleBin"});
  engine.Save();
  EXPECT_EQ(ReadProgramFile("chkItems.txt").substr(0, 9), "1,0,0,0,0");
  EXPECT_EQ(engine.Load(), "");
  machine->MakeFile(path, "");
  engine.Save();
  EXPECT_EQ(ReadProgramFile("chkItems.txt").substr(0, 9), "1,0,0,0,0");
}

TEST_F(SettingsTest, AFolderInPlaceOfTheFilesIsSaidAndLosesNothing) {
  machine->MakeFolder(ports.program_folder + "\\Settings.ini");
  machine->MakeFolder(ports.program_folder + "\\chkItems.txt");
  const std::string problems = engine.Load();
  EXPECT_NE(problems.find("settings could not be read"), std::string::npos) << problems;
  EXPECT_NE(problems.find("ticked items could not be read"), std::string::npos) << problems;
  EXPECT_FALSE(engine.is_loaded());
  Tick({"CleanTempFiles"});
  EXPECT_THROW(engine.Save(), Error);
  EXPECT_THROW(settings.WriteIniValue("a", "b", "c"), Error);
}

}  // namespace
}  // namespace quellix
