#include "cleaners/mod_mozilla.h"
#include "run/stayed.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kShellFoldersKey =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

struct CleanerFaultsTest : RunFixture {
  std::string Profiles() const {
    return ports.system.Environment("USERPROFILE").value() +
           "\\Application Data\\Mozilla\\Firefox\\Profiles\\";
  }
  bool KnowsFirefox() const {
    return !modMozilla::GetWindowsVersionName(ports.system.Version()).empty();
  }
};

TEST_F(CleanerFaultsTest, AFailingItemShowsItsMessageWritesNoLineAndTheNextOneRuns) {
  struct Row {
    const char* key;
    const char* in_the_way;  // a folder where the item's list should be
    const char* message;
    const char* caption;
  };
  const Row rows[] = {
      {"CleanUserFolders", "UDFO.txt", "There was an error in cleaning the User defined folders",
       "User-defined folders"},
      {"CleanUserFiles", "UDFI.txt", "There was an error in cleaning User Defined Files",
       "User-defined files"},
      {"CleanCookies", "ck.txt", "There was an error in cleaning Cookies. ", "Cookies"}};
  for (const Row& row : rows) machine->MakeFolder(own + row.in_the_way);
  Tick({"CleanUserFolders", "CleanUserFiles", "CleanCookies", "CleanTempFiles", "CleanTypedURL"});
  engine.RunCleaning();
  ASSERT_EQ(view.criticals.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(rows[i].key);
    EXPECT_TRUE(view.criticals[i].starts_with(rows[i].message)) << view.criticals[i];
    EXPECT_TRUE(Holds(view.criticals[i], rows[i].in_the_way));
    EXPECT_FALSE(Holds(view.report->log, rows[i].caption));
  }
  EXPECT_TRUE(Holds(view.report->log, "Temporary files... "));
  EXPECT_TRUE(Holds(view.report->log, "Typed URLs... "));
  EXPECT_EQ(view.commands, Commands{});
  EXPECT_FALSE(view.current_item_shown);
  EXPECT_TRUE(engine.state().SomeErrors);
  EXPECT_EQ(view.report->outcomes[2], Outcome::kFailed);
}

TEST_F(CleanerFaultsTest, AListGoesToItsEndWhenTheSettingsSaySo) {
  const struct {
    const char* settings;
    int left;
  } kRows[] = {
      {"", 301}, {"[General]\r\nAllValues=0\r\n", 301}, {"[General]\r\nAllValues=1\r\n", 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.settings);
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->SetRegistryValue(kUser, kRunMruKey, " long ", {kRegBinary, std::string(256, 'x')});
    for (int i = 0; i < 300; ++i) {
      machine->SetText(kUser, kRunMruKey, "v" + std::to_string(i), "cmd");
    }
    WriteSettings(row.settings);
    Clean("CleanRunMRU");
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), row.left);
    EXPECT_TRUE(view.report->log.starts_with(
        "Windows run history... Files Deleted: " + std::to_string(301 - row.left) + "\r\n"))
        << view.report->log;
  }
}

TEST_F(CleanerFaultsTest, AFirefoxProfileIsNotLeftThroughALink) {
  machine->MakeFile(scratch + "outside\\history.dat", "dear");
  machine->MakeFile(scratch + "profile\\history.dat", "junk");
  machine->MakeFolderLink(scratch + "profile\\link", scratch + "outside");
  {
    const auto lock = machine->LockFile(scratch + "profile\\history.dat");
    modMozilla::FindMozillaFiles(context, scratch + "profile", "history.dat");
    EXPECT_TRUE(Holds(StayedNames(engine.state(), 9), "history.dat"));
  }
  EXPECT_EQ(modMozilla::FindMozillaFiles(context, scratch + "profile", "history.dat"), 4);
  EXPECT_EQ(machine->Exists(scratch + "profile\\history.dat"), false);
  EXPECT_EQ(Read(scratch + "outside\\history.dat"), "dear");
}

TEST_F(CleanerFaultsTest, StopLeavesTheRestOfFirefoxAlone) {
  if (!KnowsFirefox()) GTEST_SKIP() << "this Windows version leaves Firefox alone";
  for (const char* name : {"1\\cookies.txt", "2\\cookies.txt", "3\\cookies.txt"}) {
    machine->MakeFile(Profiles() + name, "1234");
  }
  view.on_pause = [this] {
    if (engine.state().MozillaFilesDeleted == 1) engine.StopCleaning();
  };
  Tick({"CleanMozillaCookies"});
  engine.RunCleaning();
  EXPECT_EQ(engine.state().MozillaFilesDeleted, 1);
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
  view.on_pause = nullptr;
  engine.RunCleaning();
  EXPECT_EQ(engine.state().MozillaFilesDeleted, 2);
}

TEST_F(CleanerFaultsTest, ListsWithFoldersInsideFoldersCountEachFileOnce) {
  machine->MakeFile(scratch + "a\\b\\1", "1");
  machine->MakeFile(scratch + "a\\2", "1");
  machine->SetText(kUser, kShellFoldersKey, "AppData", scratch + "none");
  Clean("CleanTempFiles");
  WriteOwn("UDFO.txt", scratch + "a\r\n" + scratch + "a\\b\r\n" + scratch + "a\r\n");
  Clean("CleanUserFolders");
  EXPECT_EQ(engine.state().RunFilesDeleted, 2);
  EXPECT_FALSE(engine.state().SomeFilesLocked);
  EXPECT_EQ(machine->Tree(scratch), (Names{"a\\", "a\\b\\"}));
}

}  // namespace
}  // namespace quellix
