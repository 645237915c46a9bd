#include "app/options.h"

#include <algorithm>

#include "platform/path.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// What SaveGeneralSettings writes for a new user, with the method and the backup folder as given.
std::string DefaultSettings(const std::string& folder) {
  return "[General]\r\nStartupClean=0\r\nAutoClean=0\r\nHM=1\r\nDuration=1\r\nDelMethod=D\r\n"
         "ExtraS=0\r\nRename=0\r\nProtect1=0\r\nProtect2=0\r\nTipBox=1\r\n[Backup]\r\nPath=" +
         folder + "\r\n";
}

class OptionsTest : public RunFixture {
 protected:
  OptionsTest() { RemoveRunEntry(); }
  ~OptionsTest() override { RemoveRunEntry(); }

  void RemoveRunEntry() {
    const auto key = ports.registry.Open(kUser, kRunKey, RegistryAccess::kWrite);
    if (key) key->DeleteValue("Quellix");
  }
  std::string RunEntryText() {
    const auto key = ports.registry.Open(kUser, kRunKey, RegistryAccess::kRead);
    const auto value = key ? key->QueryValue("Quellix") : std::nullopt;
    return value ? FromUtf16Bytes(value->bytes) : "<missing>";
  }
  void WriteProgramFile(const std::string& name, const std::string& bytes) {
    ports.files.WriteWholeFile(ports.program_folder + "\\" + name, bytes);
  }
  std::vector<std::string> ProgramFolder() { return machine->Tree(ports.program_folder); }

  const std::string home = ports.program_folder + "\\Backup\\";
};

TEST_F(OptionsTest, ANewUsersFilesAreWrittenToTheByte) {
  Options options(ports);
  EXPECT_EQ(options.Problems(), "");
  EXPECT_FALSE(options.Check());
  EXPECT_TRUE(ProgramFolder().empty());
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadProgramFile("Settings.ini"), DefaultSettings(home));
  EXPECT_EQ(RunEntryText(), "<missing>");
  // Lists that nobody changed stay with their defaults.
  EXPECT_EQ(ProgramFolder(), (std::vector<std::string>{"Settings.ini", "srch.txt"}));

  options.general.start_with_windows = options.general.startup_clean = true;
  options.general.auto_clean = true;
  options.general.typed_duration = " 45 ";
  options.general.hours = 0;
  options.general.protect1 = options.general.protect2 = true;
  options.general.tip_box = false;
  options.general.tray_icon = true;
  options.general.RemovalMode = kBackUp;
  options.general.extra_security = options.general.rename = true;
  options.general.WipeStep = 65536;
  options.general.BackupFolder =
      "C:\\S\xC3\xA4"
      "fe";
  options.general.Strict = options.general.KeepOnAbort = true;
  options.general.BackupRegistry = false;
  ASSERT_FALSE(options.Check());
  EXPECT_EQ(options.Save(), "");
  const std::string all =
      "[General]\r\nStartupClean=1\r\nAutoClean=1\r\nHM=0\r\nDuration=45\r\nDelMethod=B\r\n"
      "ExtraS=1\r\nRename=1\r\nProtect1=1\r\nProtect2=1\r\nTipBox=0\r\nTrayIcon=1\r\n"
      "WipeStep=65536\r\n[Backup]\r\nPath=C:\\S\xC3\xA4"
      "fe\\\r\nStrict=1\r\nKeepOnAbort=1\r\n"
      "Registry=0\r\n";
  EXPECT_EQ(ReadProgramFile("Settings.ini"), all);
  EXPECT_EQ(RunEntryText(),
            "\"" + ports.program_folder + "\\quellix.exe\" -S" + std::string(1, '\0'));
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadProgramFile("Settings.ini"), all);
  engine.ApplyGeneralSettings();
  EXPECT_EQ(engine.preferences().IntervalMinutes(), 45);
  EXPECT_TRUE(engine.preferences().protect1 && !engine.preferences().tip_box);
  for (const char* key : {"CleanEmptyFiles", "CleanShortcuts"}) {
    EXPECT_EQ(engine.selection().WhyDisabled(*FindItem(key)).find("Options"),
              std::string_view::npos);
  }
}

TEST_F(OptionsTest, KeysItDoesNotKnowAndTheirPlacesStay) {
  WriteSettings(
      "; mine\r\n[Backup]\r\nOverwrite=Newer\r\n[General]\r\nother = 1\r\nTipBox=0\r\n"
      "WipeStep=4096\r\n[CleanUp]\r\nLastCleaned=x\r\n");
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadProgramFile("Settings.ini"),
            "; mine\r\n[Backup]\r\nOverwrite=Newer\r\nPath=" + home +
                "\r\n[General]\r\nother = 1\r\nTipBox=0\r\nWipeStep=4096\r\nStartupClean=0\r\n"
                "AutoClean=0\r\nHM=1\r\nDuration=1\r\nDelMethod=D\r\nExtraS=0\r\nRename=0\r\n"
                "Protect1=0\r\nProtect2=0\r\n[CleanUp]\r\nLastCleaned=x\r\n");
}

TEST_F(OptionsTest, GarbageInTheSettingsIsShownAsWhatItMeans) {
  struct Row {
    const char* name;
    const char* general;
    const char*
        shown;  // automatic, duration, hours, tip box, method, extra security, rename, registry
  };
  const Row rows[] = {
      {"no numbers", "AutoClean=on\nDuration=soon\nHM=x\nProtect1=yes\nTipBox=\nWipeStep=fast\n",
       "0 1 1 0 1 0 0 1"},
      {"negative", "AutoClean=-1\nDuration=-7\nHM=-1\nExtraS=-1\nRename=-1\nWipeStep=-1",
       "0 -7 0 1 1 0 0 1"},
      {"beyond 16 bits", "AutoClean=65537\nDuration=65537\nHM=70000\nExtraS=70000\nTipBox=1e9",
       "0 1 1 0 1 0 0 1"},
      {"blanks", "AutoClean=  1  \nDuration= 9 \nHM= 0 \nDelMethod= W \nRename= 1 ",
       "1 9 0 1 3 0 1 1"},
      {"other letters", "DelMethod=r\nExtraS=2\nRename=2\nTrayIcon=2", "0 1 1 1 4 1 0 1"},
      {"empty", "DelMethod=\nDuration=\n[Backup]\nPath=\nRegistry=0", "0 1 1 1 4 0 0 0"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    WriteSettings(std::string("[General]\n") + row.general);
    const GeneralOptions got = LoadGeneralOptions(ports);
    std::ostringstream shown;
    shown << got.auto_clean << ' ' << got.typed_duration << ' ' << got.InHours() << ' '
          << got.tip_box << ' ' << got.RemovalMode << ' ' << got.extra_security << ' ' << got.rename
          << ' ' << got.BackupRegistry;
    EXPECT_EQ(shown.str(), row.shown);
    EXPECT_EQ(got.WipeStep, 1u);
    EXPECT_EQ(got.BackupFolder, home);
    EXPECT_FALSE(got.protect1 || got.tray_icon || got.Strict);
  }
}

TEST_F(OptionsTest, FieldsOutOfRangeAreRefusedWithASentence) {
  struct Row {
    const char* name;
    bool automatic, hours;
    std::string duration, folder, sentence;  // part of it; "" when accepted
    RemovalModes method = kDelete;
  };
  const std::string hours = "hours from 1 to 546.", minutes = "minutes from 1 to 32767.";
  const Row rows[] = {
      {"most hours", true, true, "546", home, ""},
      {"too many hours", true, true, "547", home, hours},
      {"most minutes", true, false, "32767", home, ""},
      {"beyond 16 bits", true, false, "32768", home, minutes},
      {"far beyond", true, false, "99999999999999999999", home, minutes},
      {"none", true, false, "0", home, minutes},
      {"negative", true, false, "-1", home, minutes},
      {"fraction", true, true, "1.5", home, hours},
      {"exponent", true, true, "1e2", home, hours},
      {"word", true, true, "one", home, hours},
      {"empty", true, true, " ", home, hours},
      {"not asked for", false, true, "one", home, ""},
      {"no folder", false, true, "1", "  ", "choose the folder"},
      {"relative", false, true, "1", "Backup", "full path"},
      {"rooted only", false, true, "1", "\\Backup", "full path"},
      {"drive-relative", false, true, "1", "C:Backup", "full path"},
      {"device", false, true, "1", "\\\\.\\C:\\x", "full path"},
      {"no share", false, true, "1", "\\\\server\\", "full path"},
      {"share", false, true, "1", "\\\\server\\share\\x", ""},
      {"wildcard", false, true, "1", "C:\\a*", "cannot hold"},
      {"quotes", false, true, "1", "C:\\a\"b", "cannot hold"},
      {"upward", false, true, "1", "C:\\a\\..\\b", "no name"},
      {"doubled", false, true, "1", "C:\\a\\\\b", "no name"},
      {"long", false, true, "1", "C:\\" + std::string(250, 'a'), ""},
      {"too long", false, true, "1", "C:\\" + std::string(251, 'a'), "longer than"},
      {"missing drive, not used", false, true, "1", "Q:\\b", ""},
      {"missing drive", false, true, "1", "Q:\\b", "no drive Q:", kBackUp},
      {"a whole drive", false, true, "1", "c:\\", "It holds "},
      {"in Windows", false, true, "1", ports.system.WindowsFolder() + "\\b", "folder of Windows"},
      {"what is cleaned", false, true, "1", temp, "which is cleaned"},
      {"in what is cleaned", false, true, "1", UpCase(temp) + "b", "which is cleaned"},
      {"above it", false, true, "1", std::string(FolderPart(WithoutBackslash(temp))), "It holds "},
      {"in an own folder", false, true, "1", "C:\\Mine\\b", "C:\\Mine, which is cleaned"},
      {"beside it", false, true, "1", "C:\\Mines", ""},
  };
  Options options(ports);
  EXPECT_EQ(options.lists.back().Add("C:\\Mine", ""), "");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    options.general.auto_clean = row.automatic;
    options.general.hours = row.hours ? 1 : 0;
    options.general.typed_duration = row.duration;
    options.general.BackupFolder = row.folder;
    options.general.RemovalMode = row.method;
    const std::optional<Refusal> refusal = options.Check();
    ASSERT_EQ(refusal.has_value(), !row.sentence.empty());
    if (!refusal) continue;
    EXPECT_NE(refusal->sentence.find(row.sentence), std::string::npos) << refusal->sentence;
    EXPECT_EQ(PageOf(refusal->field),
              row.folder == home ? OptionsPage::kGeneral : OptionsPage::kDeletion);
  }
  options.lists.back().Remove(std::vector<size_t>{0});
  options.general = LoadGeneralOptions(ports);
  options.general.typed_duration = "one";
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadProgramFile("Settings.ini"), DefaultSettings(home));
  WriteSettings("[General]\r\nDuration=9\r\n");
  Options unused(ports);
  unused.general.typed_duration = "";
  EXPECT_EQ(unused.Save(), "");
  EXPECT_EQ(LoadGeneralOptions(ports).typed_duration, "9");
}

TEST_F(OptionsTest, StartingWithWindowsRepairsAndRemovesTheEntry) {
  const std::string ours = "\"" + ports.program_folder + "\\quellix.exe\" -S";
  struct Row {
    const char* name;
    RegistryValue value;
    RunValue entry;
  };
  const Row rows[] = {
      {"ours", {kRegSz, ToUtf16Bytes(ours) + std::string(2, '\0')}, RunValue::kOurs},
      {"other case, no NUL", {kRegSz, ToUtf16Bytes(UpCase(ours))}, RunValue::kOurs},
      {"another program", {kRegSz, ToUtf16Bytes("C:\\other.exe")}, RunValue::kChanged},
      {"no switch", {kRegSz, ToUtf16Bytes(ours.substr(0, ours.size() - 3))}, RunValue::kChanged},
      {"no text", {kRegDword, std::string(4, '\1')}, RunValue::kChanged},
      {"empty", {kRegSz, ""}, RunValue::kChanged},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    machine->SetRegistryValue(kUser, kRunKey, "Quellix", row.value);
    EXPECT_EQ(LookAtRunValue(ports), row.entry);
    Options options(ports);
    EXPECT_TRUE(options.general.start_with_windows);
    EXPECT_EQ(options.Save(), "");
    EXPECT_EQ(LookAtRunValue(ports), RunValue::kOurs);
    options.general.start_with_windows = false;
    EXPECT_EQ(options.Save(), "");
    EXPECT_EQ(RunEntryText(), "<missing>");
  }
  EXPECT_EQ(Options(ports).Save(), "");  // deleting what is missing is no error
}

TEST_F(OptionsTest, TheSearchPageIsWrittenInItsFiveLines) {
  Options options(ports);
  ASSERT_FALSE(options.search.drives.empty());
  const std::string windows = options.search.drives[0].entry;
  EXPECT_TRUE(options.search.drives[0].ticked) << windows;
  SearchOptions& search = options.search.options;
  search.first_date = {.year = 2001, .month = 2, .day = 3};
  search.second_date = {.year = 2001, .month = 2, .day = 4};
  EXPECT_EQ(options.Save(), "");
  const std::string defaults =
      " " + windows + "\r\n1 1\r\n0 2/3/2001 2/4/2001\r\n0 False True False 1000\r\n1 1 1\r\n";
  EXPECT_EQ(ReadProgramFile("srch.txt"), defaults);
  search.file_reference = search.read_only = search.hidden = search.system = 0;
  search.path_reference = 2;
  search.date = search.size = 1;
  search.size_minimum = false;
  search.size_maximum = true;
  options.search.size_kb = "2147483647";
  ASSERT_FALSE(options.Check());
  EXPECT_EQ(options.Save(), "");
  const std::string changed =
      " " + windows +
      "\r\n0 2\r\n1 2/3/2001 2/4/2001\r\n1 False False True 2147483647\r\n0 0 0\r\n";
  EXPECT_EQ(ReadProgramFile("srch.txt"), changed);
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadProgramFile("srch.txt"), changed);

  search.second_date = search.first_date;
  EXPECT_EQ(PageOf(options.Check().value().field), OptionsPage::kSearch);
  search.date = 0;
  EXPECT_FALSE(options.Check());
  for (const char* size : {"", "-1", "x", "2147483648", "1.5", "1 0"}) {
    SCOPED_TRACE(size);
    options.search.size_kb = size;
    search.size = 1;
    EXPECT_EQ(options.Check().value().field, OptionsField::kSize);
    search.size = 0;
    EXPECT_FALSE(options.Check());
  }
  EXPECT_EQ(options.Save(), "");
  EXPECT_NE(ReadProgramFile("srch.txt").find(" 1000\r\n"), std::string::npos);
}

TEST_F(OptionsTest, AnUnpluggedDriveStaysChosenAndGarbageNamesNone) {
  WriteProgramFile("srch.txt", " q: Removable drive c: Hard drive Q:  1: ?: :rest\r\n1 1\r\n");
  Options options(ports);
  std::string ticked;
  for (const DriveRow& row : options.search.drives) ticked += row.ticked ? row.entry + "|" : "";
  EXPECT_EQ(ticked, options.search.drives[0].entry + "|Q: The root directory does not exist|");
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(LoadSearchOptions(ports).drives,
            " " + options.search.drives[0].entry + " Q: The root directory does not exist");
  for (DriveRow& row : options.search.drives) row.ticked = false;
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadProgramFile("srch.txt").substr(0, 5), "\r\n1 1");
}

TEST_F(OptionsTest, AFailedWriteIsToldAndLosesNothing) {
  WriteSettings("[General]\r\nTipBox=0\r\n");
  WriteProgramFile("UDFI.txt", "C:\\a.txt\r\n");
  machine->SetText(kUser, kRunKey, "Quellix", "changed");
  Options options(ports);
  options.general.tip_box = true;
  OptionList& files = options.lists[4];
  ASSERT_EQ(files.Add("C:\\b.txt", ""), "");
  {
    [[maybe_unused]] const auto locks = {machine->LockFile(ports.program_folder + "\\Settings.ini"),
                                         machine->LockFile(ports.program_folder + "\\UDFI.txt")};
    const auto denied = machine->DenyRegistryWrites(kUser, kRunKey);
    const std::string problems = options.Save();
    for (const char* part :
         {"Starting with Windows could not be saved. ", "The settings could not be saved. ",
          "User-defined files could not be saved. "}) {
      EXPECT_NE(problems.find(part), std::string::npos) << problems;
    }
    EXPECT_EQ(std::ranges::count(problems, '\n'), 3) << problems;
  }
  EXPECT_EQ(ReadProgramFile("Settings.ini"), "[General]\r\nTipBox=0\r\n");
  EXPECT_EQ(ReadProgramFile("UDFI.txt"), "C:\\a.txt\r\n");
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadProgramFile("UDFI.txt"), "C:\\a.txt\r\nC:\\b.txt\r\n");
  EXPECT_TRUE(LoadGeneralOptions(ports).tip_box);
  EXPECT_EQ(LookAtRunValue(ports), RunValue::kOurs);
}

TEST_F(OptionsTest, WhatCannotBeReadIsToldAndNotWritten) {
  for (const char* name : {"Settings.ini", "srch.txt", "IE.txt", "UNFI.txt", "ck.txt"}) {
    machine->MakeFolder(ports.program_folder + "\\" + name);
  }
  Options options(ports);
  const std::string problems = options.Problems();
  for (const char* part : {"The settings", "srch.txt", "IE.txt", "UNFI.txt", "ck.txt"}) {
    EXPECT_NE(problems.find(std::string(part) + " could not be read"), std::string::npos);
  }
  EXPECT_NE(options.lists[1].Add("doc", ""), "");
  EXPECT_NE(options.lists[3].RestoreDefaults(), "");
  EXPECT_EQ(options.lists[0].Add("a.txt", ""), "");
  EXPECT_FALSE(options.Check());
  EXPECT_EQ(std::ranges::count(options.Save(), '\n'), 1);  // the settings
  EXPECT_EQ(ReadProgramFile("IFI.txt"), "a.txt\r\n");

  // Nor is it written when it can be read again: what is shown are defaults.
  ports.files.RemoveFolder(ports.program_folder + "\\Settings.ini");
  WriteSettings("[General]\r\nDelMethod=B\r\n");
  EXPECT_NE(options.Save().find("Please open them again."), std::string::npos);
  EXPECT_EQ(ReadProgramFile("Settings.ini"), "[General]\r\nDelMethod=B\r\n");
}

}  // namespace
}  // namespace quellix
