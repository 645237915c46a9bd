// Entries of a list that the user keeps: read, judged, priced, ticked, carried out.
#include "app/preview_run.h"
#include "platform/path.h"
#include "platform/sha256.h"
#include "plugins/mod_plugin.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_judgement.h"
#include "plugins/recipe_run.h"
#include "plugins/recipe_ticks.h"
#include "run/working_folder.h"
#include "support/plugin_fixture.h"

namespace quellix::modPlugin {
namespace {

struct RecipeListTest : PluginFixture {
  // "~\" is the scratch folder, "^\" the test's key. A list is written with "/" for its line ends.
  std::string Written(std::string list) const {
    list = ReplaceNoCase(list, "~\\", scratch);
    list = ReplaceNoCase(list, "^\\", std::string("HKCU\\") + kKey + "\\");
    return ReplaceNoCase(list, "/", "\r\n");
  }
  std::vector<ListedRecipe> Parse(const std::string& list) const {
    return ParseRecipeLists({Written(list)});
  }
  void Keep(const std::string& list) { WriteOwn("Winapp2.ini", Written(list)); }
  Judgement Judged(const std::string& entry) {
    ProtectedPlaces places = LoadPlaces(ports);
    return Judge(ports, places, Parse(entry).at(0));
  }
  // The log of a run of what is ticked.
  std::string RunTicked() {
    engine.selection().recipes().Load(ports);
    engine.RunCleaning();
    return engine.state().RunLog;
  }
  // A person looks at the named entries.
  void Look(const Names& names) {
    PreviewRun preview(ports, view);
    preview.RunByHand([&](CleaningContext& looking) {
      const RecipeLists lists = LoadRecipeLists(looking.machine);
      for (const std::string& name : names) RunListed(looking, *lists.Find(name));
    });
    KeepShown(ports, preview.state().Parts.Find<ShownRecipes>());
  }
  void Tick(const Names& names, bool ticked = true) {
    RecipeTicks ticks;
    ticks.Load(ports);
    for (const std::string& name : names) ticks.SetTicked(name, ticked);
    ticks.Save(ports);
  }
};

// Of these files those, or their folders, go.
constexpr const char* kIn = "in\\a.log in\\b.TMP in\\c in\\s\\a.log in\\s\\t\\d ink\\a.log";
const std::tuple<const char*, const char*, const char*> kFileRows[] = {
    {"masks of one folder", "FileKey1=~\\in|*.log; *.tmp", "in\\a.log in\\b.TMP"},
    {"all folders below", "FileKey=~\\in\\|*.LOG|recurse", "in\\a.log in\\s\\a.log"},
    {"with the empty ones", "FileKey12=~\\in\\s|*.*|RECURSE",
     "in\\s\\a.log in\\s\\t\\d in\\s\\t\\"},
    {"with itself", "FileKey1=~\\in|*|REMOVESELF",
     "in\\a.log in\\b.TMP in\\c in\\s\\a.log in\\s\\t\\d in\\s\\t\\ in\\s\\ in\\"},
    {"a part of a folder's name", "FileKey1=~\\i*|a.*", "in\\a.log ink\\a.log"},
    {"an excluded name", "FileKey1=~\\in|*.*|REMOVESELF/ExcludeKey1=FILE|~\\in|c",
     "in\\a.log in\\b.TMP in\\s\\a.log in\\s\\t\\d in\\s\\t\\ in\\s\\"},
    {"an excluded file", "FileKey1=~\\in|*.log|RECURSE/ExcludeKey1=FILE|~\\in\\a.log",
     "in\\s\\a.log"},
    {"excluded masks",
     "FileKey1=~\\in|*.*|RECURSE/ExcludeKey1=PATH|~\\in\\s\\|*.log;*.x/ExcludeKey2=path|~\\in|c",
     "in\\a.log in\\b.TMP in\\s\\t\\d in\\s\\t\\"},
    {"an excluded folder", "FileKey1=~\\in|*.*|RECURSE/ExcludeKey1=PATH|~\\in\\s",
     "in\\a.log in\\b.TMP in\\c"},
    {"an exclusion of another kind", "FileKey1=~\\in|*.log/ExcludeKey1=DIR|~\\in|a", ""},
    {"a misspelt exclusion", "FileKey1=~\\in|*.log/ExcludeFile1=~\\in|a", ""},
    {"an exclusion without its sign", "FileKey1=~\\in|*.log/ExcludeKey1 FILE|~\\in|a", ""},
    {"one of its places",
     "Detect1=^\\none/Detect2=HKEY_CURRENT_USER\\Software/DetectFile=~\\no/FileKey1=~\\in|c",
     "in\\c"},
    {"a file by a pattern", "DetectFile1=~\\i?\\a*/FileKey1=~\\in|c", "in\\c"},
    {"none of its places", "Detect=^\\none/DetectFile=~\\in\\x*/FileKey1=~\\in|c", ""},
    {"of this Windows", "DetectOS=5.1|99.0/FileKey1=~\\in|c", "in\\c"},
    {"of a later Windows", "DetectOS=99.0|/DetectFile=~\\in/FileKey1=~\\in|c", ""},
    {"of an older Windows", "DetectOS=|4.0/FileKey1=~\\in|c", ""},
    {"no browser here", "SpecialDetect=DET_OPERA/FileKey1=~\\in|c", ""},
    {"a flag that nobody knows", "FileKey1=~\\in|c|REMOVE/FileKey2=~\\in|a.log", "in\\a.log"},
    {"a mask that leads elsewhere", "FileKey1=~\\in|s\\*.*/FileKey2=~\\in|..", ""},
    {"a separator of plug-ins", "FileKey1=~\\in|c\x01Yes", ""},
    {"what it says besides",
     "LangSecRef=3021/Default=True/Warning=All of it/Author=x/; FileKey2=~\\in|c/FileKey1=~\\in|x",
     ""}};

TEST_F(RecipeListTest, EachKindOfKeyDoesWhatItSaysAndNothingTheSecondTime) {
  for (const auto& [name, keys, gone] : kFileRows) {
    SCOPED_TRACE(name);
    MakeFiles(scratch, kIn);
    const Names expected = TreeWithout(gone);
    const auto recipes = Parse(std::string("[Qx *]/") + keys);
    ASSERT_EQ(recipes.size(), 1u);
    EXPECT_EQ(recipes[0].name, "Qx");
    for (int i = 0; i < 2; ++i) {
      RunListed(context, recipes[0]);
      EXPECT_EQ(machine->Tree(scratch), expected) << engine.state().RunLog;
    }
    // As a plug-in, which a user may copy it to, it is the same.
    EXPECT_EQ(FormatPlugin(ParsePlugin(FormatPlugin(recipes[0].plugin))),
              FormatPlugin(recipes[0].plugin));
    RunListed(context, Parse("[All]/FileKey1=~\\|*.*|RECURSE")[0]);
    ASSERT_TRUE(machine->Tree(scratch).empty());
  }
}

TEST_F(RecipeListTest, KeysAndValuesGo) {
  const struct {
    const char *name, *keys, *gone;
  } kRows[] = {{"a value", "RegKey1=^\\a|v", "a:v"},
               {"a key", "RegKey1=hkey_current_user\\Software\\Quellix Test\\a\\b",
                "a\\b a\\b:v a\\b\\c a\\b\\c:v"},
               {"a value with a sign", "RegKey1=^\\d|x|y", "d:x|y"},
               {"an excluded key", "RegKey1=^\\a/ExcludeKey1=REG|^\\a\\b", "a:v a:w"},
               {"no value", "RegKey1=^\\a|", ""},
               {"no wildcard", "RegKey1=^\\*|v/RegKey2=^\\a\\*", ""},
               {"no root", "RegKey1=HKEY\\a/RegKey2=HKCU/RegKey3=Software\\a", ""}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    ExpectKeysGo("a:v a:w a\\b:v a\\b\\c:v d:x|y", row.gone,
                 [&] { RunListed(context, Parse(std::string("[Qx]/") + row.keys)[0]); });
  }
}

TEST_F(RecipeListTest, BothSidesAndEachVariable) {
  const Names sides = Split(
      "%ProgramFiles%/%ProgramFiles(x86)%/%CommonProgramFiles%/%CommonProgramFiles(x86)%", '/');
  for (const std::string& side : sides)
    machine->MakeFile(ExpandPluginPath(ports, side) + "\\Qx\\a.log", "1");
  for (const char* key : {"Software\\Qx", "Software\\Wow6432Node\\Qx"})
    machine->SetText(kMachine, key, "v", "1");
  RunListed(context, Parse("[Qx]/Detect=HKLM\\Software\\Qx/FileKey1=%ProgramFiles%\\Qx|*.log|"
                           "REMOVESELF/FileKey2=%CommonProgramFiles%\\Qx|*.*|REMOVESELF/"
                           "RegKey1=HKLM\\Software\\Qx")[0]);
  for (const std::string& side : sides)
    EXPECT_FALSE(machine->Exists(ExpandPluginPath(ports, side) + "\\Qx")) << side;
  for (const char* key : {"Software\\Qx", "Software\\Wow6432Node\\Qx"})
    EXPECT_FALSE(machine->KeyExists(kMachine, key)) << key;
  for (const char* name : {"AppData", "CommonAppData", "Documents", "LocalAppData",
                           "LocalLowAppData", "Music", "Pictures", "ProgramData", "Public",
                           "SystemDrive", "Temp", "UserProfile", "Video", "WinDir"}) {
    const std::string folder = std::string("%") + name + "%\\Qx list";
    const auto recipe = Parse("[Qx]/FileKey1=" + folder + "|a.*|REMOVESELF")[0];
    const std::string path =
        ExpandPluginPath(ports, FolderPart(recipe.plugin.files.at(0).location));
    ASSERT_FALSE(path.empty()) << name;
    machine->MakeFile(path + "a.x", "1");
    RunListed(context, recipe);
    EXPECT_FALSE(machine->Exists(WithoutBackslash(path))) << name;
  }
}

// "+" is a key that can be carried out.
const std::tuple<const char*, Standing, const char*> kStandingRows[] = {
    {"FileKey1=%AppData%\\Qx|*.*|REMOVESELF", Standing::kWhole, ""},
    {"+Author=x", Standing::kWhole, "Author is no key of such a list."},
    {"+FileKey2=%AppData%\\Qx|*.x|ALL", Standing::kPart,
     "FileKey2=%AppData%\\Qx|*.x|ALL: its flag is unknown."},
    {"+FileKey2=%WinDir%\\WinSxS|*.*|RECURSE", Standing::kPart, "WinSxS\\*.*"},
    {"+RegKey1=HKLM\\Software\\Microsoft\\Windows NT", Standing::kPart,
     "Windows NT is not cleaned"},
    {"+SpecialDetect=DET_QX", Standing::kNotUnderstood, "nobody knows such a program."},
    {"+DetectOS=ten|", Standing::kNotUnderstood, "A version of Windows is two numbers"},
    {"FileKey1=%LocalAppData%|*.*|RECURSE", Standing::kRefused, "is not cleaned: it"},
    {"FileKey1=%LocalAppData%\\*|*.*|REMOVESELF", Standing::kRefused, "is not cleaned: it"},
    {"FileKey1=%UserProfile%\\*|*.*|RECURSE", Standing::kRefused, "is not cleaned: it"},
    {"FileKey1=%SystemDrive%|*.*|REMOVESELF", Standing::kRefused, "it is a whole drive."},
    {"RegKey1=HKCU\\Software", Standing::kRefused, "one of its main branches"},
    {"RegKey1=HKLM\\SYSTEM\\CurrentControlSet\\Services\\x|y", Standing::kRefused,
     "is not cleaned"},
    {"FileKey1=%NoSuch%\\Qx|*.*", Standing::kNotUnderstood, "has no value on this machine."},
    {"FileKey1=Qx|*.*", Standing::kNotUnderstood, "it is not the full path of a folder."},
    {"FileKey1=%AppData%\\Qx", Standing::kNotUnderstood, "it names no files of a folder."},
    {"+ExcludeKey1=FILE|", Standing::kNotUnderstood, "it names nothing."},
    {"+ExcludeKey1=PATH|%NoSuch%\\x|*.*", Standing::kNotUnderstood,
     "has a variable without a value on this machine."},
    {"+ExcludeKey1=REG|HKCU\\*", Standing::kNotUnderstood, "it is no registry key."},
    {"+Detect=HKXX\\a", Standing::kNotUnderstood, "it is no registry key."},
    {"+DetectFile=", Standing::kNotUnderstood, "it says nothing."},
    {"+DetectX=1/Detect=HKCU\\Software", Standing::kPart, "DetectX is no key of such a list."},
    {"+ExcludeKey1=PATH|%AppData%\\Qx|a|b", Standing::kNotUnderstood,
     "it says more than is known."},
    {"+ExcludeKey1=FILE|%AppData%\\Qx|%UserName%.dat", Standing::kNotUnderstood,
     "it names no file."},
    {"RegKey1=HKCU\\Software\\Classes\\*\\shell\\*", Standing::kNotUnderstood,
     "a key has no wildcards."},
    {"RegKey1=HKCU\\Software\\*\\Classes\\*\\x", Standing::kNotUnderstood,
     "a key has no wildcards."},
    {"+Warning=/Default=", Standing::kWhole, "Warning=: it says nothing."},
    {"Author=x", Standing::kNotUnderstood, "Author is no key of such a list."},
    {"Section=Games", Standing::kNotUnderstood, "It names nothing that goes."}};

TEST_F(RecipeListTest, HowMuchIsCarriedOutIsTold) {
  const std::string profile = ExpandPluginPath(ports, "%USERPROFILE%"),
                    kept = ports.system.WindowsFolder() + "\\WinSxS\\a";
  machine->MakeFile(kept, "1");
  machine->MakeFile(ExpandPluginPath(ports, "%LOCALAPPDATA%\\Qx\\a"), "1");
  const Names before = machine->Tree(profile);
  for (const auto& [keys, standing, remark] : kStandingRows) {
    SCOPED_TRACE(keys);
    const std::string entry = "[Qx *]/" + ReplaceNoCase(keys, "+", "FileKey1=%AppData%\\Qx|*.*/");
    const Judgement judged = Judged(entry);
    EXPECT_EQ(judged.standing, standing);
    EXPECT_EQ(judged.remarks.empty(), *remark == '\0');
    EXPECT_TRUE(quellix::Holds(judged.remarks.empty() ? "" : judged.remarks[0], remark));
    if (standing < Standing::kRefused) continue;
    RunListed(context, Parse(entry)[0]);
    EXPECT_EQ(machine->Tree(profile), before);
  }
  EXPECT_TRUE(machine->Exists(kept));
}

TEST_F(RecipeListTest, NamesGroupsAndWarningsAreRead) {
  const auto recipes = Parse(
      "FileKey0=~\\a|b/[A *]/LangSecRef=3023/[a]/Section=Own  one/LangSecRef=3021/[a *]/"
      "LangSecRef=9/Warning=x = y/[B [64] *]/[ *]/[A (2) *]");
  Names told;
  for (const auto& recipe : recipes) {
    told.push_back(std::to_string(recipe.line) + " " + recipe.name + ": " + recipe.plugin.group +
                   (recipe.warning.empty() ? "" : "; ") + recipe.warning);
  }
  EXPECT_EQ(told,
            (Names{"2 A: Multimedia", "4 a (2): Own  one", "7 a (3): Others; x = y",
                   "10 B [64]: Others", "11 Without a name: Others", "12 A (2) (2): Others"}));
  const std::string utf16 = "\xFF\xFE" + ToUtf16Bytes("[\u00c4 *]\nFileKey1=C:\\a|b");
  WriteOwn("one.ini", utf16);
  machine->MakeFile(scratch + "two.ini", "[\xc4 *]\nWarning=\xe4");
  WriteSettings("[Recipes]\r\nFile=one.ini | " + scratch + "two.ini|none.ini\r\n");
  const RecipeLists lists = LoadRecipeLists(ports);
  ASSERT_EQ(lists.recipes.size(), 2u);
  EXPECT_EQ(lists.recipes[1].name + lists.recipes[1].warning, "\u00c4 (2)\u00e4");
  EXPECT_EQ(lists.Find("\u00e4 (2)"), &lists.recipes[1]);
  ASSERT_EQ(lists.problems.size(), 1u);
  EXPECT_EQ(lists.problems[0].english, "There is no list of recipes " + own + "none.ini.");
}

// A cost, and what a list names that has it, with "&" between two. Data are lost, but for no cost
// or being signed out.
const std::pair<std::string, const char*> kCostRows[] = {
    {"",
     "%AppData%\\Qx\\Cache|*.*|REMOVESELF&%AppData%\\Mozilla\\Firefox\\Profiles\\*\\cache2|*.*|"
     "RECURSE&"
     "%LocalAppData%\\Google\\Chrome\\User Data\\*|*.log;*.tmp&%AppData%\\Qx\\storage\\other|*.*&"
     "%AppData%\\Qx\\Desktop|*.log/RegKey1=HKCU\\Software\\Qx\\MRU&"
     "%AppData%\\Qx|a.log/Warning=It costs all you have"},
    {"sign you out", "%AppData%\\Qx|cookies.sqlite"},
    {"keys and certificates",
     "%AppData%\\Mozilla\\Firefox\\Profiles\\*|KEY4.db&%AppData%\\Mozilla\\Firefox\\Profiles\\*|*."
     "db&"
     "%AppData%\\Qx|cert*.db&%AppData%\\Qx|*.vcrd"},
    {"saved passwords",
     "%LocalAppData%\\Microsoft\\Vault|*.*|RECURSE&%LocalAppData%\\Qx\\User Data\\*|Login Data*&"
     "%LocalAppData%\\Google\\Chrome\\User Data|*.*|RECURSE&"
     "%AppData%\\Qx|a.log/RegKey1=HKCU\\Software\\Qx|LastPassword"},
    {"open tabs and sessions",
     "%LocalAppData%\\Qx\\User Data\\*|Current *&%AppData%\\Qx|sessionstore*.*&"
     "%LocalAppData%\\Qx\\User Data\\*\\Sessions|*"},
    {"sites and programs",
     "%LocalAppData%\\Qx\\*\\IndexedDB\\x|*.*|REMOVESELF&%AppData%\\Qx\\Local Storage\\leveldb|*.*&"
     "%AppData%\\Qx\\Extension State|*.*&%AppData%\\Qx\\storage\\default|*.*"},
    {"not saved",
     "%LocalAppData%\\Packages\\Qx\\LocalState\\TabState|*.bin&%AppData%\\Qx|*.asd&"
     "%LocalAppData%\\Microsoft\\Office\\16.0\\OfficeFileCache|*.*&%AppData%\\Qx\\Backups|*.*"},
    {"bookmarks",
     "%AppData%\\Mozilla\\Firefox\\Profiles\\*\\bookmarkbackups|*.*&%AppData%\\Mozilla|*|RECURSE&"
     "%AppData%\\Qx\\Profiles\\*|places.sqlite"},
    {"your own folders",
     "%UserProfile%\\Documents\\Qx|*.log&%Documents%\\Qx|*.log&C:\\Users\\a\\Downloads\\Qx|*.log"},
    {"saved sessions", "%AppData%\\Qx|a.log/RegKey1=HKCU\\Software\\Qx\\Sessions"}};

TEST_F(RecipeListTest, TheCostIsDerivedFromWhatIsNamed) {
  for (const auto& [cost, lists] : kCostRows) {
    for (const std::string& keys : Split(lists, '&')) {
      const Plugin plugin = Parse("[Qx *]/FileKey1=" + keys)[0].plugin;
      EXPECT_EQ(plugin.cost.empty(), cost.empty()) << keys << plugin.cost;
      EXPECT_TRUE(quellix::Holds(plugin.cost, cost)) << keys;
      EXPECT_EQ(plugin.loses_data, !cost.empty() && cost != "sign you out") << keys;
    }
  }
}

// Two entries, each ticked or not and seen by a person or not.
struct RecipeListTicksTest : RecipeListTest {
  void Make() { MakeFiles(scratch + "in\\", "a b c", "12"); }
  void ExpectLeft(const char* names) { EXPECT_EQ(Joined(machine->Tree(scratch)), names); }
  // A line of the run's log.
  void ExpectTold(std::string_view line) { EXPECT_TRUE(quellix::Holds(RunTicked(), line)); }

  const std::string one = "[One *]/DetectFile=~\\in/FileKey1=~\\in|a",
                    two = "/[Two]/FileKey1=~\\in|b",
                    unseen = "One is not cleaned: it is new or has changed";
};

TEST_F(RecipeListTicksTest, WhatChangedIsUnseenAndOnlyWhatAnEntrySaysCounts) {
  Make();
  Keep(one + two);
  Tick({"One"});
  Look({"One"});
  const std::string changed[] = {ReplaceNoCase(one, "in|a", "in|*"), one + "/FileKey2=~\\in|c",
                                 one + "/Warning=x", "[One *]/FileKey1=~\\in|a"};
  for (const std::string& list : changed) {
    SCOPED_TRACE(list);
    Keep(list + two);
    ExpectTold(unseen);
  }
  Keep("; a newer list/[None *]/" + one + two);
  ExpectTold("One: Files Deleted: 1");
  Make();
  Keep(two);
  ExpectTold("One is in no list of recipes any more.\r\n");
  Keep(ReplaceNoCase(one, "~\\in/", "~\\none/"));
  Look({"One"});
  MakeFiles(scratch, "none", "");
  ExpectTold("One is not cleaned");  // nothing of it was seen
  MakeUnreadable(own + "recipes.txt");
  EXPECT_TRUE(quellix::Holds(engine.Load(), "The ticked items could not be read."));
  EXPECT_FALSE(engine.is_loaded());
  ExpectLeft("in\\ in\\a in\\b in\\c none");
}

TEST_F(RecipeListTest, AListBeyondAllMeasureIsNotRead) {
  WriteOwn("Winapp2.ini", std::string((16u << 20) + 1, 'x'));
  EXPECT_EQ(LoadRecipeLists(ports).problems.size(), 1u);
}

TEST_F(RecipeListTest, AFingerprintIsAStandardOne) {
  EXPECT_EQ(Sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

}  // namespace
}  // namespace quellix::modPlugin
