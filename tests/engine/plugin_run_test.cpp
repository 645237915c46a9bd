#include "plugins/mod_plugin.h"

#include "platform/path.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_collector.h"
#include "plugins/plugin_list.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_keys.h"
#include "support/forwarding_files.h"
#include "support/plugin_fixture.h"

namespace quellix {
namespace {

struct PluginRunTest : PluginFixture {
  std::string CleanPluginsLog() {
    Clean("CleanPlugins");
    EXPECT_TRUE(view.criticals.empty());
    const std::string log = engine.state().RunLog.substr(0, engine.state().RunLog.find("\r\n---"));
    return log.substr(0, log.size() - (log.empty() ? 0 : 2));
  }
  // Runs one recipe as a run does; the log is all it says before its line.
  std::string CleanBy(const std::string& recipe) {
    WriteRecipe("one.cdp", recipe);
    WriteList("1|one.cdp|\r\n");
    return CleanPluginsLog();
  }
  // Records, each with part of the reason why it is refused; each is told by itself.
  void ExpectRefused(const std::vector<std::pair<std::string, std::string>>& records) {
    std::string recipe;
    for (const auto& [record, why] : records) recipe += record + "\r\n";
    const auto remarks = modPlugin::CheckPlugin(ports, "\r\n" + Text(recipe));
    std::string log = CleanBy(recipe);
    ASSERT_EQ(remarks.size(), records.size()) << log;
    for (size_t i = 0; i < records.size(); ++i) {
      SCOPED_TRACE(records[i].first);
      EXPECT_TRUE(remarks[i].is_fault);
      EXPECT_EQ(remarks[i].line, i + 2);
      EXPECT_TRUE(Holds(remarks[i].text, records[i].second));
      ASSERT_TRUE(Holds(log, remarks[i].text));
      log.erase(log.find(remarks[i].text), remarks[i].text.size());
    }
    EXPECT_FALSE(Holds(log, " is not cleaned: "));
  }
};

// By whoever may rename what lies above it.
TEST_F(PluginRunTest, AFolderIsJudgedAsItIsHeldOpenAndNotOpenedByItsPathAgain) {
  MakeFiles(scratch, "harmless\\kept");
  int opened = 0;
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    const bool is_other = path == scratch + "harmless\\";
    if (is_other) ++opened;
    return is_other ? ports.files.OpenFolder(plugins_folder) : std::move(folder);
  });
  const Machine swapped = WithFiles(ports, files);
  CleaningContext swapped_context{swapped, settings, engine.state(), view, mod_zip};
  WriteRecipe("dear.cdp", "the program's own");
  modPlugin::RunRecords(swapped_context, modPlugin::ParsePlugin(Text("\r\nF|Yes|Yes|" + scratch +
                                                                     "harmless\\*.*\r\n")));
  EXPECT_EQ(opened, 1);
  EXPECT_TRUE(machine->Exists(plugins_folder + "dear.cdp"));
  EXPECT_TRUE(Holds(engine.state().RunLog, "it belongs to this program"));
}

TEST_F(PluginRunTest, SixKindsOfRecordsRemoveExactlyWhatTheyName) {
  MakeFiles(
      scratch,
      "all\\a.txt all\\sub\\b all\\sub\\deep\\c logs\\d.LOG logs\\kept.txt logs\\sub\\kept.log "
      "tree\\sub\\e.tmp tree\\sub\\kept.txt tree\\emptied\\f.tmp unticked\\kept",
      "12");
  machine->MakeFile(scratch + "ini\\a.ini",
                    "[Keep]\r\nk=1\r\n[Gone]\r\nx=1\r\n;n\r\n[Other]\r\n"
                    "; k\r\nK = 2\r\nl=3\r\n");
  for (const char* key : {"\\tree", "\\tree\\sub\\deep", "\\kept"}) {
    machine->SetText(kUser, std::string(kKey) + key, "v", "x");
    machine->SetText(kUser, std::string(kKey) + key, "w", "x");
  }
  const std::string ini = "|" + scratch + "ini\\\r\n";
  const std::string key = std::string("HKEY_CURRENT_USER\\") + kKey;
  WriteRecipe("six.cdp", "R|Yes|No|" + key + "\\tree|v\r\nR|No|No|" + key + "\\kept|v\r\n" +
                             "F|Yes|Yes|" + scratch + "all\\*.*\r\nF|No|No|" + scratch +
                             "logs\\*.log\r\nF|Yes|No|" + scratch + "tree\\*.TMP\r\nF|Yes|No|" +
                             scratch + "tree\\sub\\*.t*p\r\nI|a.ini|gone|Yes|" + ini +
                             "I|a.ini|Other|No|k" + ini + "I|none.ini|a|No|k" + ini);
  WriteRecipe("off.cdp", "F|Yes|Yes|" + scratch + "unticked\\*.*\r\n");
  WriteList("1|six.cdp|six\r\n0|off.cdp|\r\n1|missing.cdp|\r\n");
  for (const bool again : {false, true}) {
    const auto lock = again ? machine->DenyRegistryWrites(kUser, kKey) : nullptr;
    EXPECT_EQ(CleanPluginsLog(), std::string("Plugins... Files Deleted: ") +
                                     (again ? "0 Space Gained: 0" : "6 Space Gained: 12") +
                                     " Bytes");
    EXPECT_FALSE(engine.state().SomeFilesLocked);
    EXPECT_EQ(machine->Tree(scratch),
              (Names{"all\\", "ini\\", "ini\\a.ini", "logs\\", "logs\\kept.txt", "logs\\sub\\",
                     "logs\\sub\\kept.log", "tree\\", "tree\\emptied\\", "tree\\sub\\",
                     "tree\\sub\\kept.txt", "unticked\\", "unticked\\kept"}));
    EXPECT_EQ(ports.files.ReadWholeFile(scratch + "ini\\a.ini"),
              "[Keep]\r\nk=1\r\n[Other]\r\n; k\r\nl=3\r\n");
    EXPECT_FALSE(machine->KeyExists(kUser, std::string(kKey) + "\\tree"));
    EXPECT_EQ(machine->ValueNames(kUser, std::string(kKey) + "\\kept"), (Names{"w"}));
  }
}

// Records, each with a part of the reason why it is refused.
struct Refusals {
  void Add(const std::string& why, const std::string& begin, const Names& places,
           const std::string& end = "\\qx-none") {
    for (const std::string& place : places) records.emplace_back(begin + place + end, why);
  }
  std::vector<std::pair<std::string, std::string>> records;
};

TEST_F(PluginRunTest, WhatNobodyMayCleanIsRefusedWithALine) {
  System& system = ports.system;
  const std::string windows = system.WindowsFolder(), drive = windows.substr(0, 2);
  const std::string profile = system.Environment("USERPROFILE").value();
  const std::string users(FolderPart(profile)),
      programs = system.Environment("ProgramFiles").value();
  const std::string shared = "\\\\localhost\\" + drive.substr(0, 1) + "$" + windows.substr(2);
  Refusals refusals;
  refusals.Add("whole drive", "F|No|No|",
               {drive, "%windir%", "%WINDIR%\\", "%WINDIR%. ", "%SYSDIR%", "%WINDIR%\\syswow64",
                "\\\\localhost\\C$", shared, "\\\\127.0.0.1\\admin$\\system32", "\\\\server\\share",
                machine->ShortName(windows)});
  refusals.Add("whole drive", "F|Yes|No|",
               {"%windir%", "%PROGDIR%", "%USERPROFILE%", users + "Somebody Else",
                machine->ShortName(programs)});
  refusals.Add("full path", "F|No|No|",
               {drive + "\\\\.", profile + "\\..", "Temp", "*:\\Temp", "\\\\*\\share\\a",
                drive + "\\T>", "\"" + drive + "\\Temp", "\\\\?\\C:", "\\\\.\\C:"});
  refusals.Add("has no value", "F|No|No|", {"%NO_SUCH%\\a"});
  refusals.Add("full path", "", {"F|No|No|qx-none", "I|a.ini|s|Yes||"}, "");
  refusals.Add("has no value", "I|a.ini|s|Yes||", {"%NO_SUCH%\\"}, "");
  for (const std::string& folder :
       {users + "Somebody Else", windows + "\\SysWOW64", windows + "\\System32", programs})
    machine->MakeFolder(folder);
  ExpectRefused(refusals.records);
  EXPECT_EQ(CleanBy("F|No|No|%USERPROFILE%\\qx-none\r\n"),
            "Plugins... Files Deleted: 0 Space Gained: 0 Bytes");
}

TEST_F(PluginRunTest, RootsAndTheirBranchesAreRefusedWithALine) {
  Refusals refusals;
  refusals.Add("main branches", "R|Yes|No|HKEY_",
               {"CURRENT_USER", "CURRENT_USER\\", "CURRENT_USER\\\\Quellix Branch\\",
                "USERS\\S-1-5-18\\Software"},
               "|");
  refusals.Add("main branches", "R|No|No|", {"HKEY_CURRENT_USER\\Quellix Branch"}, "|v");
  refusals.Add("no known root", "R|Yes|No|", {"HKCU\\Software\\x", "hkey_users\\a\\b", ""}, "|");
  refusals.Add("below that root", "R|Yes|No|", {"HKEY_DYN_DATA\\a\\b"}, "|");
  machine->SetText(kUser, "Quellix Branch", "v", "x");
  ExpectRefused(refusals.records);
  EXPECT_EQ(machine->ValueNames(kUser, "Quellix Branch").size(), 1u);
  machine->RemoveRegistryTree(kUser, "Quellix Branch");
}

TEST_F(PluginRunTest, ARootKeyIsKnownByAllItsNames) {
  const Names kRefused = Split(
      "HKEY_CURRENT_USER\\SOFTWARE\\classes/HKEY_CURRENT_USER\\Software\\\\Classes\\.txt\\/"
      "HKEY_LOCAL_MACHINE\\Software\\Classes/HKEY_LOCAL_MACHINE\\Software\\Classes\\CLSID/"
      "HKEY_LOCAL_MACHINE\\Software\\Wow6432Node/"
      "HKEY_LOCAL_MACHINE\\Software\\Wow6432Node\\Classes\\CLSID/"
      "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet/"
      "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\Software/"
      "HKEY_CURRENT_CONFIG\\Software/HKEY_USERS\\S-1_Classes\\CLSID/HKEY_USERS\\S-1\\Software/"
      "HKEY_USERS\\S-1\\Software\\Classes\\CLSID",
      '/');
  for (const std::string& key : kRefused) {
    const auto place = modPlugin::FindKeys(ports.registry, {true, true, key, ""}).at(0);
    EXPECT_FALSE(place.root) << key;
    EXPECT_TRUE(Holds(place.refusal.english, "is not cleaned")) << key;
  }
  const std::pair<const char*, const char*> kTaken[] = {
      {"HKEY_CURRENT_USER\\Software\\Qx", "Software\\Qx"},
      {"HKEY_CURRENT_USER\\Software\\Classes\\Qx\\MRU", "Software\\Classes\\Qx\\MRU"},
      {"HKEY_LOCAL_MACHINE\\Software\\\\Qx\\", "Software\\Qx"},
      {"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Qx", "SYSTEM\\CurrentControlSet\\Qx"},
      {"HKEY_USERS\\S-1\\Software\\Qx", "S-1\\Software\\Qx"},
      {"HKEY_CURRENT_CONFIG\\Software\\Qx",
       "SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\Software\\Qx"}};
  for (const auto& [gone_key, subkey] : kTaken) {
    const auto place = modPlugin::FindKeys(ports.registry, {true, true, gone_key, ""}).at(0);
    EXPECT_TRUE(place.root) << gone_key;
    EXPECT_EQ(place.subkey, subkey);
  }
}

TEST_F(PluginRunTest, VariablesAreReplacedInTheirOrder) {
  machine->SetText(kUser, "Environment", "QxEmpty", "");
  System& system = ports.system;
  const std::string windows = system.WindowsFolder();
  const std::pair<const char*, std::string> kRows[] = {
      {"%WinDir%\\a%WINDIR%", windows + "\\a" + windows},
      {"%sysdir%", system.SystemFolder()},
      {"%PROGDIR%\\x", system.Environment("ProgramFiles").value() + "\\x"},
      {"%LocalAppData%\\x", system.Environment("LOCALAPPDATA").value() + "\\x"},
      {"50% off", "50% off"},
      {"%NO_SUCH%\\%WINDIR%", ""},
      {"%QxEmpty%\\x", ""}};
  for (const auto& [text, expected] : kRows)
    EXPECT_EQ(modPlugin::ExpandPluginPath(ports, text), expected) << text;
}

TEST_F(PluginRunTest, TheListDropsWhatIsNotInTheFolder) {
  WriteRecipe("a.cdp", "D|x\r\n");
  WriteRecipe("b.cdp", "D|x\r\n");
  WriteOwn("out.cdp", Text("D|x\r\n"));
  machine->MakeFolder(plugins_folder + "folder.cdp");
  WriteList(
      "\r\nno separator\r\n0|a.cdp|first|more\r\n 1.0|A.CDP|again\r\n1|..\\out.cdp|\r\n"
      "1|.. \\out.cdp|\r\n1|\\b.cdp|\r\n1|folder.cdp|\r\n1|gone.cdp|\r\n1||\r\nyes|b.cdp\r\n");
  const auto plugins = modPlugin::ReadPluginList(ports);
  modPlugin::WritePluginList(ports, plugins);
  EXPECT_EQ(ReadOwn("plg.txt"), Text("1|a.cdp|first\r\n0|b.cdp|\r\n"));
}

TEST_F(PluginRunTest, BadRecipesHarmNothingAndStopDoesStop) {
  EXPECT_EQ(CleanPluginsLog(), "Plugins: nothing of this kind was found. No plug-in is ticked.");
  for (const char* name : {"a", "b"}) machine->MakeFile(scratch + "gr\xC3\xBCn\\" + name, "1");
  WriteRecipe("huge.cdp", std::string((16u << 20) + 1, 'x'));
  WriteRecipe("empty.cdp", "");
  WriteRecipe("ansi.cdp", "F|No|No|" + scratch + "gr\xFCn\\*.*\r\n");
  WriteList("1|huge.cdp|\r\n1|empty.cdp|\r\n1|ansi.cdp|\r\n");
  StopWhenStatusBegins("Deleting file: ");
  CleanPluginsLog();
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
  EXPECT_EQ(machine->Tree(scratch).size(), 2u) << "the folder and one of its files";
  view.on_status = nullptr;
  const std::string log = CleanPluginsLog();
  EXPECT_TRUE(Holds(log, "\\plugins\\huge.cdp: "));
  EXPECT_TRUE(log.ends_with("Plugins... Files Deleted: 1 Space Gained: 1 Bytes")) << log;
}

TEST_F(PluginRunTest, OddRecipesAreReadAsWindowsWouldReadThem) {
  const std::string file = scratch + "in\\a.txt", f = "F|No|No|";
  const std::string drive = scratch.substr(0, 3), rest = scratch.substr(3) + "in\\";
  const std::tuple<const char*, std::string, bool> kRows[] = {
      {"byte-order mark", "\xEF\xBB\xBF" + f + file, true},
      {"several backslashes", f + drive + "\\\\" + rest + "\\a.*", true},
      {"slashes", f + ReplaceNoCase(scratch, "\\", "/") + "in\\a.txt", true},
      {"blanks and dots at the end", f + scratch + "in. .\\A.TXT", true},
      {"quotes around the name", f + scratch + "in\\\"a.txt\"", false},
      {"a percent sign", f + scratch + "in\\%a.txt", false},
      {"two percent signs in the mask", f + scratch + "in\\%TEMP%", false},
      {"no mask", f + scratch + "in\\", false},
      {"UTF-16", std::string("\xFF\xFE") + ReplaceNoCase(f + file, "|", std::string("|\0", 2)),
       false}};
  for (const auto& [what, recipe, goes] : kRows) {
    SCOPED_TRACE(what);
    machine->MakeFile(file, "1");
    const std::string log = CleanBy(recipe);
    EXPECT_EQ(machine->Exists(file), !goes) << log;
    EXPECT_TRUE(log.ends_with(" Bytes")) << log;
  }
  for (const char* key : {"\\", "\\\\", "\\\\sub\\\\"}) {
    machine->SetText(kUser, std::string(kKey) + "\\sub", "v", "1");
    CleanBy(std::string("R|Yes|No|HKEY_CURRENT_USER\\") + kKey + key + "|\r\n");
    EXPECT_FALSE(machine->KeyExists(kUser, std::string(kKey) + "\\sub")) << key;
  }
}

TEST_F(PluginRunTest, IniFilesThatResistAreToldAndKept) {
  const std::string text = "[s]\r\nk=1\r\n[t]\r\n[S]\r\nK=2\r\nl=3";
  const std::tuple<const char*, std::string, uint32_t, std::string, const char*> kRows[] = {
      {"sections twice", text, 0, "[s]\r\n[t]\r\n[S]\r\nl=3", ""},
      {"read-only", text, kReadOnly, text, "read-only"},
      {"read-only, nothing to erase", "[t]\r\n", kReadOnly, "[t]\r\n", ""},
      {"huge", text + std::string(16u << 20, ';'), 0, "", "a.ini: "}};
  for (const auto& [what, bytes, attributes, after, told] : kRows) {
    SCOPED_TRACE(what);
    const std::string file = scratch + "a.ini";
    machine->MakeFile(file, bytes);
    ports.files.SetAttributes(file, attributes);
    const std::string log = CleanBy("I|a.ini|s|No|k|" + scratch);
    EXPECT_TRUE(Holds(log, told));
    EXPECT_EQ(log.find("Plugins... ") == 0, told[0] == '\0') << log;
    EXPECT_EQ(ports.files.ReadWholeFile(file, 32u << 20), after.empty() ? bytes : after);
    ports.files.RemoveFile(file);
  }
  EXPECT_EQ(CleanBy("I|none.ini|s|Yes|k|" + scratch + "none\\"),
            "Plugins... Files Deleted: 0 Space Gained: 0 Bytes");
}

}  // namespace
}  // namespace quellix
