// What a recipe's records beyond folder, mask, key and INI file do.
#include "platform/forwarding_system.h"
#include "plugins/mod_plugin.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_trial.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_folders.h"
#include "support/plugin_fixture.h"

namespace quellix::modPlugin {
namespace {

constexpr const char* kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

std::string Repeated(std::string_view part, int times) {
  std::string text;
  while (times-- > 0) text += part;
  return text;
}

struct RecipeTest : PluginFixture {
  // "~\" is the scratch folder, "^\" the test's key.
  std::string Written(std::string recipe) const {
    recipe = ReplaceNoCase(recipe, "~\\", scratch);
    return Text(ReplaceNoCase(recipe, "^\\", std::string("HKEY_CURRENT_USER\\") + kKey + "\\"));
  }
  void Run(const std::string& recipe) {
    engine.state().RunLog.clear();
    RunRecords(context, ParsePlugin(Written(recipe)));
  }
  std::string Faults(const std::string& recipe) {
    std::string faults;
    for (const Remark& remark : CheckPlugin(ports, Written(recipe))) {
      if (remark.is_fault) faults += remark.text + "\n";
    }
    return faults;
  }
};

const std::tuple<const char*, const char*, const char*, const char*> kFileRows[] = {
    {"a part of a folder's name", "F|No|No|~\\Chrome*\\Cache\\*.*",
     "Chrome\\Cache\\a chrome-2\\cache\\a Crome\\Cache\\a Chrome-2x\\Cache.old\\a",
     "Chrome\\Cache\\a chrome-2\\cache\\a"},
    {"at any level", "F|No|No|~\\v?\\*.d\\x*\\*.log",
     "v1\\a.d\\xx\\1.log v12\\a.d\\x\\1.log v2\\a.e\\x\\1.log v3\\b.d\\x\\1.txt",
     "v1\\a.d\\xx\\1.log"},
    {"the folder itself", "F|Yes|Yes|~\\in\\*.*|Yes", "in\\a in\\sub\\b in2\\a",
     "in\\a in\\sub\\b in\\sub\\ in\\"},
    {"the folder itself, once it is empty", "F|No|No|~\\in\\*.log|Yes\r\nF|No|No|~\\out\\*.log|Yes",
     "in\\a.log in\\b out\\a.log", "in\\a.log out\\a.log out\\"},
    {"folders within folders themselves",
     "F|Yes|Yes|~\\in\\*.*|Yes\r\nF|Yes|Yes|~\\in\\c*\\*.*|Yes", "in\\c1\\a in\\c2\\d\\b",
     "in\\c1\\a in\\c2\\d\\b in\\c2\\d\\ in\\c1\\ in\\c2\\ in\\"},
    {"without a folder itself", "F|Yes|Yes|~\\in\\*.*|yes|", "in\\a in\\sub\\b",
     "in\\a in\\sub\\b in\\sub\\"},
    {"an excluded file of one folder", "X|File|~\\in\\k*.db\r\nF|Yes|Yes|~\\in\\*.*|Yes",
     "in\\K.DB in\\sub\\k.db in\\a", "in\\sub\\k.db in\\sub\\ in\\a"},
    {"excluded files of all folders below", "F|Yes|Yes|~\\in\\*.*\r\nX|Path|~\\in\\s*\\*.log",
     "in\\sub\\deep\\k.LOG in\\sub\\k.log in\\a.log in\\sub\\a", "in\\a.log in\\sub\\a"},
    {"an excluded folder", "F|Yes|Yes|~\\in\\*.*|Yes\r\nX|Path|~\\in\\keep\\*.*",
     "in\\keep\\sub\\k in\\keeper\\a", "in\\keeper\\a in\\keeper\\"},
    {"an excluded folder above",
     "F|Yes|Yes|~\\in\\sub\\*.*|Yes\r\nX|Path|~\\IN\\*.*\r\nF|No|No|~\\on\\*.*", "in\\sub\\k on\\a",
     "on\\a"},
    {"a record that older and newer readers may have", "Z|x\r\nT|Disk|C:\r\nF|No|No|~\\in\\*.*",
     "in\\a", "in\\a"},
    {"an exclusion that nobody can read", "X|path|~\\in\\*.*\r\nF|No|No|~\\on\\*.*", "on\\a", ""},
    {"a folder that is left by its name", "X|Path|~\\in\\keep\r\nF|Yes|Yes|~\\in\\*.*",
     "in\\a in\\keep\\b\\c", "in\\a"},
    {"a folder that is left, and goes itself when empty",
     "X|Path|~\\in\\*.*\r\nF|No|No|~\\in\\*.*|Yes", "in\\a", ""},
    {"an exclusion that means nothing", "F|No|No|~\\in\\*.*\r\nX|File|in\\a", "in\\a", ""},
    {"found by one of its places", "T|File|~\\no*\r\nT|File|~\\i?\\a*\r\nF|No|No|~\\in\\*.*",
     "in\\a", "in\\a"},
    {"not found", "T|File|~\\in\\b*\r\nT|Key|^\\none\r\nF|No|No|~\\in\\*.*", "in\\a", ""},
    {"of this Windows, and there", "T|Version|5.0|\r\nT|File|~\\in\r\nF|No|No|~\\in\\*.*", "in\\a",
     "in\\a"},
    {"of another Windows", "T|Version||5.0\r\nT|Version|99.0\r\nT|File|~\\in\r\nF|No|No|~\\in\\*.*",
     "in\\a", ""}};

// Files that are made, and those of them, or their folders, that go; all else stays. What is named
// so cannot go a second time, and a trial lists all of it beforehand.
TEST_F(RecipeTest, FilesAndFoldersGoAsTheirRecordsSay) {
  for (const auto& [name, recipe, makes, gone] : kFileRows) {
    SCOPED_TRACE(name);
    MakeFiles(scratch, makes);
    const Names all = machine->Tree(scratch), expected = TreeWithout(gone);
    PluginTrial trial(ports);
    trial.Run(ParsePlugin(Written(recipe)), view);
    EXPECT_EQ(trial.count(), WordsOf(gone).size()) << trial.notes();
    EXPECT_EQ(machine->Tree(scratch), all);
    for (int i = 0; i < 2; ++i) {
      Run(recipe);
      EXPECT_EQ(machine->Tree(scratch), expected) << engine.state().RunLog;
    }
    Run("F|Yes|Yes|~\\*.*");
    ASSERT_TRUE(machine->Tree(scratch).empty());
  }
}

TEST_F(RecipeTest, ALinkLeadsNoPatternElsewhere) {
  MakeFiles(scratch, "out\\cache\\kept in\\c1\\a");
  machine->MakeFolderLink(scratch + "in\\c2", scratch + "out\\cache");
  machine->MakeFolderLink(scratch + "p1", scratch + "out");
  Run("F|Yes|Yes|~\\in\\c*\\*.*|Yes\r\nF|Yes|Yes|~\\p*\\cache\\*.*|Yes");
  EXPECT_FALSE(machine->Exists(scratch + "in\\c1"));
  EXPECT_TRUE(machine->Exists(scratch + "in\\c2") && machine->Exists(scratch + "p1"));
  EXPECT_TRUE(machine->Exists(scratch + "out\\cache\\kept"));
  EXPECT_EQ(engine.state().RunLog, "") << "none is even tried";
}

TEST_F(RecipeTest, KeysGoAsTheirRecordsSay) {
  constexpr const char* kMade =
      "a\\1\\mru:v a\\2\\mru:v a\\2\\mru:w a\\2\\other:v b\\*\\x:v b\\c\\x:v d\\keep\\k:v d\\go:v "
      "d:v";
  const struct {
    const char *name, *recipe, *gone;
  } kRows[] = {{"each key", "R|Yes|No|^\\a\\*\\mru|",
                "a\\1\\mru a\\1\\mru:v a\\2\\mru a\\2\\mru:v a\\2\\mru:w"},
               {"a value of each key", "R|No|No|^\\*\\*\\mru|v", "a\\1\\mru:v a\\2\\mru:v"},
               {"a key of that name", "R|Yes|No|^\\b\\*\\x|", "b\\*\\x b\\*\\x:v"},
               {"an excluded key", "R|Yes|No|^\\d|\r\nX|Key|^\\D\\keep", "d:v d\\go d\\go:v"},
               {"an excluded key above", "R|No|No|^\\d\\keep\\k|v\r\nX|Key|^\\d\\keep", ""},
               {"excluded by a pattern", "R|Yes|No|^\\a\\2|\r\nX|Key|^\\*\\*\\mru",
                "a\\2\\other a\\2\\other:v"},
               {"found by a value", "T|Key|^\\d|V\r\nR|No|No|^\\d\\go|v", "d\\go:v"},
               {"found by no value", "T|Key|^\\d|w\r\nT|Key|^\\a\\*\\x\r\nR|No|No|^\\d\\go|v", ""}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    ExpectKeysGo(kMade, row.gone, [&] { Run(row.recipe); });
  }
}

TEST_F(RecipeTest, BothSidesAreCleanedWhereTheFlagSaysSo) {
  const std::string sides[] = {ExpandPluginPath(ports, "%ProgramFiles%\\"),
                               ExpandPluginPath(ports, "%ProgramFiles(x86)%\\")};
  constexpr const char* kViews[] = {"Software\\Qx", "Software\\Wow6432Node\\Qx"};
  for (const bool both : {false, true}) {
    SCOPED_TRACE(both);
    for (const std::string& side : sides) machine->MakeFile(side + "Qx\\a.log", "1");
    for (const char* view_key : kViews) machine->SetText(kMachine, view_key, "v", "1");
    const std::string flag = both ? "Yes" : "No";
    Run("F|Yes|No|%ProgramFiles%\\Qx\\*.*|Yes|" + flag +
        "\r\nR|No|No|HKEY_LOCAL_MACHINE\\Software\\Qx|v|" + flag);
    EXPECT_FALSE(machine->Exists(sides[0] + "Qx"));
    EXPECT_EQ(machine->Exists(sides[1] + "Qx\\a.log"), !both);
    EXPECT_TRUE(machine->ValueNames(kMachine, kViews[0]).empty());
    EXPECT_EQ(machine->ValueNames(kMachine, kViews[1]).empty(), both);
    EXPECT_EQ(IsFound(ports, ParsePlugin(Text("T|File|%ProgramFiles%\\Qx"))), !both);
  }
  for (const char* key : kViews) machine->RemoveRegistryTree(kMachine, key);
}

TEST_F(RecipeTest, EveryMachineKnowsTheseVariables) {
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const std::string drive = profile.substr(0, 2);
  const auto expand = [&](const std::string& name) {
    return ExpandPluginPath(ports, "%" + name + "%\\x");
  };
  EXPECT_EQ(expand("locallowappdata"), profile + "\\AppData\\LocalLow\\x");
  for (const char* name : {"Videos", "Downloads", "Desktop"})
    EXPECT_FALSE(expand(name).empty()) << name;
  EXPECT_EQ(expand("ProgramFiles(x86)"), drive + "\\Program Files (x86)\\x");
  EXPECT_EQ(expand("ProgramW6432"), drive + "\\Program Files\\x");
  EXPECT_EQ(expand("CommonProgramFiles"), drive + "\\Program Files\\Common Files\\x");
  EXPECT_EQ(expand("CommonProgramFiles(x86)"), drive + "\\Program Files (x86)\\Common Files\\x");
  const auto folders = ports.registry.Create(kUser, kShellFolders);
  const auto old = folders->QueryValue("My Music");
  machine->SetText(kUser, kShellFolders, "My Music", "%USERPROFILE%\\Qx");
  EXPECT_EQ(expand("Music"), profile + "\\Qx\\x");
  old ? folders->SetValue("My Music", *old) : void(folders->DeleteValue("My Music"));
}

TEST_F(RecipeTest, WhereWindowsIsNotKnownNoVariableBecomesAShorterPath) {
  struct NowhereSystem : ForwardingSystem {
    using ForwardingSystem::ForwardingSystem;
    std::string WindowsFolder() override { return ""; }
    std::string SystemFolder() override { return ""; }
    std::optional<std::string> Environment(std::string_view) override { return std::nullopt; }
  } nowhere(ports.system);
  const Machine lost{ports.files,     ports.registry, ports.shell,
                     ports.url_cache, ports.profile,  nowhere,
                     ports.session,   ports.cleaners, own};
  for (const char* name : {"PROGDIR", "SYSDIR", "WINDIR"})
    EXPECT_EQ(ExpandPluginPath(lost, "C:%" + std::string(name) + "%\\x"), "") << name;
}

// Between slashes.
constexpr const char* kFaultyRows =
    "F|No|No|C:\\a\\b|c/F|No|No|C:\\a\\b /F|No|No|C:\\a\\b:c/F|No|No|C:\\a<\\b/"
    "F|No|No|C:\\a*\\..\\b/F|No|No|\\\\server*\\share\\a\\*.*/F|No|No|C:\\a\\b.c|Maybe/"
    "R|Yes|No|HKEY_CURRENT_USER\\Software\\Qx*\\a|/"
    "R|Yes|No|HKEY_CURRENT_USER\\Software\\Qx\\a||maybe/X|File|a\\b/X|File|C:\\a\\/"
    "X|Path|C:\\a:\\*.*/X|Path|%NO_SUCH%\\*.*/X|Key|HKCU\\a/X|All|C:\\a\\b/T|File|a\\b/"
    "T|File|%NO_SUCH%\\a/T|Key|HKCU\\a/T|Version|ten/T|Version|10/T|Version|10.0|6.0/"
    "T|Any|C:\\a/P|C:\\a.exe/P|/P|a*.exe/W|Maybe|x/X|File/W|text/G/Q|x";

TEST_F(RecipeTest, WhatCannotMatchIsAFault) {
  const Names rows = Split(kFaultyRows, '/');
  std::string recipe;
  for (const std::string& row : rows) recipe += Written(row) + "\r\n";
  recipe = ReplaceNoCase(recipe, "b\1c", "b|c");
  std::vector<int> faults(rows.size());
  for (const Remark& remark : CheckPlugin(ports, recipe)) {
    if (remark.is_fault) ++faults.at(remark.line - 1);
  }
  for (size_t i = 0; i < faults.size(); ++i) EXPECT_EQ(faults[i], 1) << rows[i];
  EXPECT_EQ(Faults("F|No|No|C:\\a*\\b?c|Yes|No\r\nX|Path|C:\\a\\*.*\r\nX|Key|^\\*\\a\r\n"
                   "T|File|%ProgramFiles%\\Qx*\r\nT|Key|^\\a|v\r\nT|Version|6.2|10.0\r\n"
                   "T|Version||6.1\r\nG|Windows\r\nW|Yes|signs you out\r\nP|qx.exe"),
            "");
}

// Each expansion is judged as if it had been written, and all of a folder as the folder.
TEST_F(RecipeTest, AFolderThatWindowsNeedsIsEmptiedAndStays) {
  const std::string logs = ports.system.SystemFolder() + "\\LogFiles";
  machine->MakeFile(logs + "\\Qx\\a", "1");
  Run("F|Yes|Yes|%SYSDIR%\\LogFiles\\*.*|Yes");
  EXPECT_TRUE(!machine->Exists(logs + "\\Qx") && machine->Exists(logs));
}

TEST_F(RecipeTest, AKeyOfClassesIsLeftInBothOfItsHomes) {
  const std::string classes = "Software\\Classes\\QxRecipe\\in";
  for (const RegistryRoot root : {kUser, kMachine}) {
    machine->SetText(root, classes + "\\keep", "v", "1");
    machine->SetText(root, classes + "\\other", "v", "1");
  }
  Run("X|Key|HKEY_CLASSES_ROOT\\QxRecipe\\in\\keep\r\nR|Yes|No|HKEY_CLASSES_ROOT\\QxRecipe\\in|");
  for (const RegistryRoot root : {kUser, kMachine}) {
    EXPECT_TRUE(ports.registry.Open(root, classes + "\\keep", RegistryAccess::kRead));
    EXPECT_FALSE(ports.registry.Open(root, classes + "\\other", RegistryAccess::kRead));
    machine->RemoveRegistryTree(root, "Software\\Classes\\QxRecipe");
  }
}

TEST_F(RecipeTest, WhatIsLeftByAnotherSpellingStays) {
  const std::string kept = scratch + "in\\A long folder name";
  machine->MakeFile(kept + "\\b", "1");
  machine->MakeFolderLink(scratch + "way", scratch + "in");
  for (const std::string& spelled :
       {machine->ShortName(kept), UpCase(kept), scratch + "way\\a long folder name"}) {
    machine->MakeFile(scratch + "in\\a", "1");
    Run("X|Path|" + spelled + "\\*.*\r\nF|Yes|Yes|~\\in\\*.*");
    EXPECT_TRUE(machine->Exists(kept + "\\b")) << spelled;
  }
}

TEST_F(RecipeTest, APatternReachesNothingPrecious) {
  const std::string windows = ports.system.WindowsFolder(), drive = windows.substr(0, 2);
  Names rows = Split(
      "F|Yes|No|" + drive +
          "\\W?ndow*\\*.*/F|Yes|No|%WINDIR%\\Sys*32\\qx-none*/"
          "F|Yes|Yes|%LOCALAPPDATA%\\*\\*.*/F|Yes|Yes|%USERPROFILE%\\AppData\\?*\\*/"
          "F|Yes|No|%Documents%\\*.*|Yes/F|Yes|Yes|%LOCALAPPDATA%\\??*\\*.*/"
          "F|Yes|Yes|%LOCALAPPDATA%\\*\\*\\*.?*/R|Yes|No|HKEY_CURRENT_USER\\Software\\*\\\\|/"
          "R|Yes|No|HKEY_CURRENT_USER\\Software\\*\\*|/R|Yes|No|HKEY_CURRENT_USER\\Software\\*|/"
          "R|Yes|No|HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer|/"
          "R|Yes|No|HKEY_CURRENT_USER\\*\\Microsoft\\Windows|/"
          "R|Yes|No|HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft|/"
          "R|Yes|No|HKEY_LOCAL_MACHINE\\*\\Microsoft\\Windows|",
      '/');
  rows.push_back("R|Yes|No|HKEY_CURRENT_USER\\Software\\Classes" + Repeated("\\Classes\\*", 300) +
                 "|");
  machine->MakeFolder(ExpandPluginPath(ports, "%Documents%"));
  machine->MakeFolder(windows + "\\System32");
  machine->MakeFile(ExpandPluginPath(ports, "%LOCALAPPDATA%\\Qx kept\\sub\\a"), "1");
  machine->SetText(kUser, kShellFolders, "Qx", "1");
  machine->SetText(kUser, std::string(kKey) + "\\a", "v", "1");
  machine->SetText(kMachine, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion", "Qx", "1");
  for (const std::string& row : rows) {
    SCOPED_TRACE(row);
    EXPECT_TRUE(quellix::Holds(Faults(row), " is not cleaned: "));
    PluginTrial trial(ports);
    trial.Run(ParsePlugin(Written(row)), view);
    EXPECT_EQ(trial.count(), 0u);
    EXPECT_TRUE(quellix::Holds(trial.notes(), " is not cleaned: "));
  }
  ports.registry.Open(kUser, kShellFolders, RegistryAccess::kWrite)->DeleteValue("Qx");
  Run("F|Yes|Yes|%LOCALAPPDATA%\\Qx kep?\\*.*|Yes");
  EXPECT_FALSE(machine->Exists(ExpandPluginPath(ports, "%LOCALAPPDATA%\\Qx kept")));
}

}  // namespace
}  // namespace quellix::modPlugin
