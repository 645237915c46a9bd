#include "cleaners/mod_mozilla.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kShellFoldersKey =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const char* kExplorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
constexpr const char* kBars =
    "Software\\Microsoft\\Internet Explorer\\Explorer "
    "Bars\\{C4EE31F3-4768-11D2-BE5C-00A0C9A83DA1}\\";
const std::string kLine(67, '-');

// A whole user with every trace that the items clean, and neighbours that must stay.
class AllCleanersTest : public RunFixture {
 protected:
  AllCleanersTest() : windows(ports.system.WindowsFolder()), drive(windows.substr(0, 3)) {}

  void SetFolder(RegistryRoot root, const char* key, const char* name, const std::string& folder) {
    machine->SetText(root, key, name, folder);
  }

  void SeedFileAreas() {
    constexpr const char* kCrash = "System\\CurrentControlSet\\Control\\CrashControl";
    machine->SetRegistryValue(
        kMachine, kCrash, "DumpFile",
        {kRegExpandSz, ToUtf16Bytes(std::string("%SystemRoot%\\QX.DMP") + '\0')});
    SetFolder(kMachine, kCrash, "MinidumpDir", scratch + "mini\\");
    machine->MakeFile(ports.system.SystemFolder() + "\\QX.DMP", "dump");
    machine->MakeFile(scratch + "mini\\a.dmp", "12");
    machine->MakeFile(scratch + "mini\\sub\\b.DMP", "345");
    machine->MakeFile(scratch + "mini\\kept.txt", "");
    SetFolder(kMachine, "System\\CurrentControlSet\\Control\\Print\\Printers",
              "DefaultspoolDirectory", scratch + "spool");
    machine->MakeFile(scratch + "spool\\1.spl", "1234");
    machine->MakeFile(scratch + "spool\\kept.shd", "");
    SetFolder(kMachine,
              "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ActiveX Cache", "0",
              scratch + "ocx");
    machine->MakeFile(scratch + "ocx\\sub\\x.ocx", "12345");
    machine->MakeFile(windows + "\\Offline Web Pages\\sub\\page.htm", "123456");
    machine->MakeFile(drive + "msdownld.tmp\\setup\\s.cab", "1234567");
    machine->MakeFile(scratch + "catalog.wci\\0001.ci", "12345678");
  }

  // The log of the file areas, with a count of files and bytes for each line; "" where nothing is
  // left.
  std::string FilesLog(const std::array<const char*, 9>& counts, const char* total) {
    const std::string none = "0 Space Gained: 0", nothing = ": nothing of this kind was found.";
    const std::string before[] = {
        "Active setup temporary folders... ",
        "Content indexer folder... ",
        drive +
            " is not cleaned: it is a whole drive, Windows, its system folder, Program Files or "
            "a user's profile.\r\nUser-defined folders... ",
        "User-defined files... ",
        "Recent documents... ",
        "Residual printer files... ",
        "Memory dump files... ",
        "Offline web pages... ",
        "Downloaded ActiveX & OCX..."};
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

  void SeedUserFiles() {
    SetFolder(kUser, kShellFoldersKey, "Recent", scratch + "recent");
    SetFolder(kUser, kShellFoldersKey, "Cookies", scratch + "cookies");
    SetFolder(kUser, kShellFoldersKey, "AppData", scratch + "appdata");
    machine->MakeFile(scratch + "recent\\letter.lnk", "123");
    MakeFiles(scratch, "cookies\\me@go.txt cookies\\me@stay.txt cookies\\index.dat", "12");
    WriteOwn("ck.txt", "x:\\none.txt\x01" + UpCase(scratch) + "COOKIES\\me@STAY.txt\x01\r\n");
    machine->MakeFile(scratch + "user.log", "1234567");
    machine->MakeFile(scratch + "mine\\sub\\a", "1");
    machine->MakeFile(scratch + "mine\\keep these\\b", "1");
    machine->MakeFile(scratch + "other keep these\\c", "1");
    machine->MakeFile(scratch + "appdata\\Microsoft\\Office\\Recent\\d", "12");
    WriteOwn("UDFI.txt",
             "\r\n " + scratch + "user.log \r\n" + scratch + "missing\r\n" + scratch + "mine\r\n");
    WriteOwn("UDFO.txt", "  " + scratch + "mine\\sub \r\n\r\n" + scratch + "none\r\n" + scratch +
                             "other keep these\r\n" + drive + "\r\nC\r\n");
    WriteOwn("UDIFO.txt", "KEEP THESE\r\n");
  }

  void SeedRegistry() {
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    for (const char* key :
         {"Doc Find Spec MRU", "FindComputerMRU", "PrnPortsMRU",
          "MenuOrder\\Start Menu\\Find\\Menu\\deeper", "MenuOrder\\Start Menu\\Find", "RecentDocs",
          "RecentDocs\\.txt", "RunMRU"}) {
      machine->SetText(kUser, std::string(kExplorer) + key, "a", "x");
      machine->SetText(kUser, std::string(kExplorer) + key, "MRUList", "a");
    }
    for (const char* key : {"ContainingTextMRU", "FilesNamedMRU"})
      machine->SetText(kUser, std::string(kBars) + key, "000", "x");
    machine->SetText(kUser, "Software\\Microsoft\\Search Assistant\\ACMru\\5603", "000", "x");
    machine->SetText(kUser, "InstallLocationsMRU", "a", "D:\\");
    machine->SetText(kUser, kTypedUrlsKey, "url1", "http://example.org/");
    for (const char* version : {"8.0", "10.0", "11.0"}) {
      const std::string office = std::string("Software\\Microsoft\\Office\\") + version;
      machine->SetText(
          kUser, office + "\\Common\\Open Find\\Microsoft Word\\Settings\\Save As\\File Name MRU",
          "Value", "x");
      machine->SetText(kUser, office + "\\Word\\Recent Files", "File1", "x");
      machine->SetText(kUser,
                       office +
                           "\\Common\\Open Find\\Microsoft FrontPage\\Settings\\"
                           "New Publish Location & strtemp1",
                       "Value", "x");
    }
  }

  Names Values(const std::string& key) { return machine->ValueNames(kUser, key); }
  size_t OfficeValues(const std::string& version, const std::string& key) {
    return Values("Software\\Microsoft\\Office\\" + version + "\\" + key).size();
  }

  // Three Firefox items over two profiles: all goes that should, or nothing on a Windows version
  // that Firefox is not cleaned on.
  void CleanFirefox() {
    const std::string profiles = ports.system.Environment("USERPROFILE").value() +
                                 "\\Application Data\\Mozilla\\Firefox\\Profiles\\";
    MakeFiles(profiles,
              "1.default\\Cache\\A 1.default\\Cache\\sub\\B 3.lower\\cache\\C 2.x\\history.dat "
              "2.x\\sub\\cookies.txt 2.x\\cookperm.txt",
              "1234");
    Tick({"CleanMozillaCache", "CleanMozillaCookies", "CleanMozillaHistory"});
    engine.RunCleaning();
    const bool known = !modMozilla::GetWindowsVersionName(ports.system.Version()).empty();
    // One cache file, then two cookie files, then one history: each item adds all before it again.
    EXPECT_EQ(engine.state().RunFilesDeleted, known ? 1 + 3 + 4 : 0);
    EXPECT_EQ(engine.state().RunSpaceGained, known ? 4 * (1 + 3 + 4) : 0);
    EXPECT_EQ(machine->Exists(profiles + "1.default\\Cache\\A"), !known);
    EXPECT_EQ(machine->Exists(profiles + "2.x\\sub\\cookies.txt"), !known);
    EXPECT_TRUE(machine->Exists(profiles + "1.default\\Cache\\sub\\B"));
    EXPECT_TRUE(machine->Exists(profiles + "3.lower\\cache\\C"));
  }

  std::string windows, drive;
};

TEST_F(AllCleanersTest, EveryFileAreaIsCleanedAndItsNeighboursStay) {
  SeedFileAreas();
  SeedUserFiles();
  Clean("CleanTempFiles");
  machine->MakeFile(windows + "\\temp\\t", "123");
  Tick({"ActiveSetupClean", "CleanIndexer", "CleanUserFolders", "CleanUserFiles", "CleanRecentDocs",
        "CleanPrinter", "CleanMemDump", "CleanOffline", "CleanActiveX"});
  engine.RunCleaning();
  EXPECT_EQ(view.report->log,
            FilesLog({"1 Space Gained: 7", "1 Space Gained: 8", "3 Space Gained: 6",
                      "1 Space Gained: 7", "1 Space Gained: 3", "1 Space Gained: 4",
                      "2 Space Gained: 5", "1 Space Gained: 6", "1 Space Gained: 5"},
                     "12   Space Gained:  51"));
  const std::string kLeft =
      "appdata\\ appdata\\Microsoft\\ appdata\\Microsoft\\Office\\ "
      "appdata\\Microsoft\\Office\\Recent\\ catalog.wci\\ cookies\\ cookies\\index.dat "
      "cookies\\me@go.txt cookies\\me@stay.txt mine\\ mine\\keep these\\ mine\\keep these\\b "
      "mine\\sub\\ mini\\ mini\\kept.txt mini\\sub\\ ocx\\ other keep these\\ "
      "other keep these\\c recent\\ spool\\ spool\\kept.shd";
  EXPECT_EQ(Joined(machine->Tree(scratch)), kLeft);
  EXPECT_FALSE(machine->Exists(ports.system.SystemFolder() + "\\QX.DMP"));
  EXPECT_FALSE(machine->Exists(drive + "msdownld.tmp"));
  EXPECT_TRUE(machine->Tree(windows + "\\Offline Web Pages").empty());
  engine.RunCleaning();
  EXPECT_EQ(view.report->log,
            FilesLog({"", "", "", "", "", "", "", "", ""}, "0   Space Gained:  0"));
  EXPECT_EQ(Joined(machine->Tree(scratch)), kLeft);
}

TEST_F(AllCleanersTest, CookiesOnTheKeepListStay) {
  SeedUserFiles();
  Clean("CleanCookies");
  EXPECT_TRUE(Holds(view.report->log, "Cookies... Files Deleted: 1 Space Gained: 2 Bytes\r\n"));
  EXPECT_EQ(machine->Tree(scratch + "cookies"), (Names{"index.dat", "me@stay.txt"}));
}

TEST_F(AllCleanersTest, EveryRegistryListIsClearedAndItsNeighboursStay) {
  SeedRegistry();
  Tick({"CleanRecentDocs", "CleanOfficeHistory", "CleanRunMRU", "CleanInstallMRU",
        "CleanFindHistory", "CleanTypedURL"});
  for (const bool again : {false, true}) {
    engine.RunCleaning();
    EXPECT_EQ(view.report->log,
              std::string("Recent documents... Files Deleted: 0 Space Gained: 0 Bytes\r\n"
                          "MS Office history...\r\n"
                          "Windows run history... Files Deleted: ") +
                  (again ? "0" : "2") +
                  "\r\nInstall from history...\r\n"
                  "Typed URLs... Files Deleted: " +
                  (again ? "0" : "1") + "\r\n\r\n" + kLine +
                  "\r\nFiles Deleted:  0   Space Gained:  0 Bytes");
    for (const char* key :
         {"Doc Find Spec MRU", "FindComputerMRU", "PrnPortsMRU", "RunMRU", "RecentDocs"}) {
      EXPECT_TRUE(machine->KeyExists(kUser, std::string(kExplorer) + key)) << key;
      EXPECT_TRUE(Values(std::string(kExplorer) + key).empty()) << key;
    }
    const WindowsVersion running = ports.system.Version();
    EXPECT_EQ(machine->KeyExists(kUser, std::string(kExplorer) + "RecentDocs\\.txt"),
              std::pair(running.major, running.minor) < std::pair(6, 2));
    EXPECT_FALSE(machine->KeyExists(kUser, std::string(kExplorer) + "MenuOrder\\Start Menu\\Find"));
    EXPECT_TRUE(machine->KeyExists(kUser, std::string(kExplorer) + "MenuOrder\\Start Menu"));
    EXPECT_FALSE(machine->KeyExists(kUser, std::string(kBars) + "FilesNamedMRU"));
    EXPECT_FALSE(machine->KeyExists(kUser, "Software\\Microsoft\\Search Assistant\\ACMru"));
    EXPECT_TRUE(machine->KeyExists(kUser, "Software\\Microsoft\\Search Assistant"));
    EXPECT_TRUE(Values("InstallLocationsMRU").empty());
    const std::string find = "Common\\Open Find\\Microsoft ";
    for (const char* version : {"8.0", "10.0", "11.0"}) {
      const size_t kept = version == std::string("11.0") ? 1 : 0;
      EXPECT_EQ(OfficeValues(version, find + "Word\\Settings\\Save As\\File Name MRU"), kept);
      EXPECT_EQ(
          OfficeValues(version, find + "FrontPage\\Settings\\New Publish Location & strtemp1"),
          kept);
      EXPECT_EQ(OfficeValues(version, "Word\\Recent Files"), 1u);
    }
  }
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
  // A volume takes its version from the registry; a running Windows has the one it has.
  constexpr const char* kVersionKey = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  for (const auto& [major, minor] : {std::pair{'\5', '\1'}, {'\6', '\1'}, {'\6', '\2'}}) {
    machine->SetRegistryValue(kMachine, kVersionKey, "CurrentMajorVersionNumber",
                              {kRegDword, {major, 0, 0, 0}});
    machine->SetRegistryValue(kMachine, kVersionKey, "CurrentMinorVersionNumber",
                              {kRegDword, {minor, 0, 0, 0}});
    CleanFirefox();
  }
}

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

TEST_F(CleanerFaultsTest, AListGoesToItsEndWhenTheSettingsSaySo) {
  const std::pair<const char*, int> kRows[] = {
      {"", 301}, {"[General]\r\nAllValues=0\r\n", 301}, {"[General]\r\nAllValues=1\r\n", 0}};
  for (const auto& [ini, left] : kRows) {
    SCOPED_TRACE(ini);
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->SetRegistryValue(kUser, kRunMruKey, " long ", {kRegBinary, std::string(256, 'x')});
    for (int i = 0; i < 300; ++i)
      machine->SetText(kUser, kRunMruKey, "v" + std::to_string(i), "cmd");
    WriteSettings(ini);
    Clean("CleanRunMRU");
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), left);
    EXPECT_TRUE(view.report->log.starts_with(
        "Windows run history... Files Deleted: " + std::to_string(301 - left) + "\r\n"))
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

TEST_F(CleanerFaultsTest, AFirefoxProfileInASystemFolderIsNotCleaned) {
  const std::string folder = ports.system.SystemFolder() + "\\Qx";
  machine->MakeFile(folder + "\\history.dat", "dear");
  EXPECT_EQ(modMozilla::FindMozillaFiles(context, folder, "*.*"), 0);
  EXPECT_TRUE(machine->Exists(folder + "\\history.dat"));
  ports.files.RemoveFile(folder + "\\history.dat");
  ports.files.RemoveFolder(folder);
}

TEST_F(CleanerFaultsTest, StopLeavesTheRestOfFirefoxAlone) {
  if (!KnowsFirefox()) GTEST_SKIP() << "this Windows version leaves Firefox alone";
  for (const char* name : {"1\\cookies.txt", "2\\cookies.txt", "3\\cookies.txt"})
    machine->MakeFile(Profiles() + name, "1234");
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
