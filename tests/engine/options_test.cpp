#include "app/options.h"

#include "app/explorer_menu.h"
#include "registry_tools/mod_registry.h"
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

struct OptionsTest : RunFixture {
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
  Names ProgramFolder() { return machine->Tree(ports.program_folder); }

  const std::string home = own + "Backup\\";
};

TEST_F(OptionsTest, ANewUsersFilesAreWrittenToTheByte) {
  Options options(ports);
  EXPECT_EQ(options.Problems(), "");
  EXPECT_TRUE(!options.Check() && ProgramFolder().empty());
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadOwn("Settings.ini"), DefaultSettings(home));
  EXPECT_EQ(RunEntryText(), "<missing>");
  // Lists that nobody changed stay with their defaults.
  EXPECT_EQ(ProgramFolder(), (Names{"Settings.ini", "srch.txt"}));

  GeneralOptions& general = options.general;
  general.start_with_windows = general.startup_clean = general.auto_clean = true;
  general.protect1 = general.protect2 = general.tray_icon = true;
  general.extra_security = general.rename = general.Strict = general.KeepOnAbort = true;
  options.general.typed_duration = " 45 ";
  options.general.hours = 0;
  options.general.tip_box = false;
  options.general.RemovalMode = kBackUp;
  options.general.WipeStep = 65536;
  options.general.BackupFolder = "C:\\Säfe";
  options.general.BackupRegistry = false;
  ASSERT_FALSE(options.Check());
  EXPECT_EQ(options.Save(), "");
  const std::string all =
      "[General]\r\nStartupClean=1\r\nAutoClean=1\r\nHM=0\r\nDuration=45\r\nDelMethod=B\r\n"
      "ExtraS=1\r\nRename=1\r\nProtect1=1\r\nProtect2=1\r\nTipBox=0\r\nTrayIcon=1\r\n"
      "WipeStep=65536\r\n[Backup]\r\nPath=C:\\Säfe\\\r\nStrict=1\r\nKeepOnAbort=1\r\n"
      "Registry=0\r\n";
  EXPECT_EQ(ReadOwn("Settings.ini"), all);
  EXPECT_EQ(RunEntryText(), "\"" + own + "quellix.exe\" -S" + std::string(1, '\0'));
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadOwn("Settings.ini"), all);
  engine.ApplyGeneralSettings();
  EXPECT_EQ(engine.preferences().IntervalMinutes(), 45);
  EXPECT_TRUE(engine.preferences().protect1 && !engine.preferences().tip_box);
  for (const char* key : {"CleanEmptyFiles", "CleanShortcuts"})
    EXPECT_FALSE(Holds(engine.selection().WhyDisabled(*FindItem(key)), "Options"));
}

TEST_F(OptionsTest, KeysItDoesNotKnowAndTheirPlacesStay) {
  WriteSettings(
      "; mine\r\n[Backup]\r\nOverwrite=Newer\r\n[General]\r\nother = 1\r\nTipBox=0\r\n"
      "WipeStep=4096\r\n[CleanUp]\r\nLastCleaned=x\r\n");
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadOwn("Settings.ini"),
            "; mine\r\n[Backup]\r\nOverwrite=Newer\r\nPath=" + home +
                "\r\n[General]\r\nother = 1\r\nTipBox=0\r\nWipeStep=4096\r\nStartupClean=0\r\n"
                "AutoClean=0\r\nHM=1\r\nDuration=1\r\nDelMethod=D\r\nExtraS=0\r\nRename=0\r\n"
                "Protect1=0\r\nProtect2=0\r\n[CleanUp]\r\nLastCleaned=x\r\n");
}

TEST_F(OptionsTest, GarbageInTheSettingsIsShownAsWhatItMeans) {
  const std::tuple<const char*, const char*, bool> kRows[] = {
      {"Duration=soon\nHM=x", "1", true},
      {"Duration=-7\nHM=-1", "-7", false},
      {"Duration=65537\nHM=70000", "1", true},
      {"Duration= 9 \nHM= 0 ", "9", false},
      {"Duration=", "1", true}};
  for (const auto& [general, duration, in_hours] : kRows) {
    WriteSettings(std::string("[General]\n") + general);
    const GeneralOptions got = LoadGeneralOptions(ports);
    EXPECT_EQ(got.typed_duration, duration) << general;
    EXPECT_EQ(got.InHours(), in_hours) << general;
  }
}

TEST_F(OptionsTest, DurationsOutOfRangeAreRefusedWithASentence) {
  // In hours or minutes, and whether it is taken.
  const std::tuple<int, const char*, bool> kRows[] = {
      {1, "546", true},    {1, "547", false}, {0, "32767", true},
      {0, "32768", false}, {0, "0", false},   {0, "99999999999999999999", false},
      {0, "-1", false},    {1, "1.5", false}, {1, "1e2", false},
      {1, "one", false},   {1, " ", false}};
  Options options(ports);
  for (const bool automatic : {true, false}) {
    options.general.auto_clean = automatic;
    for (const auto& [hours, duration, is_taken] : kRows) {
      SCOPED_TRACE(duration);
      options.general.hours = static_cast<uint8_t>(hours);
      options.general.typed_duration = duration;
      const std::optional<Refusal> refusal = options.Check();
      ASSERT_EQ(!refusal, is_taken || !automatic);
      if (!refusal) continue;
      EXPECT_TRUE(
          Holds(refusal->sentence, hours ? "hours from 1 to 546." : "minutes from 1 to 32767."));
      EXPECT_EQ(PageOf(refusal->field), OptionsPage::kGeneral);
    }
  }
  options.general = LoadGeneralOptions(ports);
  options.general.typed_duration = "one";
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadOwn("Settings.ini"), DefaultSettings(home));
  WriteSettings("[General]\r\nDuration=9\r\n");
  Options unused(ports);
  unused.general.typed_duration = "";
  EXPECT_EQ(unused.Save(), "");
  EXPECT_EQ(LoadGeneralOptions(ports).typed_duration, "9");
}

TEST_F(OptionsTest, BackupFoldersThatCannotBeAreRefusedWithASentence) {
  const std::string long_name(250, 'a');
  const std::pair<const char*, Names> kRows[] = {
      {"choose the folder", {"  "}},
      {"full path", {"Backup", "\\Backup", "C:Backup", "\\\\.\\C:\\x", "\\\\server\\"}},
      {"cannot hold", {"C:\\a*", "C:\\a\"b"}},
      {"no name", {"C:\\a\\..\\b", "C:\\a\\\\b"}},
      {"longer than", {"C:\\a" + long_name}},
      {"It holds ", {"c:\\", std::string(FolderPart(WithoutBackslash(temp)))}},
      {"folder of Windows", {ports.system.WindowsFolder() + "\\b"}},
      {"which is cleaned", {temp, UpCase(temp) + "b"}},
      {"C:\\Mine, which is cleaned", {"C:\\Mine\\b"}},
      {"", {"\\\\server\\share\\x", "C:\\" + long_name, "Q:\\b", "C:\\Mines"}}};
  Options options(ports);
  EXPECT_EQ(options.lists.back().Add("C:\\Mine", ""), "");
  const auto expect = [&](const std::string& folder, std::string_view sentence) {
    options.general.BackupFolder = folder;
    const std::optional<Refusal> refusal = options.Check();
    ASSERT_EQ(refusal.has_value(), !sentence.empty()) << folder;
    if (!refusal) return;
    EXPECT_TRUE(Holds(refusal->sentence, sentence)) << folder;
    EXPECT_EQ(PageOf(refusal->field), OptionsPage::kDeletion);
  };
  for (const auto& [sentence, folders] : kRows) {
    for (const std::string& folder : folders) expect(folder, sentence);
  }
  options.general.RemovalMode = kBackUp;  // now it is used
  expect("Q:\\b", "no drive Q:");
}

TEST_F(OptionsTest, StartingWithWindowsRepairsAndRemovesTheEntry) {
  const std::string ours = "\"" + own + "quellix.exe\" -S";
  const std::tuple<const char*, RegistryValue, RunValue> rows[] = {
      {"ours", {kRegSz, ToUtf16Bytes(ours) + std::string(2, '\0')}, RunValue::kOurs},
      {"other case, no NUL", {kRegSz, ToUtf16Bytes(UpCase(ours))}, RunValue::kOurs},
      {"another program", {kRegSz, ToUtf16Bytes("C:\\other.exe")}, RunValue::kChanged},
      {"no switch", {kRegSz, ToUtf16Bytes(ours.substr(0, ours.size() - 3))}, RunValue::kChanged},
      {"no text", {kRegDword, std::string(4, '\1')}, RunValue::kChanged},
      {"empty", {kRegSz, ""}, RunValue::kChanged}};
  for (const auto& [name, value, entry] : rows) {
    SCOPED_TRACE(name);
    machine->SetRegistryValue(kUser, kRunKey, "Quellix", value);
    EXPECT_EQ(LookAtRunValue(ports), entry);
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

// The entry in Explorer's menus: what is there before, and whether that is ours.
TEST_F(OptionsTest, ExplorersMenuIsMadeRepairedAndTakenAwayWithNothingLeft) {
  const std::string classes = "Software\\Classes\\", verb = "\\shell\\Quellix.Remove";
  const auto is_there = [&](const std::string& key) {
    return machine->KeyExists(kUser, classes + key);
  };
  for (const char* key : {"*", "Directory"}) machine->RemoveRegistryTree(kUser, classes + key);
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_FALSE(is_there("*")) << "nobody wanted it";
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"missing", [] {}},
      {"of another folder",
       [&] {
         machine->SetText(kUser, classes + "*" + verb + "\\command", "", "\"C:\\q.exe\" \"%1\"");
       }},
      {"of files alone", [&] { machine->RemoveRegistryTree(kUser, classes + "Directory" + verb); }},
      {"with more in it",
       [&] { machine->SetText(kUser, classes + "*" + verb + "\\DropTarget", "CLSID", "{1}"); }}};
  for (const auto& [row, change] : kRows) {
    SCOPED_TRACE(row);
    change();
    Options options(ports);
    EXPECT_EQ(options.general.explorer_menu, is_there("*" + verb));
    options.general.explorer_menu = true;
    EXPECT_EQ(options.Save(), "");
    EXPECT_TRUE(LookAtExplorerMenu(ports) == ExplorerMenu::kOurs);
    const auto key = ports.registry.Open(kUser, classes + "Directory" + verb + "\\command",
                                         RegistryAccess::kRead);
    EXPECT_EQ(modRegistry::ReadText(*key, ""), "\"" + own + "quellix.exe\" --remove \"%1\"");
  }
  machine->SetText(kUser, classes + "Directory\\shell\\Other", "", "stays");
  for (int time = 0; time < 2; ++time) {
    Options options(ports);
    options.general.explorer_menu = false;
    EXPECT_EQ(options.Save(), "");
    EXPECT_FALSE(is_there("*") || is_there("Directory" + verb));
    EXPECT_TRUE(is_there("Directory\\shell\\Other"));
  }
  machine->RemoveRegistryTree(kUser, classes + "Directory");
}

TEST_F(OptionsTest, WhoWantsTheDiskLookedAfterGetsTheIconThatItNeeds) {
  // What is stored; nothing where it is refused.
  const std::tuple<const char*, bool, std::optional<int16_t>> kRows[] = {
      {"0", false, 0},   {" 50 ", true, 50}, {"7", true, 7}, {"some", false, {}},
      {"51", false, {}}, {"-1", false, {}},  {"", false, {}}};
  for (const auto& [text, brings_icon, stored] : kRows) {
    SCOPED_TRACE(text);
    Options options(ports);
    options.general.tray_icon = false;
    TypeLowDisk(options.general, text);
    EXPECT_EQ(options.general.tray_icon, brings_icon);
    const std::optional<Refusal> refusal = options.Check();
    EXPECT_EQ(!refusal, stored.has_value());
    if (refusal) {
      EXPECT_TRUE(refusal->field == OptionsField::kLowDisk && Holds(refusal->sentence, "0 to 50"));
    } else {
      EXPECT_EQ(options.Save(), "");
      EXPECT_EQ(settings.Load().low_disk, stored);
    }
    TypeLowDisk(options.general, "0");
    EXPECT_EQ(options.general.tray_icon, brings_icon) << "it may stay";
  }
  Options options(ports);
  TypeLowDisk(options.general, "7");
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(settings.Load().LowDiskPercent(), 7);
  TakeTrayIcon(options.general, false);
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(settings.Load().low_disk, 0);
  TakeTrayIcon(options.general, true);
  EXPECT_EQ(options.general.typed_low_disk, "0");
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
  EXPECT_EQ(ReadOwn("srch.txt"), defaults);
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
  EXPECT_EQ(ReadOwn("srch.txt"), changed);
  EXPECT_EQ(Options(ports).Save(), "");
  EXPECT_EQ(ReadOwn("srch.txt"), changed);
}

TEST_F(OptionsTest, DatesAndSizesThatCannotBeAreRefused) {
  Options options(ports);
  SearchOptions& search = options.search.options;
  search.date = 1;
  search.second_date = search.first_date = {.year = 2001, .month = 2, .day = 3};
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
  EXPECT_TRUE(Holds(ReadOwn("srch.txt"), " 1000\r\n"));
}

TEST_F(OptionsTest, AnUnpluggedDriveStaysChosenAndGarbageNamesNone) {
  WriteOwn("srch.txt", " q: Removable drive c: Hard drive Q:  1: ?: :rest\r\n1 1\r\n");
  Options options(ports);
  std::string ticked;
  for (const DriveRow& row : options.search.drives) ticked += row.ticked ? row.entry + "|" : "";
  EXPECT_EQ(ticked, options.search.drives[0].entry + "|Q: The root directory does not exist|");
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(LoadSearchOptions(ports).drives,
            " " + options.search.drives[0].entry + " Q: The root directory does not exist");
  for (DriveRow& row : options.search.drives) row.ticked = false;
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadOwn("srch.txt").substr(0, 5), "\r\n1 1");
}

TEST_F(OptionsTest, AFailedWriteIsToldAndLosesNothing) {
  WriteSettings("[General]\r\nTipBox=0\r\n");
  WriteOwn("UDFI.txt", "C:\\a.txt\r\n");
  machine->SetText(kUser, kRunKey, "Quellix", "changed");
  Options options(ports);
  options.general.tip_box = true;
  OptionList& files = options.lists[4];
  ASSERT_EQ(files.Add("C:\\b.txt", ""), "");
  {
    [[maybe_unused]] const auto locks = {machine->LockFile(own + "Settings.ini"),
                                         machine->LockFile(own + "UDFI.txt")};
    const auto denied = machine->DenyRegistryWrites(kUser, kRunKey);
    const std::string problems = options.Save();
    for (const char* part :
         {"Starting with Windows could not be saved. ", "The settings could not be saved. ",
          "User-defined files could not be saved. "})
      EXPECT_TRUE(Holds(problems, part));
    EXPECT_EQ(std::ranges::count(problems, '\n'), 3) << problems;
  }
  EXPECT_EQ(ReadOwn("Settings.ini"), "[General]\r\nTipBox=0\r\n");
  EXPECT_EQ(ReadOwn("UDFI.txt"), "C:\\a.txt\r\n");
  EXPECT_EQ(options.Save(), "");
  EXPECT_EQ(ReadOwn("UDFI.txt"), "C:\\a.txt\r\nC:\\b.txt\r\n");
  EXPECT_TRUE(LoadGeneralOptions(ports).tip_box);
  EXPECT_EQ(LookAtRunValue(ports), RunValue::kOurs);
}

TEST_F(OptionsTest, WhatCannotBeReadIsToldAndNotWritten) {
  for (const char* name : {"Settings.ini", "srch.txt", "IE.txt", "UNFI.txt", "ck.txt"})
    machine->MakeFolder(own + name);
  Options options(ports);
  const std::string problems = options.Problems();
  for (const char* part : {"The settings", "srch.txt", "IE.txt", "UNFI.txt", "ck.txt"})
    EXPECT_TRUE(Holds(problems, std::string(part) + " could not be read"));
  EXPECT_NE(options.lists[1].Add("doc", ""), "");
  EXPECT_NE(options.lists[3].RestoreDefaults(), "");
  EXPECT_EQ(options.lists[0].Add("a.txt", ""), "");
  EXPECT_FALSE(options.Check());
  EXPECT_EQ(std::ranges::count(options.Save(), '\n'), 1);  // the settings
  EXPECT_EQ(ReadOwn("IFI.txt"), "a.txt\r\n");

  // Nor is it written when it can be read again: what is shown are defaults.
  ports.files.RemoveFolder(own + "Settings.ini");
  WriteSettings("[General]\r\nDelMethod=B\r\n");
  EXPECT_TRUE(Holds(options.Save(), "Please open them again."));
  EXPECT_EQ(ReadOwn("Settings.ini"), "[General]\r\nDelMethod=B\r\n");
}

}  // namespace
}  // namespace quellix
