#include "app/run_report.h"
#include "backup/preview_archive.h"
#include "cleaners/skeleton.h"
#include "platform/preview/preview_machine.h"
#include "run/exit_code.h"
#include "run/run_steps.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct CleaningRunTest : RunFixture {
  // A user's traces: three temporary files with 3,000 bytes in nested folders, two recycled files
  // with 7 bytes, a Run history of two entries and its order, one typed URL.
  void SeedUser() {
    ClearTemp();
    ports.shell.EmptyRecycleBin();
    machine->MakeFile(temp + "a.tmp", std::string(1000, 'a'));
    machine->MakeFile(temp + "sub\\deep\\b.dat", std::string(2000, 'b'));
    machine->MakeFile(temp + "sub\\empty", "");
    machine->MakeFolder(temp + "empty folder");
    for (const char* name : {"r1", "r22"}) {
      machine->MakeFile(scratch + name, std::string(name).substr(0, 3) + "x");
      ports.files.Recycle(scratch + name);
    }
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->RemoveRegistryTree(kUser, kTypedUrlsKey);
    for (const char* name : {"a", "b", "MRUList"}) machine->SetText(kUser, kRunMruKey, name, "cmd");
    machine->SetText(kUser, kTypedUrlsKey, "url1", "http://example.org/");
  }
  void ClearTemp() {
    state().RemovalMode = kDelete;
    Clean("CleanTempFiles");
    ASSERT_TRUE(machine->Tree(temp).empty());
    view.statuses.clear();
    view.report.reset();
  }
  RunState& state() { return engine.state(); }
  std::string Log() { return view.report ? view.report->log : "<no report>"; }
};

const std::string kLine(67, '-');

TEST_F(CleaningRunTest, AWholeRunRemovesLogsAndLeavesNothingForASecondOne) {
  SeedUser();
  Tick({"CleanTempFiles", "CleanRecycleBin", "CleanRunMRU", "CleanTypedURL"});
  engine.RunCleaning();
  EXPECT_EQ(Log(),
            "Recycle Bin... Files Deleted: 2 Space Gained: 7 Bytes\r\n"
            "Temporary files... Files Deleted: 3 Space Gained: 2.93 KB\r\n"
            "Windows run history... Files Deleted: 3\r\n"
            "Typed URLs... Files Deleted: 1\r\n"
            "\r\n" +
                kLine + "\r\nFiles Deleted:  5   Space Gained:  2.94 KB");
  EXPECT_EQ(view.report->files, "5");
  EXPECT_EQ(view.report->space_gained, "2.94 KB");
  using enum Outcome;
  EXPECT_EQ(view.report->outcomes, (std::array<Outcome, 6>{kCleaned, kCleaned, kCleaned, kNotChosen,
                                                           kNotChosen, kCleaned}));
  EXPECT_TRUE(machine->Tree(temp).empty() && machine->Exists(temp));
  EXPECT_EQ(ports.shell.QueryRecycleBin().items, 0u);
  EXPECT_TRUE(machine->ValueNames(kUser, kRunMruKey).empty());
  EXPECT_TRUE(machine->KeyExists(kUser, kRunMruKey));
  EXPECT_TRUE(machine->ValueNames(kUser, kTypedUrlsKey).empty());
  EXPECT_EQ(view.items, (Names{"CleanTempFiles", "CleanRecycleBin", "CleanTempFiles", "CleanRunMRU",
                               "CleanTypedURL"}));
  EXPECT_EQ(view.commands, Commands{});
  EXPECT_EQ(view.statuses.back(), "");
  EXPECT_FALSE(view.current_item_shown);
  EXPECT_EQ(view.bars.back(), ProgressBar{});
  EXPECT_EQ(settings.LastCleaned(), view.last_cleaned);

  engine.RunCleaning();
  EXPECT_EQ(Log(),
            "Recycle Bin... Files Deleted: 0 Space Gained: 0 Bytes\r\n"
            "Temporary files... Files Deleted: 0 Space Gained: 0 Bytes\r\n"
            "Windows run history... Files Deleted: 0\r\n"
            "Typed URLs... Files Deleted: 0\r\n"
            "\r\n" +
                kLine + "\r\nFiles Deleted:  0   Space Gained:  0 Bytes");
}

TEST_F(CleaningRunTest, NothingTickedStillShowsASummary) {
  Tick({});
  engine.RunCleaning();
  EXPECT_EQ(Log(), "\r\n" + kLine + "\r\nFiles Deleted:  0   Space Gained:  0 Bytes");
  EXPECT_EQ(view.report->outcomes, (std::array<Outcome, 6>{}));
}

TEST_F(CleaningRunTest, WhatFindsNothingOfItsKindSaysSoAndCountsAsSuch) {
  SeedUser();
  machine->RemoveRegistryTree(kUser, kTypedUrlsKey);
  Tick({"CleanTempFiles", "CleanRunMRU", "CleanPlugins", "CleanTypedURL", "CleanMozillaCache"});
  engine.RunCleaning();
  using enum Outcome;
  EXPECT_EQ(view.report->outcomes,
            (std::array<Outcome, 6>{kCleaned, kCleaned, kNothingFound, kNothingFound, kNothingFound,
                                    kCleaned}));
  EXPECT_TRUE(Holds(Log(),
                    "Plugins: nothing of this kind was found. No plug-in is ticked.\r\n"
                    "Windows run history... Files Deleted: 3\r\n"
                    "Typed URLs... Files Deleted: 0\r\n"
                    "Typed URLs (Internet Explorer): nothing of this kind was found.\r\n"
                    "Cache (Firefox): nothing of this kind was found. "));
  EXPECT_EQ(OutcomeText(kCleaned), "Cleaned");
  for (const Outcome outcome : {kNotChosen, kNothingFound, kNotPossible, kFailed})
    EXPECT_TRUE(OutcomeText(outcome).starts_with("Not Cleaned: "));
}

const struct {
  const char* name;
  const char* strict;
  bool hidden, answer;
  ExitCode exit_code;
  bool is_preview = false;
} kFolderRows[] = {{"strict", "1", false, true, kFailed},
                   {"strict and hidden", "1", true, true, kFailed},
                   {"refused", "0", false, false, kFailed},
                   {"agreed", "0", false, true, kSomeFilesStayed},
                   {"hidden", "0", true, false, kSomeFilesStayed},
                   {"previewed", "0", false, true, kSomeFilesStayed, true},
                   {"previewed, strict", "1", false, true, kFailed, true}};

// A file lies where the backup folder should be.
TEST_F(CleaningRunTest, WithoutAUsableBackupFolderOnlyWhoAgreesCleans) {
  machine->MakeFile(scratch + "no folder", "x");
  for (const auto& row : kFolderRows) {
    SCOPED_TRACE(row.name);
    WriteSettings("");
    SeedUser();
    WriteSettings("[General]\r\nDelMethod=B\r\n[Backup]\r\nPath=" + scratch +
                  "no folder\r\nStrict=" + row.strict + "\r\n");
    PreviewMachine preview(ports);
    PreviewArchive archive(preview.machine().files);
    ScriptedView seen;
    seen.goes_on = row.answer;
    Engine run(row.is_preview ? preview.machine() : ports, seen,
               row.is_preview ? &archive : nullptr);
    run.state().Hidden = row.hidden;
    run.RunOneItem(*FindItem("CleanTempFiles"));
    const bool cleaned = row.exit_code == kSomeFilesStayed;
    EXPECT_EQ(ExitCodeOf(run.state()), row.exit_code);
    EXPECT_EQ(machine->Tree(temp).empty(), cleaned && !row.is_preview);
    EXPECT_EQ(run.state().RunFilesDeleted, cleaned ? 3 : 0);
    EXPECT_EQ(seen.questions.size(), row.strict[0] == '0' && !row.hidden ? 1u : 0u);
    EXPECT_EQ(seen.criticals.size(), row.strict[0] == '1' && !row.hidden ? 1u : 0u);
    const std::string& log = run.state().RunLog;
    EXPECT_EQ(log.find("The backup folder ") == 0, row.hidden || row.strict[0] == '0') << log;
    EXPECT_EQ(log.find("Deleted without a backup: 3 file(s)") != log.npos, cleaned) << log;
    EXPECT_EQ((row.hidden ? seen.kept : seen.report).has_value(), row.hidden || cleaned);
    EXPECT_EQ(seen.commands, Commands{});
  }
}

TEST_F(CleaningRunTest, WhatStaysIsNamedWithTheReason) {
  constexpr const char* kLocked = "Some files were not deleted because they were locked or in use.";
  constexpr const char* kOther = "Some files were not deleted for the reasons that stand behind";
  // last: lines of the list.
  const std::tuple<const char*, int, int, const char*, const char*> kRows[] = {
      {"none", 0, 0, "", ""},
      {"locked", 1, 0, "C:\\locked 0: In use.", ""},
      {"denied", 0, 2, "Cannot delete C:\\denied 0: denied.",
       "Cannot delete C:\\denied 1: denied."},
      {"both, many", 3, 250, "C:\\locked 0: In use.",
       "and 53 more; the log names them when it is saved."}};
  for (const auto& [name, locked, denied, first, last] : kRows) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(BeginRun(context, 1));
    for (int i = 0; i < locked; ++i) {
      const std::string path = "C:\\locked " + std::to_string(i);
      NoteStayed(state(), path, Say("In use."), Error::Kind::kInUse);
      NoteStayed(state(), UpCase(path), Say("Met again."), Error::Kind::kInUse);
    }
    for (int i = 0; i < denied; ++i) {
      const std::string path = "C:\\denied " + std::to_string(i);
      NoteStayed(state(), path, Say("Cannot delete %1: denied.", path), Error::Kind::kDenied);
    }
    AppendSummary(context);
    const RunReport report = MakeReport(state(), ports.system.UserLocale());
    EXPECT_EQ(report.log.find(kLocked) != std::string::npos, locked > 0);
    EXPECT_EQ(report.log.find(kOther) != std::string::npos, denied > 0);
    EXPECT_EQ(ExitCodeOf(state()), locked + denied > 0 ? kSomeFilesStayed : kDone);
    EXPECT_TRUE(Holds(report.log, first));
    EXPECT_TRUE(report.log.ends_with(last)) << report.log;
    const auto lines = [](const std::string& log) {
      const size_t list = log.find("Not deleted:");
      return list == log.npos ? 0
                              : std::count(log.begin() + static_cast<long>(list), log.end(), '\n');
    };
    EXPECT_EQ(lines(report.full_log), locked + denied);
    EXPECT_EQ(lines(report.log), denied > 200 ? 201 : locked + denied);
  }
}

TEST_F(CleaningRunTest, StopEndsTheRunBetweenFilesWithoutASummary) {
  SeedUser();
  Tick({"CleanTempFiles", "CleanRunMRU"});
  StopWhenStatusBegins("Deleting file");
  engine.RunCleaning();
  EXPECT_EQ(Log(), "<no report>");
  EXPECT_EQ(state().RunFilesDeleted, 1);
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 3u);
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
  EXPECT_EQ(view.commands, Commands{});
  EXPECT_EQ(view.bars.back().visible, false);
  // The next run starts afresh.
  view.on_status = nullptr;
  engine.RunCleaning();
  EXPECT_TRUE(Holds(Log(), "Temporary files... Files Deleted: 2 "));
}

TEST_F(CleaningRunTest, StopDuringTheFirstItemsTakesEffectBehindTheFourth) {
  SeedUser();
  Tick({"CleanRecycleBin", "CleanTempFiles"});
  StopWhenStatusBegins("Working...");
  engine.RunCleaning();
  EXPECT_EQ(ports.shell.QueryRecycleBin().items, 0u);
  EXPECT_EQ(machine->Tree(temp).size(), 6u);
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
}

TEST_F(CleaningRunTest, AHiddenRunShowsNothing) {
  SeedUser();
  Tick({"CleanTempFiles"});
  view.report.reset();
  state().Hidden = true;
  engine.RunCleaning();
  EXPECT_FALSE(view.report);
  EXPECT_TRUE(Holds(view.kept->log, "Temporary files... Files Deleted: 3"));
  EXPECT_EQ(BriefReport(context), "Cleaned by itself: 3 files, 2.93 KB.");
  EXPECT_TRUE(machine->Tree(temp).empty());
}

TEST_F(CleaningRunTest, SettingsThatCannotBeSavedAreSaidOnceAndTheRunGoesOn) {
  SeedUser();
  MakeUnreadable(own + "Settings.ini");
  Tick({"CleanTempFiles", "CleanRunMRU"});
  engine.RunCleaning();
  const size_t said = Log().find("The time of this run could not be saved. ");
  EXPECT_NE(said, std::string::npos) << Log();
  EXPECT_EQ(Log().find("could not be saved", said + 30), std::string::npos);
  EXPECT_TRUE(machine->Tree(temp).empty() && view.criticals.empty());
}

}  // namespace
}  // namespace quellix
