// What is left of a run for later reading: its record, its list, and the backups that expire.

#include <algorithm>

#include "app/entry_list.h"
#include "app/run_checks.h"
#include "app/run_logs.h"
#include "app/run_report.h"
#include "app/undo_run.h"
#include "backup/backups.h"
#include "platform/filetime.h"
#include "platform/recycle_index.h"
#include "support/recording_session.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct RunRecordsTest : RunFixture {
  void CleanTemp(const std::string& ini) {
    WriteSettings(ini);
    Tick({"CleanTempFiles"});
    engine.RunCleaning();
  }
  // A pair of a recycle bin's files.
  void PutInBin(const std::string& bin, const std::string& name, int64_t deleted,
                const std::string& path, const std::string& bytes) {
    machine->MakeFile(bin + "$I" + name, WriteRecycleIndex(2, {bytes.size(), deleted, path}));
    machine->MakeFile(bin + "$R" + name, bytes);
  }
  void RemoveBins(std::initializer_list<std::string> bins) {
    for (const std::string& bin : bins) {
      for (const std::string& name : machine->Tree(bin)) ports.files.RemoveFile(bin + name);
      ports.files.RemoveFolder(bin);
    }
    ports.files.RemoveFolder("C:\\$Recycle.Bin");
  }
  const std::string logs = own + "Logs\\";
};

TEST_F(RunRecordsTest, ARunIsKeptAndReadAgainAsItWas) {
  machine->MakeFile(temp + "\xC3\xA9t\xC3\xA9, 1.tmp", "");
  machine->MakeFile(temp + "a.tmp", "12345");
  MakeFiles(temp, "locked.tmp mine.doc");
  WriteOwn("keep.txt", "*.doc\r\n");
  {
    const auto lock = machine->LockFile(temp + "locked.tmp");
    CleanTemp("[General]\r\nKeepLogs=3\r\n");
  }
  const RunLogs runs(ports);
  ASSERT_EQ(runs.List().size(), 1u);
  const Locale locale = ports.system.UserLocale();
  const RunReport now = MakeReport(engine.state(), locale),
                  then = MakeReport(runs.Read(runs.List()[0]), locale);
  EXPECT_EQ(then.full_log, now.full_log);
  EXPECT_EQ(then.files, now.files);
  EXPECT_EQ(then.space_gained, now.space_gained);
  EXPECT_EQ(then.outcomes, now.outcomes);
  const EntryList lists[] = {{ports.system, now.totals->Entries, false},
                             {ports.system, then.totals->Entries, false}};
  EXPECT_EQ(lists[0].ToText(), lists[1].ToText());
  EXPECT_EQ(lists[0].Summary(), lists[1].Summary());
  EXPECT_TRUE(Holds(now.full_log, "locked.tmp"));
}

TEST_F(RunRecordsTest, TheLastRunsAreKeptAndNothingElseOfTheFolderGoes) {
  machine->MakeFile(logs + "notes.json", "mine");
  machine->MakeFile(logs + "2020-01-01 10.00.00.json.bak", "mine");
  machine->MakeFile(logs + "2020-01-01 10.00.00.json", "an old run");
  for (int run = 0; run < 4; ++run) CleanTemp("[General]\r\nKeepLogs=3\r\n");
  Names names = RunLogs(ports).List();
  EXPECT_EQ(names.size(), 3u);
  EXPECT_EQ(std::ranges::count(names, "2020-01-01 10.00.00.json"), 0);
  EXPECT_EQ(machine->Tree(logs).size(), 5u);
  machine->MakeFile(logs + "2099-01-01 10.00.00.json", "{\"summary\":3}");
  EXPECT_THROW(RunLogs(ports).Read("2099-01-01 10.00.00.json"), Error);
  machine->MakeFile(logs + "notes.json", Read(logs + names[0]));
  for (const char* name : {"..\\Settings.ini", "notes.json"})
    EXPECT_THROW(RunLogs(ports).Read(name), Error) << name;
  // A privacy program keeps none where none are wanted.
  CleanTemp("[General]\r\nKeepLogs=0\r\n");
  EXPECT_EQ(machine->Tree(logs), (Names{"2020-01-01 10.00.00.json.bak", "notes.json"}));
}

TEST_F(RunRecordsTest, ARunThatCannotBeKeptSaysSoAndOneThatWasStoppedIsKept) {
  WriteOwn("Logs", "no folder");
  CleanTemp("[General]\r\nKeepLogs=3\r\n");
  ASSERT_TRUE(view.report);
  EXPECT_TRUE(Holds(view.report->log, "could not be kept for later reading"));
  ports.files.RemoveFile(own + "Logs");
  for (const char* name : {"a.tmp", "b.tmp"}) machine->MakeFile(temp + name, "1");
  StopWhenStatusBegins("Deleting file: ");
  CleanTemp("[General]\r\nKeepLogs=3\r\n");
  ASSERT_EQ(RunLogs(ports).List().size(), 1u);
  const RunTotals stopped = RunLogs(ports).Read(RunLogs(ports).List()[0]);
  EXPECT_TRUE(stopped.AbortRequested);
  EXPECT_TRUE(Holds(stopped.RunLog, "Aborted by user"));
}

TEST_F(RunRecordsTest, ARunThatBackedUpIsUndoneAlsoFromItsRecord) {
  const std::string file = scratch + "mine\\sub\\a.txt";
  for (const bool from_record : {false, true}) {
    machine->MakeFile(file, "12345");
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->SetText(kUser, kRunMruKey, "a", "cmd");
    WriteSettings("[General]\r\nDelMethod=B\r\nKeepLogs=9\r\n");
    WriteOwn("UDFO.txt", scratch + "mine\r\n");
    Tick({"CleanUserFolders", "CleanRunMRU"});
    engine.RunCleaning();
    EXPECT_TRUE(!machine->Exists(file) && machine->ValueNames(kUser, kRunMruKey).empty());
    const RunLogs runs(ports);
    const RunTotals record = runs.Read(runs.List()[0]);
    const RunEntries& run = from_record ? *record.Entries : *engine.state().Entries;
    ASSERT_TRUE(CanUndo(run));
    NoPrompts prompts;
    const RestoreResult result = UndoRun(ports, run, prompts, {});
    EXPECT_EQ(result.problems, Names());
    EXPECT_GE(result.restored, 2u);
    EXPECT_EQ(Read(file), "12345");
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey), Names{"a"});
    // Nobody has answered what is to become of what is there by now: it stays.
    machine->MakeFile(file, "newer");
    UndoRun(ports, run, prompts, {});
    EXPECT_EQ(Read(file), "newer");
  }
  CleanTemp("[General]\r\nDelMethod=D\r\n");
  EXPECT_FALSE(CanUndo(*engine.state().Entries));
}

// The bin holds older files of the same place, one that was recycled by hand with another size,
// and records that tell nothing; another user's bin a later one of the same place and size. Where
// one folder was there is a link by now.
TEST_F(RunRecordsTest, WhatARunRecycledComesBackAndNothingIsReplaced) {
  const Names bins = ports.shell.RecycleBins();
  const auto of_c = std::ranges::find(bins, 'C', [](const std::string& bin) { return bin[0]; });
  ASSERT_NE(of_c, bins.end());
  const std::string bin = *of_c + "\\", foreign = "C:\\$Recycle.Bin\\S-1-5-21-7-8-9-1009\\";
  const std::string gone = scratch + "gone\\sub\\a.txt", there = scratch + "b.txt";
  PutInBin(bin, "AAAAAA.txt", 10, gone, "old..");
  PutInBin(bin, "BBBBBB.txt", 20, UpCase(gone), "right");
  PutInBin(bin, "CCCCCC.txt", 30, gone, "by hand");
  PutInBin(bin, "HHHHHH.txt", 15, gone, "older");
  PutInBin(bin, "DDDDDD.txt", 20, there, "12345");
  const std::string beyond = scratch + "link\\sub\\a.txt";
  PutInBin(bin, "GGGGGG.txt", 20, beyond, "12345");
  machine->MakeFile(scratch + "else\\b.txt", "");
  machine->MakeFolderLink(scratch + "link", scratch + "else");
  PutInBin(foreign, "FFFFFF.txt", 40, gone, "wrong");
  machine->MakeFile(bin + "$IEEEEEE.txt", "rubbish");
  machine->MakeFile(there, "newer");
  RunEntries run;
  for (const std::string& place : {gone, there, scratch + "lost.txt", beyond})
    run.Add({.way = Way::kRecycled, .bytes = 5, .place = place});
  run.Add({.fate = Fate::kStayed, .way = Way::kRecycled, .place = scratch + "stayed.txt"});
  ASSERT_TRUE(CanUndo(run));
  NoPrompts prompts;
  const RestoreResult result = UndoRun(ports, run, prompts, {});
  EXPECT_EQ(result.restored, 1u);
  EXPECT_EQ(result.skipped, 1u);
  ASSERT_EQ(result.problems.size(), 3u);
  EXPECT_EQ(machine->Tree(scratch + "else"), Names{"b.txt"});
  EXPECT_TRUE(Holds(result.problems[0], "b.txt"));
  EXPECT_EQ(result.problems[1], "It is not in the recycle bin: " + scratch + "lost.txt");
  EXPECT_EQ(ports.files.ReadWholeFile(gone), "right");
  EXPECT_EQ(ports.files.ReadWholeFile(there), "newer");
  EXPECT_EQ(machine->Tree(bin),
            (Names{"$IAAAAAA.txt", "$ICCCCCC.txt", "$IDDDDDD.txt", "$IEEEEEE.txt", "$IGGGGGG.txt",
                   "$IHHHHHH.txt", "$RAAAAAA.txt", "$RCCCCCC.txt", "$RDDDDDD.txt", "$RGGGGGG.txt",
                   "$RHHHHHH.txt"}));
  RemoveBins({bin, foreign});
}

TEST_F(RunRecordsTest, ARunThatRecycledIsUndone) {
  machine->MakeFile(temp + "a.tmp", "12345");
  CleanTemp("[General]\r\nDelMethod=R\r\n");
  EXPECT_FALSE(machine->Exists(temp + "a.tmp"));
  // The bin of a system that stands in for Windows is of another kind.
  if (!machine->Exists("C:\\$Recycle.Bin")) return;
  NoPrompts prompts;
  EXPECT_EQ(UndoRun(ports, *engine.state().Entries, prompts, {}).restored, 1u);
  EXPECT_EQ(ports.files.ReadWholeFile(temp + "a.tmp"), "12345");
}

TEST_F(RunRecordsTest, BackupsExpireByTheirAgeAndOnlyThoseOfOurNames) {
  const std::string folder = own + "Backup\\";
  const int64_t now = ports.system.UtcNow();
  const std::tuple<const char*, int, bool> kRows[] = {
      {"C_141120269057.zip", 40, false}, {"R_141120269057.reg", 40, false},
      {"D_151120269057.zip", 29, true},  {"C_151120269057.zip", 31, false},
      {"my holiday.zip", 400, true},     {"C_141120269057.zip.bak", 400, true},
      {"R_mine.reg", 400, true}};
  for (const auto& [name, days, stays] : kRows) {
    machine->MakeFile(folder + name, "x");
    machine->SetLastWrite(folder + name, now - days * kFiletimesADay);
  }
  CleanTemp("[General]\r\nDelMethod=D\r\n");
  EXPECT_EQ(machine->Tree(folder).size(), std::size(kRows)) << "they are kept for ever";
  for (const bool again : {false, true}) {
    CleanTemp("[Backup]\r\nKeepDays=30\r\n");
    for (const auto& [name, days, stays] : kRows)
      EXPECT_EQ(machine->Exists(folder + name), stays) << name;
    EXPECT_EQ(
        engine.state().RunLog.find("Backups older than 30 day(s) removed: 3") == std::string::npos,
        again);
  }
}

TEST_F(RunRecordsTest, WhatIsKeptOrWasUntickedDoesNotExpire) {
  const std::string folder = own + "Backup\\", old = "C_141120269057.zip",
                    other = "D_141120269057.zip";
  for (const std::string& name : {old, other}) {
    machine->MakeFile(folder + name, "x");
    machine->SetLastWrite(folder + name, ports.system.UtcNow() - 40 * kFiletimesADay);
  }
  const std::string keep = own + "keep.txt";
  for (const std::string& line : {folder + old, std::string("C_*.zip"), folder}) {
    ports.files.WriteWholeFile(keep, line + "\r\n" + other + "\r\nD_*.zip\r\n");
    CleanTemp("[Backup]\r\nKeepDays=30\r\n");
    EXPECT_TRUE(machine->Exists(folder + old)) << line;
  }
  ports.files.RemoveFile(keep);
  PreviewRun preview(ports, view);
  preview.Run(engine.selection());
  EntryList list(ports.system, preview.entries(), true);
  for (size_t row = 0; row < list.RowCount(); ++row) {
    if (list.Text(row, RunColumn::kPlace) == folder + old) list.SetTicked(row, false);
  }
  engine.RunCleaning(list.Choice());
  EXPECT_TRUE(machine->Exists(folder + old) && !machine->Exists(folder + other));
  EXPECT_FALSE(Holds(engine.state().RunLog, "preview"));
}

TEST_F(RunRecordsTest, WithoutReadableSettingsNoRecordGoesAndAStopTakesBackItsClaims) {
  machine->MakeFile(logs + "2020-01-01 10.00.00.json", "an old run");
  WriteSettings("[General]\r\nKeepLogs=3\r\n");
  Tick({"CleanTempFiles"});
  machine->MakeFile(temp + "a.tmp", "1");
  view.on_status = [this](const std::string& status) {
    if (!status.starts_with("Deleting file: ")) return;
    const std::string ini = own + "Settings.ini";
    ports.files.RemoveFile(ini);
    machine->MakeFolder(ini);
  };
  engine.RunCleaning();
  view.on_status = nullptr;
  EXPECT_TRUE(machine->Exists(logs + "2020-01-01 10.00.00.json"));
  ports.files.RemoveFolder(own + "Settings.ini");

  for (const bool keeps : {false, true}) {
    machine->MakeFile(scratch + "mine\\a.txt", "1");
    WriteOwn("UDFI.txt", scratch + "mine\\a.txt\r\n");
    machine->MakeFile(temp + "b.tmp", "1");
    WriteSettings("[General]\r\nDelMethod=B\r\n[Backup]\r\nKeepOnAbort=" + std::to_string(keeps) +
                  "\r\n");
    Tick({"CleanUserFiles", "CleanTempFiles"});
    StopWhenStatusBegins("Deleting file: " + temp);
    engine.RunCleaning();
    view.on_status = nullptr;
    ASSERT_TRUE(engine.state().AbortRequested);
    EXPECT_FALSE(machine->Exists(scratch + "mine\\a.txt"));
    EXPECT_EQ(CanUndo(*engine.state().Entries), keeps);
    EXPECT_EQ(engine.state().FilesNotBackedUp, keeps ? 0 : 1);
  }
}

TEST_F(RunRecordsTest, WhoUsesAFileAndWhatTheDrivesSayIsTold) {
  RecordingSession session;
  session.used_path = temp + "locked.tmp";
  const Machine machine_of_user = WithSession(ports, session);
  Engine other(machine_of_user, view);
  other.selection().SetChecked(*FindItem("CleanTempFiles"), true);
  machine->MakeFile(temp + "locked.tmp", "1");
  machine->MakeFile(temp + "large.tmp", std::string(24 << 20, 'x'));
  const auto lock = machine->LockFile(temp + "locked.tmp");
  PreviewRun preview(machine_of_user, view);
  preview.Run(other.selection());
  EXPECT_NE(StayedNames(preview.state(), 9).find("In use by: Writer, Viewer."), std::string::npos);
  other.RunCleaning();
  EXPECT_NE(StayedNames(other.state(), 9).find("In use by: Writer, Viewer."), std::string::npos);
  EXPECT_NE(other.state().RunLog.find("\r\nFree on C:  "), std::string::npos);

  for (const bool is_preview : {true, false}) {
    context.state.RunFilesDeleted = 1;
    context.state.RunLog.clear();
    context.state.IsPreview = is_preview;
    FreeSpaceCheck check(context);
    machine->MakeFile(temp + (is_preview ? "1.tmp" : "2.tmp"), std::string(24 << 20, 'x'));
    check.Tell();
    EXPECT_EQ(context.state.RunLog.empty(), is_preview) << context.state.RunLog;
    ports.files.RemoveFile(temp + (is_preview ? "1.tmp" : "2.tmp"));
  }
  // Others write on the same disk, so one of many tries has to do.
  context.state.IsPreview = false;
  const auto is_quiet = [&] {
    FreeSpaceCheck same(context);
    context.state.RunLog.clear();
    same.Tell();
    return context.state.RunLog.empty();
  };
  bool was_quiet = false;
  for (int tries = 0; tries < 100 && !was_quiet; ++tries) was_quiet = is_quiet();
  EXPECT_TRUE(was_quiet) << context.state.RunLog;
}

}  // namespace
}  // namespace quellix
