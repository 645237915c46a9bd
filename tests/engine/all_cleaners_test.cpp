#include "cleaners/mod_mozilla.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kShellFoldersKey =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const std::string kLine(67, '-');

// A whole user with every trace that the items clean, and neighbours that must stay.
class AllCleanersTest : public RunFixture {
 protected:
  AllCleanersTest() : windows(ports.system.WindowsFolder()), drive(windows.substr(0, 3)) {}

  // The log of the file areas, with a count of files and bytes for each line; "" where nothing is
  // left.
  std::string FilesLog(const std::array<const char*, 4>& counts, const char* total) {
    const std::string none = "0 Space Gained: 0", nothing = ": nothing of this kind was found.";
    const std::string before[] = {
        "Active setup temporary folders... ", "Content indexer folder... ",
        drive +
            " is not cleaned: it is a whole drive, Windows, its system folder, Program Files or "
            "a user's profile.\r\nUser-defined folders... ",
        "User-defined files... "};
    std::string text;
    for (size_t i = 0; i < counts.size(); ++i) {
      const bool gone = *counts[i] == '\0';
      text += before[i] + "Files Deleted: " + (gone ? none : counts[i]) + " Bytes\r\n";
      if (gone && i == 0) text += "Active setup temporary folders" + nothing + "\r\n";
      if (!gone || i != 3) continue;
      text += "User-defined files" + nothing + " None of the listed files is there.\r\n";
    }
    return text + "\r\n" + kLine + "\r\nFiles Deleted:  " + total + " Bytes";
  }

  void SeedFileAreas() {
    machine->MakeFile(drive + "msdownld.tmp\\setup\\s.cab", "1234567");
    machine->MakeFile(scratch + "catalog.wci\\0001.ci", "12345678");
    machine->SetText(kUser, kShellFoldersKey, "AppData", scratch + "appdata");
    machine->MakeFile(scratch + "user.log", "1234567");
    MakeFiles(scratch, "mine\\sub\\a");
    machine->MakeFile(scratch + "mine\\keep these\\b", "1");
    machine->MakeFile(scratch + "other keep these\\c", "1");
    machine->MakeFile(scratch + "appdata\\Microsoft\\Office\\Recent\\d", "12");
    WriteOwn("UDFI.txt",
             "\r\n " + scratch + "user.log \r\n" + scratch + "missing\r\n" + scratch + "mine\r\n");
    WriteOwn("UDFO.txt", "  " + scratch + "mine\\sub \r\n\r\n" + scratch + "none\r\n" + scratch +
                             "other keep these\r\n" + drive + "\r\nC\r\n");
    WriteOwn("UDIFO.txt", "KEEP THESE\r\n");
  }

  // Whether Firefox is cleaned there: a volume takes its version from the registry, a running
  // Windows has the one it has.
  bool KnowsFirefoxOn(char major, char minor) {
    for (const auto& [part, number] : {std::pair("Major", major), std::pair("Minor", minor)}) {
      machine->SetRegistryValue(kMachine, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
                                std::string("Current") + part + "VersionNumber",
                                {kRegDword, {number, 0, 0, 0}});
    }
    return !modMozilla::GetWindowsVersionName(ports.system.Version()).empty();
  }

  const std::string profiles = ports.system.Environment("USERPROFILE").value() +
                               "\\Application Data\\Mozilla\\Firefox\\Profiles\\";
  std::string windows, drive;
};

TEST_F(AllCleanersTest, EveryFileAreaIsCleanedAndItsNeighboursStay) {
  SeedFileAreas();
  Clean("CleanTempFiles");
  machine->MakeFile(windows + "\\temp\\t", "123");
  Tick({"ActiveSetupClean", "CleanIndexer", "CleanUserFolders", "CleanUserFiles"});
  engine.RunCleaning();
  EXPECT_EQ(view.report->log, FilesLog({"1 Space Gained: 7", "1 Space Gained: 8",
                                        "3 Space Gained: 6", "1 Space Gained: 7"},
                                       "6   Space Gained:  28"));
  const std::string kLeft =
      "appdata\\ appdata\\Microsoft\\ appdata\\Microsoft\\Office\\ "
      "appdata\\Microsoft\\Office\\Recent\\ catalog.wci\\ mine\\ mine\\keep these\\ "
      "mine\\keep these\\b mine\\sub\\ other keep these\\ other keep these\\c";
  EXPECT_EQ(Joined(machine->Tree(scratch)), kLeft);
  EXPECT_FALSE(machine->Exists(drive + "msdownld.tmp"));
  engine.RunCleaning();
  EXPECT_EQ(view.report->log, FilesLog({"", "", "", ""}, "0   Space Gained:  0"));
  EXPECT_EQ(Joined(machine->Tree(scratch)), kLeft);
}

TEST_F(AllCleanersTest, OddRegistryFoldersHarmNothing) {
  const std::string system = ports.system.SystemFolder();
  machine->MakeFile(system + "\\qxspool\\b.spl", "1");
  const std::tuple<const char*, std::string, uint32_t, int, bool> rows[] = {
      {"empty", "", kRegSz, 0, false},
      {"one character", "C", kRegSz, 0, false},
      {"relative", "Scratch\\real", kRegSz, 0, false},
      {"no such drive", "Y:\\spool", kRegSz, 0, false},
      {"unknown variable", "%NOSUCH%\\spool", kRegExpandSz, 0, false},
      {"trailing blank", scratch + "real ", kRegSz, 0, false},
      {"300 characters", scratch + std::string(300, 'x'), kRegSz, 0, false},
      {"number", std::string("\x41\0\0\0", 4), kRegDword, 0, false},
      {"a drive", drive, kRegSz, 0, true},
      {"Windows", windows, kRegSz, 0, true},
      {"system folder", "%systemroot%", kRegExpandSz, 0, true},
      {"a file", scratch + "real\\a.spl", kRegSz, 0, true},
      {"two backslashes", scratch + "real\\", kRegSz, 1, false},
      {"the first of several texts", scratch + "real" + '\0' + scratch, kRegMultiSz, 1, false},
      {"system root is the system folder", "%SYSTEMROOT%\\qxspool", kRegExpandSz, 1, false}};
  for (const auto& [name, value, type, removed, refused] : rows) {
    SCOPED_TRACE(name);
    machine->MakeFile(scratch + "real\\a.spl", "1");
    machine->SetRegistryValue(kMachine, "System\\CurrentControlSet\\Control\\Print\\Printers",
                              "DefaultspoolDirectory",
                              {type, type == kRegDword ? value : ToUtf16Bytes(value + '\0')});
    Clean("CleanPrinter");
    EXPECT_EQ(engine.state().RunFilesDeleted, removed);
    EXPECT_EQ(view.report->log.find("is not cleaned") != std::string::npos, refused);
    EXPECT_TRUE(view.criticals.empty());
  }
}

TEST_F(AllCleanersTest, FirefoxIsCleanedOnlyOnTheWindowsVersionsItKnows) {
  static constexpr std::pair<WindowsVersion, const char*> kRows[] = {
      {{1, 4, 0}, "95"}, {{1, 4, 10}, "98"}, {{2, 4, 0}, "NT"},    {{2, 5, 0}, "2K"},
      {{2, 5, 1}, "XP"}, {{2, 5, 2}, ""},    {{2, 6, 0}, "Vista"}, {{2, 6, 1}, "Win7"},
      {{2, 6, 2}, ""},   {{2, 10, 0}, ""}};
  for (const auto& [version, name] : kRows)
    EXPECT_EQ(modMozilla::GetWindowsVersionName(version), name);
  // Three items over two profiles: all goes that should, or nothing.
  for (const auto& [major, minor] : {std::pair{'\5', '\1'}, {'\6', '\1'}, {'\6', '\2'}}) {
    const bool known = KnowsFirefoxOn(major, minor);
    MakeFiles(profiles,
              "1.default\\Cache\\A 1.default\\Cache\\sub\\B 3.lower\\cache\\C 2.x\\history.dat "
              "2.x\\sub\\cookies.txt 2.x\\cookperm.txt",
              "1234");
    Tick({"CleanMozillaCache", "CleanMozillaCookies", "CleanMozillaHistory"});
    engine.RunCleaning();
    // One cache file, then two cookie files, then one history: each item adds all before it again.
    EXPECT_EQ(engine.state().RunFilesDeleted, known ? 1 + 3 + 4 : 0);
    EXPECT_EQ(engine.state().RunSpaceGained, known ? 4 * (1 + 3 + 4) : 0);
    EXPECT_EQ(machine->Exists(profiles + "1.default\\Cache\\A"), !known);
    EXPECT_EQ(machine->Exists(profiles + "2.x\\sub\\cookies.txt"), !known);
    EXPECT_TRUE(machine->Exists(profiles + "1.default\\Cache\\sub\\B"));
    EXPECT_TRUE(machine->Exists(profiles + "3.lower\\cache\\C"));
  }
}

TEST_F(AllCleanersTest, StopLeavesTheRestOfFirefoxAlone) {
  if (!KnowsFirefoxOn('\6', '\1')) GTEST_SKIP() << "this Windows version leaves Firefox alone";
  MakeFiles(profiles, "1\\cookies.txt 2\\cookies.txt 3\\cookies.txt", "1234");
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

using CleanerFaultsTest = RunFixture;

TEST_F(CleanerFaultsTest, AFailingItemShowsItsMessageWritesNoLineAndTheNextOneRuns) {
  // A folder is where the item's list should be.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"UDFO.txt", "There was an error in cleaning the User defined folders",
       "User-defined folders"},
      {"UDFI.txt", "There was an error in cleaning User Defined Files", "User-defined files"},
      {"ck.txt", "There was an error in cleaning Cookies. ", "Cookies"}};
  for (const auto& [in_the_way, message, caption] : rows) machine->MakeFolder(own + in_the_way);
  Tick({"CleanUserFolders", "CleanUserFiles", "CleanCookies", "CleanTempFiles", "CleanTypedURL"});
  engine.RunCleaning();
  ASSERT_EQ(view.criticals.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    const auto& [in_the_way, message, caption] = rows[i];
    EXPECT_TRUE(view.criticals[i].starts_with(message)) << view.criticals[i];
    EXPECT_TRUE(Holds(view.criticals[i], in_the_way));
    EXPECT_FALSE(Holds(view.report->log, caption));
  }
  EXPECT_TRUE(Holds(view.report->log, "Temporary files... "));
  EXPECT_TRUE(Holds(view.report->log, "Typed URLs... "));
  EXPECT_EQ(view.commands, Commands{});
  EXPECT_TRUE(!view.current_item_shown && engine.state().SomeErrors);
  EXPECT_EQ(view.report->outcomes[2], Outcome::kFailed);
}

// Else it ends at what is too long, and at the 256th.
TEST_F(CleanerFaultsTest, AListGoesToItsEndWhenTheSettingsSaySo) {
  const std::tuple<const char*, bool, size_t> kRows[] = {
      {"", true, 301},
      {"", false, 44},
      {"[General]\r\nAllValues=0\r\n", true, 301},
      {"[General]\r\nAllValues=1\r\n", true, 0}};
  for (const auto& [ini, has_long, left] : kRows) {
    SCOPED_TRACE(ini);
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    if (has_long)
      machine->SetRegistryValue(kUser, kRunMruKey, " long ", {kRegBinary, std::string(256, 'x')});
    for (int i = 0; i < 300; ++i)
      machine->SetText(kUser, kRunMruKey, "v" + std::to_string(i), "cmd");
    WriteSettings(ini);
    Clean("CleanRunMRU");
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), left);
    EXPECT_TRUE(Holds(view.report->log, "Windows run history... Files Deleted: " +
                                            std::to_string((has_long ? 301 : 300) - left)));
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

TEST_F(CleanerFaultsTest, AFirefoxProfileInASystemFolderIsNotCleaned) {
  const std::string folder = ports.system.SystemFolder() + "\\Qx";
  machine->MakeFile(folder + "\\history.dat", "dear");
  EXPECT_EQ(modMozilla::FindMozillaFiles(context, folder, "*.*"), 0);
  EXPECT_TRUE(machine->Exists(folder + "\\history.dat"));
  ports.files.RemoveFile(folder + "\\history.dat");
  ports.files.RemoveFolder(folder);
}

TEST_F(CleanerFaultsTest, ListsWithFoldersInsideFoldersCountEachFileOnce) {
  MakeFiles(scratch, "a\\b\\1 a\\2");
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
