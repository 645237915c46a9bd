#include "run/keep_list.h"

#include "platform/filetime.h"
#include "run/exit_code.h"
#include "settings/keep_file.h"
#include "support/plugin_fixture.h"

namespace quellix {
namespace {

struct KeepListTest : PluginFixture {
  KeepListTest() {
    for (const std::string& name : Files(temp)) ports.files.RemoveFile(temp + name);
  }
  void Keep(const std::string& lines) { WriteOwn("keep.txt", lines); }
  void FillTree() { MakeFiles(tree, "a.txt b.doc sub\\c.txt sub\\deep\\d.doc other\\e.txt", "12"); }
  // What is left of the tree; a second run changes nothing.
  Names LeftOfTree() {
    FillTree();
    WriteOwn("UDFO.txt", tree);
    Tick({"CleanUserFolders"});
    engine.RunCleaning();
    const Names left = Files(tree);
    engine.RunCleaning();
    EXPECT_EQ(Files(tree), left);
    EXPECT_EQ(ExitCodeOf(engine.state()), kDone);
    EXPECT_EQ(view.criticals, Names());
    return left;
  }
  const std::string tree = scratch + "tree\\";

  Names Files(const std::string& folder) {
    Names files = machine->Tree(folder);
    std::erase_if(files, [](const std::string& name) { return name.ends_with('\\'); });
    return files;
  }
};

TEST_F(KeepListTest, ALineKeepsWhatItNamesHoweverItIsSpelled) {
  FillTree();
  machine->MakeFolderLink(scratch + "link", WithoutBackslash(tree));
  const std::tuple<const char*, std::string, Names> rows[] = {
      {"nothing", "; " + tree + "a.txt\r\n\r\n  \r\n", {}},
      {"a file", tree + "a.txt", {"a.txt"}},
      {"in another case", "  " + UpCase(tree) + "A.TXT  \r\n", {"a.txt"}},
      {"by its short name", machine->ShortName(tree + "a.txt"), {"a.txt"}},
      {"a folder", tree + "sub", {"sub\\c.txt", "sub\\deep\\d.doc"}},
      {"a folder with its separator", tree + "sub\\deep\\", {"sub\\deep\\d.doc"}},
      {"through a link above", scratch + "link\\sub\\deep", {"sub\\deep\\d.doc"}},
      {"a file through a link above", scratch + "link\\b.doc", {"b.doc"}},
      {"all of it", tree, {"a.txt", "b.doc", "other\\e.txt", "sub\\c.txt", "sub\\deep\\d.doc"}},
      {"a mask of names", "*.DOC", {"b.doc", "sub\\deep\\d.doc"}},
      {"a mask of paths", tree + "*\\?.txt", {"other\\e.txt", "sub\\c.txt"}},
      {"a variable", "%SystemDrive%" + tree.substr(2) + "a.txt", {"a.txt"}},
      {"what is not there yet", tree + "a.txt\\b\r\n" + tree + "none", {}},
      {"a name alone is no path", "a.txt\r\nsub\r\n%NONE_SUCH%\\a", {}},
      {"several", "*.doc\n" + tree + "a.txt\n", {"a.txt", "b.doc", "sub\\deep\\d.doc"}}};
  bool backs_up = false;
  for (const auto& [name, lines, stays] : rows) {
    backs_up = !backs_up;
    SCOPED_TRACE(name);
    WriteSettings(backs_up ? "[General]\nDelMethod=B" : "[General]\nDelMethod=D");
    Keep(lines);
    const Names left = LeftOfTree();
    const std::string& log = engine.state().RunLog;
    // Links of a volume are not followed; then that is told.
    if (left.empty() && log.find("cannot be opened: ") != log.npos) continue;
    EXPECT_EQ(left, stays);
    const bool is_told = log.find("Kept by the keep list: ") != log.npos ||
                         log.find("it is kept by your line") != log.npos;
    EXPECT_EQ(is_told, !stays.empty()) << log;
  }
}

TEST_F(KeepListTest, LinesThatKeepNothingAndMasksThatKeepAllAreTold) {
  Keep("sub\r\n*.*\r\n");
  EXPECT_EQ(LeftOfTree().size(), 5u);
  const std::string& log = engine.state().RunLog;
  EXPECT_TRUE(Holds(log, "The keep list's line \"sub\" keeps nothing: "));
  EXPECT_TRUE(Holds(log, "The keep list's line \"*.*\" keeps every file."));
  std::string lines = std::string("\0\x01\xFF\xFE\n[[[", 8);
  for (int i = 0; i < 20'000; ++i) lines += "C:\\None\\" + std::to_string(i) + "\r\n";
  Keep(lines + tree + "b.doc");
  EXPECT_EQ(LeftOfTree(), Names{"b.doc"});
}

TEST_F(KeepListTest, ListsSearchesAndPlugInsHonourIt) {
  for (const char* file : {"f\\a", "f\\b", "f\\s\\c", "g\\d"})
    machine->MakeFile(scratch + file, "");
  for (const char* file : {"i\\x.ini", "i\\by mask.ini", "i\\in a.ini", "i\\goes.ini"})
    machine->MakeFile(scratch + file, "[a]\r\nk=1\r\n");
  for (const std::string key : {"v", "t\\s", "t2\\s", "k"}) {
    for (const char* name : {"", "v", "w"}) machine->SetText(kUser, kKey + ("\\" + key), name, "x");
  }
  const std::string key = std::string("HKEY_CURRENT_USER\\") + kKey;
  Keep(scratch + "f\\s\r\n" + scratch + "f\\b\r\n" + scratch + "i\\x.ini\r\n" + scratch +
       "i\\by*.ini\r\nin ?.ini\r\n" + key + "\\v|v\r\n" + key + "\\t\\s|W\r\n" + UpCase(key) +
       "\\K\r\n" + key + "\\v|\r\n");
  const auto ini = [this](std::string name) {
    return "I|" + name + ".ini|a|Yes||" + scratch + "i\\\r\n";
  };
  WriteRecipe("all.cdp", "F|Yes|Yes|" + scratch + "f\\*.*\r\nF|No|No|" + scratch + "f\\b\r\n" +
                             ini("x") + ini("by mask") + ini("in a") + ini("goes") + "R|No|No|" +
                             key + "\\v|v\r\nR|No|No|" + key + "\\v|w\r\nR|Yes|No|" + key +
                             "\\t|v\r\nR|Yes|No|" + key + "\\t2|v\r\nR|No|No|" + key + "\\k|v\r\n");
  WriteList("1|all.cdp|\r\n");
  WriteOwn("UDFI.txt", scratch + "f\\b\r\n" + scratch + "g\\d\r\n");
  Tick({"CleanPlugins", "CleanUserFiles"});
  engine.RunCleaning();
  EXPECT_EQ(Files(scratch),
            (Names{"f\\b", "f\\s\\c", "i\\by mask.ini", "i\\goes.ini", "i\\in a.ini", "i\\x.ini"}));
  for (const std::string name : {"x", "by mask", "in a", "goes"}) {
    EXPECT_EQ(ports.files.ReadWholeFile(scratch + "i\\" + name + ".ini"),
              name == "goes" ? "" : "[a]\r\nk=1\r\n");
  }
  EXPECT_EQ(machine->ValueNames(kUser, std::string(kKey) + "\\v"), (Names{"", "v"}));
  EXPECT_EQ(machine->ValueNames(kUser, std::string(kKey) + "\\t\\s").size(), 3u);
  EXPECT_FALSE(machine->KeyExists(kUser, std::string(kKey) + "\\t2"));
  EXPECT_EQ(machine->ValueNames(kUser, std::string(kKey) + "\\k").size(), 3u);
  EXPECT_EQ(ExitCodeOf(engine.state()), kDone) << engine.state().RunLog;
  const std::string report = view.report ? view.report->full_log : "";
  for (const std::string& entry :
       {scratch + "f\\b (by", scratch + "f\\s\\ (by", key + "\\v, v (by", key + "\\t (by"})
    EXPECT_TRUE(Holds(UpCase(report), UpCase(entry))) << entry << report;
}

TEST_F(KeepListTest, ARunWhoseListCannotBeReadRemovesNothing) {
  machine->MakeFolder(own + "keep.txt");
  machine->MakeFile(temp + "t", "1");
  Tick({"CleanTempFiles"});
  engine.RunCleaning();
  Clean("CleanTempFiles");
  EXPECT_TRUE(machine->Exists(temp + "t"));
  EXPECT_EQ(ExitCodeOf(engine.state()), kFailed);
  ASSERT_EQ(view.criticals.size(), 2u);
  EXPECT_TRUE(Holds(view.criticals[0], "the list of what is kept cannot be read"));
  EXPECT_THROW(AddToKeepFile(ports, temp), Error);
}

TEST_F(KeepListTest, LinesAreAddedOnceAndTakenOut) {
  Keep("; mine\r\n*.doc\r\n");
  EXPECT_EQ(AddToKeepFile(ports, " C:\\Work "), "");
  EXPECT_EQ(AddToKeepFile(ports, "c:\\work"), "");
  EXPECT_NE(AddToKeepFile(ports, "work"), "");
  EXPECT_NE(AddToKeepFile(ports, "site:"), "");
  EXPECT_EQ(ReadOwn("keep.txt"), "; mine\r\n*.doc\r\nC:\\Work\r\n");
  EXPECT_EQ(RemoveFromKeepFile(ports, "*.DOC"), "");
  EXPECT_NE(RemoveFromKeepFile(ports, "*.DOC"), "");
  EXPECT_EQ(ReadOwn("keep.txt"), "; mine\r\nC:\\Work\r\n");
}

TEST_F(KeepListTest, CookiesOfASiteStay) {
  machine->SetText(kUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                   "Cookies", scratch + "cookies");
  const auto cookie = [](const std::string& host) {
    return "n\nv\n" + host + "/\n1\n2\n3\n4\n5\n*\n";
  };
  machine->MakeFile(scratch + "cookies\\u@a[1].txt", cookie("x.org") + cookie("WWW.Example.com"));
  machine->MakeFile(scratch + "cookies\\u@b[1].txt", cookie("badexample.com"));
  machine->MakeFile(scratch + "cookies\\u@c[1].txt", cookie("example.com"));
  machine->MakeFile(scratch + "cookies\\u@d[1].txt", "example.com");
  machine->MakeFile(scratch + "cookies\\kept.cookie", cookie("x.org") + cookie("a.example.com"));
  machine->MakeFile(scratch + "cookies\\gone.cookie", cookie("x.org") + cookie("server"));
  // Whose they are nobody can tell.
  machine->MakeFile(scratch + "cookies\\cut.cookie", cookie("x.org") + "n\nv\nexam");
  machine->MakeFile(scratch + "cookies\\empty.cookie", "");
  machine->MakeFile(scratch + "cookies\\none.cookie", cookie(""));
  Keep("SITE: Example.com\r\n");
  Clean("CleanCookies");
  EXPECT_EQ(Files(scratch + "cookies"), (Names{"cut.cookie", "empty.cookie", "kept.cookie",
                                               "none.cookie", "u@a[1].txt", "u@c[1].txt"}));
  EXPECT_TRUE(Holds(view.report->log, "none.cookie: Its site cannot be told"));
  Keep("C:\\none\r\n");
  Clean("CleanCookies");
  EXPECT_EQ(Files(scratch + "cookies"), Names{});
}

TEST_F(KeepListTest, FilesWrittenInTheLastDaysStay) {
  for (const auto& [setting, fixed, left] :
       {std::tuple("", -1, 0), std::tuple("7", -1, 1), std::tuple("9", -1, 2),
        std::tuple("-3", -1, 0), std::tuple("x", -1, 0), std::tuple("", 7, 1),
        std::tuple("9", 0, 0)}) {
    SCOPED_TRACE(setting + std::to_string(fixed));
    WriteSettings(std::string("[General]\nOlderThanDays=") + setting);
    engine.state().FixedOlderThanDays = std::nullopt;
    if (fixed >= 0) engine.state().FixedOlderThanDays = static_cast<int16_t>(fixed);
    for (const int days : {6, 8}) {
      const std::string file = temp + "d" + std::to_string(days);
      machine->MakeFile(file, "1");
      machine->SetLastWrite(file, ports.system.UtcNow() - days * kFiletimesADay);
    }
    Tick({"CleanTempFiles"});
    engine.RunCleaning();
    EXPECT_EQ(Files(temp).size(), static_cast<size_t>(left));
    for (const std::string& file : Files(temp)) ports.files.RemoveFile(temp + file);
  }
}

}  // namespace
}  // namespace quellix
