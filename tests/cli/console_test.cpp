#include "cli/console_fixture.h"
#include "run/known_folders.h"
#include "support/browser_fixture.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

const std::string kLine(67, '-');

TEST_F(ConsoleTest, ItemsAreListedByKey) {
  const ProgramResult result = RunQuellixctl({"items"});
  EXPECT_EQ(result.exit_code, 0);
  const auto of_volumes = std::ranges::count(Split(result.output, '\n'), true,
                                             [](auto& line) { return line.starts_with("Volume"); });
  EXPECT_TRUE(of_volumes == 0 || of_volumes == 7);
  EXPECT_EQ(std::ranges::count(result.output, '\n'), 30 + of_volumes);
  for (const Item& item : AllItems()) {
    EXPECT_NE(result.output.find(std::string("\n") + item.key + " ") != std::string::npos,
              item.run_order == 1)
        << item.key;
  }
  EXPECT_TRUE(Holds(result.output, "Downloaded ActiveX & OCX\n"));
}

TEST_F(ConsoleTest, WrongUsageIsToldWithItsOwnExitCode) {
  const Names kWithoutMachine[] = {{}, {"polish"}, {"clean"}};
  for (const auto& arguments : kWithoutMachine) {
    const ProgramResult result = RunQuellixctl(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_TRUE(Holds(result.output, "required"));
  }
  EXPECT_EQ(RunQuellixctl({"--help"}).exit_code, 0);
  const std::tuple<Names, int, const char*> kRows[] = {
      {{"clean", "--item", "CleanTempFiles", "--method", "burn"}, 2, "burn"},
      {{"clean", "--item", "CleanEverything"}, 2, "there is no item \"CleanEverything\""},
      {{"search", "everything"}, 2, "everything"},
      {{"remove"}, 2, "paths is required"},
      {{"wipe-free", "Scratch"}, 2, "is no drive"},
      {{"wipe-free", "Q:"}, 1, "there is no drive"},
      {{"remove", scratch + "*.txt"}, 2, "there are no wildcards here"},
      {{"remove", "C:"}, 2, "names no file or folder"},
      {{"remove", scratch + "none"}, 3, "There is no such file or folder."},
      {{"search"}, 2, "required"},
      {{"favorites"}, 2, "required"},
      {{"favorites", "list", "--delete", "--bookmarks", "x"}, 2, "excludes"},
      {{"favorites", "list", "--bookmarks", "no such file"}, 1, "cannot be read"},
      {{"search", "unnecessary"}, 1, "no type of unnecessary files is ticked"},
      {{"registry", "shared-dlls", "--thorough"}, 2, "thorough"},
      {{"registry", "everything"}, 2, "everything"},
      {{"plugins", "enable", "none"}, 2, "none"},
      {{"plugins", "enable", "..\\Settings.ini"}, 2, "Settings.ini"},
      {{"recipes", "check"}, 1, "there is no list"},
      {{"recipes", "check", "none.ini"}, 1, "there is no list \"none.ini\""},
      {{"recipes", "process", "none"}, 2, "no list has a recipe \"none\""}};
  WriteOwn("UNFI.txt", "0\x01*.qxj\x01Ours\r\n");
  for (const auto& [arguments, exit_code, told] : kRows) Expect(arguments, exit_code, {told});
}

TEST_F(ConsoleTest, WrongUsageOfBackupsIsToldAndLeavesThem) {
  const std::tuple<Names, int, const char*> kRows[] = {
      {{"backup"}, 2, "subcommand"},
      {{"backup", "restore"}, 2, "ARCHIVE"},
      {{"backup", "restore", "C_010120200000.zip", "--overwrite", "maybe"}, 2, "maybe"},
      {{"backup", "restore", "none.zip"}, 1, "none.zip"},
      {{"backup", "repair", "C_010120200000.zip"}, 1, "is not a zip archive."},
      {{"backup", "list", "..\\Settings.ini"}, 1, "is no archive of the backup folder."},
      {{"backup", "list"}, 1, "is not a zip archive."}};
  const std::string archive = own + "Backup\\C_010120200000.zip";
  machine->MakeFile(archive, "MZ no archive");
  for (const auto& [arguments, exit_code, told] : kRows) Expect(arguments, exit_code, {told});
  EXPECT_EQ(Read(archive), "MZ no archive");
}

TEST_F(ConsoleTest, ACleanRunPrintsItsLogAndRemovesWhatItsPreviewLists) {
  const Names clean = {"clean", "--item", "CleanRunMRU", "chkTemp"};
  Clean("CleanTempFiles");
  machine->MakeFile(temp + "sub\\\xC3\xA9t\xC3\xA9.tmp", "12345");
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  machine->SetText(kUser, kRunMruKey, "a", "cmd");
  machine->SetText(kUser, kTypedUrlsKey, "url1", "http://example.org/");
  const std::string stored = ReadOwn("Settings.ini");
  for (const char* method : {"backup", "wipe"}) {
    const std::string list = "File            " + temp +
                             "sub\\\xC3\xA9t\xC3\xA9.tmp\nFolder          " + temp +
                             "sub\nRegistry value  HKEY_CURRENT_USER\\" + kRunMruKey +
                             ", a\nThe log of such a run:\nTemporary files... Files Deleted: 1";
    Expect(With(clean, {"--preview", "--method", method}), 0,
           {list,
            "\nNothing was changed. A run would remove 1 file (5 Bytes), 1 folder and 1 other "
            "thing.\n"});
    EXPECT_EQ(machine->Tree(temp).size(), 2u);
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 1u);
    EXPECT_EQ(ReadOwn("Settings.ini"), stored);
    EXPECT_FALSE(machine->Exists(own + "Backup"));
  }
  for (const bool again : {false, true}) {
    const ProgramResult result = Run(clean);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(WithoutFreeSpace(result.output),
              std::string("Temporary files... Files Deleted: ") +
                  (again ? "0 Space Gained: 0" : "1 Space Gained: 5") +
                  " Bytes\nWindows run history... Files Deleted: " + (again ? "0" : "1") + "\n\n" +
                  kLine + "\nFiles Deleted:  " +
                  (again ? "0   Space Gained:  0" : "1   Space Gained:  5") + " Bytes\n");
  }
  EXPECT_TRUE(machine->Tree(temp).empty() && machine->ValueNames(kUser, kRunMruKey).empty());
  EXPECT_EQ(machine->ValueNames(kUser, kTypedUrlsKey).size(), 1u);
}

TEST_F(ConsoleTest, APreviewOfFavoritesTellsWhatWouldGoAndChangesNothing) {
  const std::string favorites = KnownFolder(ports, "Favorites").value() + "\\";
  machine->MakeFile(favorites + "a.url", "[InternetShortcut]\r\nURL=http://a.invalid/\r\n");
  machine->MakeFile(favorites + "c.url", "");
  machine->MakeFolder(favorites + "Empty");
  const Names before = machine->Tree(favorites);
  for (const Names& options : {Names{"--preview"}, Names{"--delete", "--preview"}}) {
    Expect(With({"favorites", "list"}, options), 0,
           {"\ta\thttp://a.invalid/\t\n", "File            " + favorites + "c.url\n",
            "Folder          " + favorites + "Empty\n", "A run would remove 1 file (",
            "), 1 folder and 0 other things.\n"});
    EXPECT_EQ(machine->Tree(favorites), before);
  }
  Expect({"favorites", "list", "--preview", "--bookmarks", "x"}, 2, {"excludes"});
  EXPECT_FALSE(Holds(Run({"favorites", "list"}).output, "A run would remove"));
  Expect({"favorites", "list", "--delete"}, 0);
  EXPECT_EQ(machine->Tree(favorites), Names{"a.url"});
  ports.files.RemoveFile(favorites + "a.url");
}

TEST_F(ConsoleTest, NothingIsRemovedWhileTheSettingsCannotBeRead) {
  machine->MakeFile(temp + "a.tmp", "1");
  machine->MakeFile(scratch + "one.qxj", "1");
  WriteOwn("UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  const std::string ini = own + "Settings.ini";
  machine->MakeFolder(ini);
  Expect({"clean", "--item", "CleanTempFiles"}, 1, {"Nothing is removed"});
  Expect({"clean", "--item", "CleanTempFiles", "--preview"}, 1);
  Expect({"search", "unnecessary", "--delete"}, 1);
  Expect({"search", "unnecessary"}, 1);
  EXPECT_TRUE(machine->Exists(temp + "a.tmp") && machine->Exists(scratch + "one.qxj"));
  ports.files.RemoveFolder(ini);
  Expect({"clean", "--item", "CleanTempFiles"}, 0);
  EXPECT_FALSE(machine->Exists(temp + "a.tmp"));
}

TEST_F(ConsoleTest, FilesThatStayAreSaidByTheExitCode) {
  machine->MakeFile(temp + "locked.tmp", "1");
  {
    const auto lock = machine->LockFile(temp + "locked.tmp");
    Expect({"clean", "--item", "CleanTempFiles", "--method", "wipe"}, 3,
           {"Some files were not deleted"});
  }
  Expect({"clean", "--item", "CleanTempFiles", "--method", "recycle"}, 0);
  EXPECT_GE(ports.shell.QueryRecycleBin().items, 1u);
}

TEST_F(ConsoleTest, FindsArePrintedAndRemovedOnlyWhenAsked) {
  machine->MakeFile(scratch + "one.qxj", "12345");
  machine->MakeFile(scratch + "two.QXJ", "");
  WriteOwn("UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  Expect({"search", "unnecessary"}, 0, {scratch + "one.qxj\t5\t", "\tQXJ\tUnnecessary Files\n"});
  EXPECT_TRUE(machine->Exists(scratch + "one.qxj"));
  const auto lock = machine->LockFile(scratch + "two.QXJ");
  Expect({"search", "unnecessary", "--delete", "--json"}, 3,
         {"\"bytes\":5,", "\"removed\":true", "not deleted: " + scratch + "two.QXJ",
          "Files Deleted: 1 Space Gained: 5 Bytes"});
  EXPECT_EQ(machine->Tree(scratch), Names{"two.QXJ"});
}

TEST_F(ConsoleTest, APluginIsCheckedEnabledListedAndProcessed) {
  const std::string folder = own + "Plugins\\", log = scratch + "logs\\a.log";
  machine->MakeFile(log, "123");
  machine->MakeFile(folder + "qx.cdp", "D\x01My logs\r\nF\x01No\x01No\x01" + scratch +
                                           "logs\\*.log\r\nG\x01Mine\r\nW\x01No\x01 nothing\r\n");
  machine->MakeFile(folder + "bad.cdp",
                    "nothing\nF\x01Maybe\x01No\x01%WINDIR%\\*.*\nR\x01Yes\nQ\x01\nT\x01"
                    "File\x01" +
                        scratch + "none\n");
  Expect(
      {"plugins", "check", "qx.cdp"}, 0,
      {"line 1: Description: My logs\nline 2: Removes the files *.log in " + scratch + "logs.\n"});
  Expect({"plugins", "check", "bad"}, 1,
         {"line 1: fault: It has no separator", "line 2: fault: \"Maybe\"", "line 2: fault: ",
          "line 3: fault: It has 2 fields of 5", "line 4: fault: \"Q\" is no kind"});
  for (const auto& [command, tick] : {std::pair("enable", "x"), std::pair("disable", " ")}) {
    Expect({"plugins", command, "QX"}, 0);
    EXPECT_EQ(Run({"plugins", "list"}).output, std::string("[ ] bad.cdp  ; not found here\n[") +
                                                   tick +
                                                   "] qx.cdp  My logs; Mine; costs:  nothing\n");
  }
  Expect({"clean", "--item", "CleanPlugins"}, 0);
  Expect({"plugins", "process", "qx", "none"}, 1);
  EXPECT_TRUE(machine->Exists(log)) << "it is disabled, then one name is wrong";
  EXPECT_EQ(Run({"plugins", "preview", "qx"}).output,
            "File            " + log +
                "\nNothing was changed. A run would remove 1 file (3 Bytes), "
                "0 folders and 0 other things.\n");
  EXPECT_TRUE(machine->Exists(log)) << "a preview removes nothing";
  for (const char* outcome : {"1 Space Gained: 3", "0 Space Gained: 0"}) {
    EXPECT_EQ(Run({"plugins", "process", "qx"}).output,
              std::string("Files Deleted: ") + outcome + " Bytes\n");
  }
}

// A list with an entry that finds a file here.
struct RecipeConsoleTest : ConsoleTest {
  void Keep(const std::string& list) { WriteOwn("Winapp2.ini", list); }
  void ExpectCleans(bool is_cleaned) {
    machine->MakeFile(file, "123");
    Expect({"clean", "--ticked"}, is_cleaned ? 0 : 1);
    EXPECT_EQ(machine->Exists(file), !is_cleaned);
  }
  const std::string file = scratch + "list\\a.log",
                    one = "[One *]\r\nSection=Games\r\nDetectFile=" + scratch +
                          "list\r\nFileKey1=" + scratch + "list|*.log\r\n";
};

TEST_F(RecipeConsoleTest, EntriesAreJudgedListedAndTicked) {
  machine->MakeFile(file, "123");
  Keep(one + "[Two *]\r\nDetectFile=" + scratch + "none\r\nFileKey1=%AppData%\\Qx|key4.db\r\n" +
       "Warning=Careful\r\n[Bad *]\r\nFileKey1=C:|*.*\r\nAuthor=x\r\n[Odd *]\r\n");
  Expect(
      {"recipes", "check"}, 1,
      {"line 9: Bad: refused\n  Author is no key of such a list.\n  C:\\*.* is not cleaned: it is "
       "a whole drive.\n",
       "\n4 entries: 2 carried out whole, 0 in part, 1 refused, 1 not understood.\n"});
  EXPECT_EQ(Run({"recipes", "list"}).output, "[ ] One; Games\n[ ] Bad; Others\n[ ] Odd; Others\n");
  Expect({"recipes", "list", "--all"}, 0,
         {"\n[ ] Two; Others; costs: keys and certificates are lost, with what they protect; its "
          "author warns: Careful; not found here\n"});
  Expect({"recipes", "enable", "onee"}, 2, {"Did you mean \"One\"?"});
  Expect({"recipes", "enable", "one", "Two"}, 0,
         {"Two: this cannot be had again: keys and certificates", "Two: its author warns: Careful",
          "One is carried out once its preview was seen"});
  ExpectCleans(false);
  Keep("");
  Expect({"recipes", "list"}, 0, {"One is ticked and in no list any more.\n"});
}

TEST_F(RecipeConsoleTest, OnlyWhatWasSeenAndAsItWasThenIsCarriedOut) {
  machine->MakeFile(file, "123");
  Keep(one);
  Expect({"recipes", "enable", "One"}, 0);
  Expect({"recipes", "preview", "one", "--json"}, 0);
  ExpectCleans(false);
  Expect({"recipes", "preview", "one"}, 0, {"File            " + file + "\n"});
  EXPECT_TRUE(machine->Exists(file)) << "a preview removes nothing";
  ExpectCleans(true);
  Keep(one + "FileKey2=" + scratch + "list|*.txt\r\n");
  ExpectCleans(false);
  EXPECT_EQ(Run({"recipes", "list"}).output, "[x] One; Games; not seen yet\n");
  Expect({"clean", "--ticked", "--preview"}, 0, {file});
  ExpectCleans(true);
  Expect({"recipes", "disable", "One"}, 0);
  Keep(one);
  machine->MakeFile(file, "123");
  Expect({"recipes", "preview", "One"}, 0);
  Keep(one + "Warning=\tNew\r\n");
  Expect({"recipes", "process", "One"}, 1, {"One is carried out once its preview was seen"});
  Keep(one);
  Expect({"recipes", "process", "One"}, 0, {"Files Deleted: 1 Space Gained: 3 Bytes\n"});
}

struct BackupConsoleTest : ConsoleTest {
  // Cleans two files with a backup; the archive's name.
  std::string CleanTwo() {
    machine->MakeFile(file, "bytes");
    machine->MakeFile(temp + "b.tmp", "more");
    Expect({"clean", "--item", "CleanTempFiles", "--method", "backup"}, 0, {"Backed Up 2 file(s)"});
    EXPECT_FALSE(machine->Exists(file));
    const Names archives = machine->Tree(safe);
    EXPECT_EQ(archives.size(), 1u);
    return archives.empty() ? "none" : archives[0];
  }
  const std::string safe = own + "Backup\\", file = temp + "deep\\a b.tmp";
};

TEST_F(BackupConsoleTest, CleanedFilesAreListedAndRepaired) {
  Expect({"backup", "list"}, 0);  // no backups yet
  const std::string archive = CleanTwo();
  Expect({"backup", "list"}, 0, {archive, "2 file(s)"});
  Expect({"backup", "list", archive}, 0, {file.substr(3)});
  Expect({"backup", "repair", archive}, 0, {"nothing to repair"});
  const std::string bytes = Read(safe + archive);
  ports.files.WriteWholeFile(safe + archive, bytes.substr(0, bytes.size() - 9));
  Expect({"backup", "list"}, 3, {"incomplete: 2 file(s) whole"});
  Expect({"backup", "list", archive}, 3, {"incomplete: 2 file(s) whole"});
  EXPECT_EQ(Read(safe + archive).size(), bytes.size() - 9) << "reading writes nothing";
  Expect({"backup", "repair", archive}, 0, {"2 file(s) whole"});
  EXPECT_EQ(Read(safe + archive).size(), bytes.size());
}

TEST_F(BackupConsoleTest, CleanedFilesAreRestored) {
  const std::string archive = CleanTwo();
  Expect({"backup", "restore", archive, file.substr(3)}, 0);
  EXPECT_EQ(Read(file), "bytes");
  EXPECT_FALSE(machine->Exists(temp + "b.tmp"));
  machine->MakeFile(file, "changed");
  Expect({"backup", "restore", archive, file.substr(3)}, 1, {"nobody could be asked"});
  Expect({"backup", "restore", archive}, 3, {"nobody could be asked"});
  Expect({"backup", "restore", archive, "--overwrite", "never"}, 0);
  EXPECT_EQ(Read(file) + Read(temp + "b.tmp"), "changedmore");
  Expect({"backup", "restore", archive, "--overwrite", "Always"}, 0);
  EXPECT_EQ(Read(file), "bytes");
  Expect({"backup", "restore", archive, "--to", scratch + "new"}, 0);
  EXPECT_EQ(Read(scratch + "new\\" + file.substr(3)), "bytes");
}

using RegistryConsoleTest = Console<RegistryFixture>;

TEST_F(RegistryConsoleTest, ReferencesAreListedDeletedWhenAskedAndRestored) {
  const std::string key = std::string(kComponents) + "\\";
  Set(kMachine, key + "{1}", "", Text("gone"));
  Set(kMachine, key + "{2}", "", Text("here"));
  Set(kMachine, key + "{2}", "IsInstalled", Number(1));
  const RegistryPicture before = PictureOfAll();
  EXPECT_EQ(Run({"registry", "components"}).output,
            "orphaned\tgone\tFalse\t\t{1}\nvalid\there\tTrue\t\t{2}\n2 entries, 1 orphaned\n");
  Expect({"registry", "components", "--json", "--delete"}, 0,
         {"SubKey: {1}\"", "1 entries, 0 orphaned"});
  EXPECT_FALSE(machine->KeyExists(kMachine, key + "{1}"));
  ASSERT_EQ(UndoFiles().size(), 1u);
  Expect({"backup", "list"}, 0, {"1 key(s)"});
  Expect({"backup", "restore", UndoFiles()[0]}, 0);
  EXPECT_EQ(PictureOfAll(), before);

  Set(kUser, "Qx1\\deep", "QxGone", Text(scratch + "gone.txt"));
  const ProgramResult plain = Run({"registry", "file-references"});
  EXPECT_FALSE(Holds(plain.output, "QxGone"));
  Expect({"registry", "file-references", "--thorough"}, 0,
         {"orphaned\tHKEY_CURRENT_USER:Qx1\\deep\\\tQxGone\t" + scratch + "gone.txt\n"});
}

TEST_F(RegistryConsoleTest, StartUpProgramsAreSwitchedAndDeletedByName) {
  constexpr const char* kRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  const std::string approved =
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";
  const auto off = [&](RegistryRoot root) {
    const auto key = ports.registry.Open(root, approved, RegistryAccess::kRead);
    const auto value = key ? key->QueryValue("Qx") : std::nullopt;
    return value && value->bytes[0] == 3;
  };
  for (const RegistryRoot root : {kUser, kMachine}) Set(root, kRun, "Qx", Text("C:\\qx\\gone.exe"));
  Expect({"registry", "startup"}, 0,
         {"orphaned\tQx\tC:\\qx\\gone.exe\t\t\tOn, missing\tRun (user)\t"});
  const WindowsVersion version = ports.system.Version();
  const bool switches = version.major > 6 || (version.major == 6 && version.minor >= 2);
  const char* const switched = switches ? "1 switched off" : "that came with Windows 8";
  const std::string full = "HKEY_LOCAL_MACHINE\\" + std::string(kRun) + "\\Qx";
  const std::tuple<Names, int, const char*> kRows[] = {
      {{"--disable"}, 2, "names"},
      {{"--delete"}, 2, "names"},
      {{"Qx"}, 2, "names"},
      {{"--disable", "--delete", "Qx"}, 2, "exclude"},
      {{"--disable", "Qx nowhere"}, 1, "Nothing that is listed is called Qx nowhere."},
      {{"--disable", "qx"}, 1, "is there more than once"},
      {{"--disable", full, "--preview"}, switches ? 0 : 1, switched}};
  for (const auto& [rest, code, told] : kRows) {
    Names arguments{"registry", "startup"};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    Expect(arguments, code, {told});
    EXPECT_FALSE(off(kMachine) || off(kUser));
  }
  Expect({"registry", "startup", "--disable", full}, switches ? 0 : 1, {switched});
  EXPECT_TRUE(off(kMachine) == switches && !off(kUser));
  const char* const already = switches ? "Qx is so already" : switched;
  Expect({"registry", "startup", "--disable", full}, switches ? 0 : 1, {already});
  Expect({"registry", "startup", "--enable", full, "--json"}, 0, {"orphaned"});
  EXPECT_FALSE(off(kMachine));
  Expect({"registry", "startup", "--delete", full}, 0, {"kept in "});
  EXPECT_TRUE(machine->ValueNames(kMachine, kRun).empty() ||
              !std::ranges::count(machine->ValueNames(kMachine, kRun), "Qx"));
  const auto user = ports.registry.Open(kUser, kRun, RegistryAccess::kWrite);
  EXPECT_TRUE(user->DeleteValue("Qx"));
  if (const auto key = ports.registry.Open(kMachine, approved, RegistryAccess::kWrite))
    key->DeleteValue("Qx");
}

using BrowserConsoleTest = Console<BrowserFixture>;

TEST_F(BrowserConsoleTest, BrowsersAreListedWithTheirCostsAndCleanedByName) {
  Expect({"browsers", "list"}, 0);
  const std::string profile = chrome + "\\Default", data = profile + "\\Web Data";
  machine->MakeFile(profile + "\\Preferences", "{}");
  machine->MakeFile(profile + "\\Cache\\f_1", "x");
  MakeDatabase(data,
               "CREATE TABLE autofill(name, value); INSERT INTO autofill VALUES('a', 'typed')");
  Expect({"browsers", "list"}, 0, {"chrome:cache", "Google Chrome", "saved passwords are lost"});
  Expect({"browsers", "clean", "chrome:fo"}, 2, {"Did you mean \"chrome:forms\"?"});
  Expect({"browsers", "clean", "opera"}, 2, {"there is no browser \"opera\" here."});
  const Picture before = PictureOf(chrome);
  Expect(
      {"browsers", "clean", "chrome", "chrome:forms", "--preview"}, 0,
      {"Database rows   " + data + ", form entries", "f_1", "1 file (1 Bytes)", "1 other thing"});
  EXPECT_EQ(PictureOf(chrome), before);
  Expect({"browsers", "clean", "chrome"}, 0,
         {"Google Chrome, Cache... Rows Deleted: 0 Files Deleted: 1"});
  EXPECT_TRUE(!machine->Exists(profile + "\\Cache\\f_1") && IsIn(AllBytes(profile), "typed"));
  {
    machine->MakeFile(chrome + "\\lockfile", "");
    const auto lock = machine->LockFile(chrome + "\\lockfile");
    Expect({"browsers", "clean", "chrome:forms"}, 3, {"lockfile"});
  }
  Expect({"browsers", "clean", "Chrome:Forms"}, 0, {"Saved form information... Rows Deleted: 1"});
  EXPECT_FALSE(IsIn(AllBytes(profile), "typed"));
}

}  // namespace
}  // namespace quellix
