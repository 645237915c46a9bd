// The rules of the plug-in manager, the editor and its name generator.
#include "plugins/mod_plugin.h"
#include "plugins/plugin_editor.h"
#include "plugins/plugin_trial.h"
#include "support/forwarding_files.h"
#include "support/plugin_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix::modPlugin {
namespace {

struct PluginWindowsTest : PluginFixture {
  std::string LastTold() { return prompts.informed.empty() ? "" : prompts.informed.back(); }
  // What was added; each refusal is told once, with this beginning.
  void ExpectRefused(bool added, const std::string& told) {
    EXPECT_FALSE(added) << told;
    EXPECT_EQ(prompts.informed.size(), ++refusals);
    EXPECT_EQ(LastTold().substr(0, told.size()), told);
  }
  // Runs the manager's Process command; the statuses it showed.
  Names Process(std::vector<size_t> rows) {
    Names shown;
    manager.Process(context, rows, [&] { shown.push_back(manager.status()); });
    return shown;
  }

  void ExpectOneFinishedArchive() {
    const std::string backups = engine.state().BackupFolder;
    const Names archives = machine->Tree(backups);
    ASSERT_EQ(archives.size(), 1u);
    EXPECT_TRUE(Holds(Read(backups + archives[0]), "PK\5\6"));
  }

  ScriptedPrompts prompts;
  size_t refusals = 0;
  PluginManager manager{ports, prompts};
  PluginEditor editor{ports, prompts, manager};
};

TEST_F(PluginWindowsTest, TheManagerListsTicksAndAdds) {
  for (const char* name : {"a.cdp", "b.cdp", "c.cdp"}) {
    WriteRecipe(name, std::string("F|No|No|C:\\D\\x\r\nD|about ") + name + "|more\r\nD|later\r\n");
  }
  WriteList("1|a.cdp|first\r\n0|b.cdp|second\r\n1|gone.cdp|\r\n");
  manager.Load();
  EXPECT_EQ(manager.status(), "2 plugin(s) listed");
  EXPECT_TRUE(manager.rows()[0].ticked && !manager.rows()[1].ticked);
  EXPECT_EQ(ReadOwn("plg.txt"), Text("1|a.cdp|first\r\n0|b.cdp|second\r\n1|gone.cdp|\r\n"));

  prompts.files = {UpCase(plugins_folder) + "c.cdp", scratch + "out.cdp",
                   plugins_folder + "sub\\c.cdp", std::nullopt, plugins_folder + "none.cdp"};
  for (int i = 0; i < 5; ++i) manager.Add();
  EXPECT_EQ(prompts.asked[0], "Quellix plugins ( *.cdp )|*.cdp");
  const std::string outside = "The plugin should be in Plugin Folder\r\n" + plugins_folder;
  EXPECT_EQ(prompts.informed,
            (Names{outside, outside, "There was an error in loading the Plugin."}));
  ASSERT_EQ(manager.rows().size(), 3u);
  EXPECT_EQ(manager.rows()[2].description, "about c.cdp");
  EXPECT_EQ(manager.status(), "3 plugin(s) listed");
  manager.Toggle(0);
  manager.Save();
  EXPECT_EQ(ReadOwn("plg.txt"), Text("0|a.cdp|first\r\n0|b.cdp|second\r\n0|c.cdp|about c.cdp\r\n"));
}

TEST_F(PluginWindowsTest, TheManagerDeletesWhatIsAgreedTo) {
  for (const char* name : {"a.cdp", "b.cdp", "c.cdp"}) WriteRecipe(name, "F|No|No|C:\\D\\x\r\n");
  WriteList("0|a.cdp|\r\n0|b.cdp|\r\n0|c.cdp|\r\n");
  manager.Load();
  manager.TickAll(true);
  prompts.yes_no = {false, true, true};
  for (const std::vector<size_t>& rows : {std::vector<size_t>{}, {0, 1}, {0, 1}}) {
    const bool has_deleted = manager.Delete(rows);
    EXPECT_EQ(has_deleted, manager.rows().size() == 1);
  }
  EXPECT_EQ(prompts.asked.back(),
            "Are you sure you want to delete selected Plugin(s)?\r\n\r\na.cdp\r\nb.cdp");
  EXPECT_FALSE(machine->Exists(plugins_folder + "a.cdp"));
  EXPECT_EQ(manager.status(), "1 plugin(s) listed");
  {
    const auto lock = machine->LockFile(plugins_folder + "c.cdp");
    manager.Delete(std::vector<size_t>{0});
  }
  EXPECT_EQ(manager.rows().size(), 1u) << "a file that stays keeps its row";
  EXPECT_EQ(prompts.informed.size(), 1u);
  ports.files.RemoveFile(plugins_folder + "c.cdp");
  prompts.yes_no = {true};
  manager.Delete(std::vector<size_t>{0});
  EXPECT_EQ(prompts.informed.size(), 1u) << "gone already is no error";
  manager.Save();
  EXPECT_EQ(ReadOwn("plg.txt"), "");
}

TEST_F(PluginWindowsTest, BeforeTheFirstStartTheFolderIsListed) {
  machine->MakeFolder(plugins_folder + "folder.cdp");
  for (const char* name : {"b.CDP", "A.cdp", "notes.txt"}) WriteRecipe(name, "D|x\r\n");
  manager.Load();
  manager.Toggle(1);
  manager.Save();
  EXPECT_EQ(ReadOwn("plg.txt"), Text("0|A.cdp|x\r\n1|b.CDP|x\r\n"));
  ASSERT_TRUE(editor.Load("b.CDP"));
  editor.Save();
  EXPECT_EQ(prompts.presets.back(), "b") << "saved under its own name, not as b.CDP.cdp";
}

TEST_F(PluginWindowsTest, RecipesStandByGroupsTellTheirCostAndKeepWhatTheEditorDoesNotShow) {
  const std::string others =
      "W|Yes|work is lost\r\nQ|of tomorrow|\r\nT|File|C:\\qx none\r\nG|Ark\r\n";
  WriteRecipe("a.cdp", "D|a\r\nG|Zoo\r\n");
  WriteRecipe("b.cdp", "D|b\r\nF|No|No|C:\\Temp\\*.qx|Yes\r\n" + others);
  WriteRecipe("c.cdp", "D|c\r\n");
  manager.Load();
  manager.Toggle(1);
  EXPECT_EQ(manager.status(), "This cannot be had again: work is lost");
  manager.Toggle(1);
  EXPECT_EQ(manager.status(), "3 plugin(s) listed");
  WriteSettings("[General]\r\nSelectRisky=0\r\n");
  manager.TickAll(true);
  manager.Save();
  EXPECT_EQ(ReadOwn("plg.txt"), Text("1|c.cdp|c\r\n0|b.cdp|b\r\n1|a.cdp|a\r\n"));
  EXPECT_TRUE(manager.GuideOf(0).is_found && !manager.GuideOf(1).is_found);
  WriteSettings("");
  manager.TickAll(true);
  EXPECT_TRUE(manager.rows()[1].ticked);
  ASSERT_TRUE(editor.Load("b.cdp"));
  editor.SetDescription("new");
  prompts.texts = {"b"};
  prompts.yes_no = {true};
  editor.Save();
  EXPECT_EQ(Read(plugins_folder + "b.cdp"),
            Text("D|new\r\nF|No|No|C:\\Temp\\*.qx|Yes\r\n" + others));
}

TEST_F(PluginWindowsTest, TheEditorAddsShowsAndRemovesWhatStandsBesideTheEntries) {
  const struct {
    size_t kind;
    const char *place, *last, *line, *refusal;
  } kRows[] = {
      {0, "C:\\qx\\keep.*", "", "X|File|C:\\qx\\keep.*", ""},
      {1, "C:\\qx\\kept", "ignored", "X|Path|C:\\qx\\kept", ""},
      {2, "HKEY_CURRENT_USER\\Software\\Qx", "", "X|Key|HKEY_CURRENT_USER\\Software\\Qx", ""},
      {3, "C:\\qx*\\a.exe", "", "T|File|C:\\qx*\\a.exe", ""},
      {4, "HKEY_CURRENT_USER\\Software\\Qx", "v", "T|Key|HKEY_CURRENT_USER\\Software\\Qx|v", ""},
      {5, "10.0", "", "T|Version|10.0", ""},
      {5, "6.1", "10.0", "T|Version|6.1|10.0", ""},
      {6, "Old", "", "", ""},
      {6, "New", "", "G|New", ""},
      {7, "a list is gone", "", "W|No|a list is gone", ""},
      {8, "work", "", "W|Yes|work", ""},
      {9, "qx.exe", "", "P|qx.exe", ""},
      {0, "", "", "", "Please fill in the field"},
      {0, "keep.txt", "", "", "The exclusion of keep.txt"},
      {3, "C:\\a\nb", "", "", "It holds a line break"},
      {5, "ten", "", "", "A version of Windows is two numbers"},
      {9, "C:\\qx\\qx.exe", "", "", "\"C:\\qx\\qx.exe\" is not the name"},
  };
  WriteRecipe("a.cdp", "D|a\r\nQ|of tomorrow|\r\n");
  ASSERT_TRUE(editor.Load("a.cdp"));
  std::string lines = "Q|of tomorrow|\r\n";
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.place);
    const bool added = editor.AddFurther({row.kind, row.place, row.last});
    EXPECT_EQ(added, *row.refusal == '\0');
    if (!added) ExpectRefused(added, row.refusal);
    if (*row.line != '\0') lines.append(row.line).append("\r\n");
  }
  EXPECT_EQ(FormatPlugin(editor.plugin()), Text("D|a\r\n" + lines));
  EXPECT_EQ(editor.plugin().cost + editor.plugin().group, "a list is gone; workNew");
  EXPECT_FALSE(editor.MayClose()) << "changes to lose";
  const auto [what, place, last] = editor.Further(0);
  EXPECT_EQ(what + "|" + place + "|" + last, "Q|of tomorrow |");
  EXPECT_EQ(editor.Further(5).what + editor.Further(5).last, "Only where a registry key isv");
  FilesForm files{"%PROGDIR%\\qx", "*.log", true, false, true, true};
  EXPECT_TRUE(editor.AddFiles(files) &&
              editor.AddKey({1, "Software\\Qx\\x", "v", false, false, true}));
  while (editor.further_count() > 1) editor.RemoveFurther(1);
  editor.RemoveFurther(7);
  EXPECT_EQ(FormatPlugin(editor.plugin()),
            Text("D|a\r\nF|Yes|No|%PROGDIR%\\qx\\*.log|Yes|Yes\r\n"
                 "R|No|No|HKEY_CURRENT_USER\\Software\\Qx\\x|v|Yes\r\nQ|of tomorrow|\r\n"));
  EXPECT_TRUE(editor.plugin().cost.empty() && editor.plugin().programs.empty());
}

TEST_F(PluginWindowsTest, AListThatCannotBeReadIsNotOverwritten) {
  machine->MakeFolder(own + "plg.txt");
  manager.Load();
  EXPECT_TRUE(LastTold().starts_with("The list of plug-ins could not be read. ")) << LastTold();
  manager.Save();
  EXPECT_EQ(prompts.informed.size(), 1u);
  EXPECT_THROW(ProcessTickedPlugins(context), Error);
  manager.AddSaved("new.cdp", "made meanwhile");
  manager.Save();
  EXPECT_TRUE(LastTold().starts_with("The list of plug-ins could not be saved. ")) << LastTold();
  ports.files.RemoveFolder(own + "plg.txt");
  for (const char* name : {"old.cdp", "new.cdp"}) WriteRecipe(name, "");
  WriteList("1|old.cdp|old\r\n");
  manager.Save();
  const std::string both = Text("1|old.cdp|old\r\n1|new.cdp|made meanwhile\r\n");
  EXPECT_EQ(ReadOwn("plg.txt"), both);

  // The same when it was read before.
  manager.Load();
  MakeUnreadable(own + "plg.txt");
  manager.Load();
  EXPECT_EQ(manager.status(), "0 plugin(s) listed");
  ports.files.RemoveFolder(own + "plg.txt");
  WriteList("0|old.cdp|changed\r\n");
  manager.Save();
  EXPECT_EQ(ReadOwn("plg.txt"), Text("0|old.cdp|changed\r\n"));
}

TEST_F(PluginWindowsTest, ProcessingTellsWhatItDid) {
  MakeFiles(scratch, "one\\a one\\b two\\c", std::string(1024, 'x'));
  WriteRecipe("one.cdp", "F|No|No|" + scratch + "one\\*.*\r\nF|No|No|%WINDIR%\\qx-none\r\n");
  WriteRecipe("two.cdp", "F|No|No|" + scratch + "two\\*.*\r\n");
  WriteList("1|one.cdp|\r\n0|two.cdp|\r\n");
  manager.Load();
  WriteSettings("[General]\r\nDelMethod=B\r\n");
  const std::string told = ProcessTickedPlugins(context);
  EXPECT_TRUE(
      told.starts_with("Files Deleted: 2\r\nSpace Gained: 2.00  KB\r\nBacked Up: 2 file(s)"
                       "\r\n"))
      << told;
  EXPECT_TRUE(told.ends_with("a user's profile.")) << told;
  EXPECT_EQ(view.statuses[1], "Working...Processing Plugins.");
  EXPECT_EQ(view.statuses.back(), "");
  EXPECT_TRUE(view.commands.clean && view.commands.menus && !view.commands.stop);
  ExpectOneFinishedArchive();
  EXPECT_TRUE(machine->Exists(scratch + "two\\c")) << "it is not ticked";
  {
    const auto lock = machine->LockFile(scratch + "two\\c");
    EXPECT_EQ(Process({1}).back(),
              "Processed selected plugin(s) Total Files Deleted: 0 Space Gained: none");
    EXPECT_TRUE(Holds(LastTold(), "\r\nSome files were not deleted"));
  }
  WriteSettings("[General]\r\nDelMethod=D\r\n");
  EXPECT_EQ(Process({1, 0}),
            (Names{"Processing plugin two.cdp", "Processing plugin one.cdp",
                   "Processed selected plugin(s) Total Files Deleted: 1 Space Gained: 1.00 KB"}));
  EXPECT_FALSE(machine->Exists(scratch + "two\\c"));
  machine->MakeFile(scratch + "two\\d", "");
  StopWhenStatusBegins("Deleting file");
  EXPECT_TRUE(Process({1, 0}).back().starts_with("Aborted by user"));
  WriteList("1|two.cdp|\r\n");
  machine->MakeFile(scratch + "two\\e", "");
  EXPECT_EQ(ProcessTickedPlugins(context), "");
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
}

TEST_F(PluginWindowsTest, NothingGoesAfterStop) {
  const std::string ini = "[s]\r\nk=1\r\n";
  machine->MakeFile(scratch + "in\\a", "1");
  machine->MakeFile(scratch + "a.ini", ini);
  machine->SetText(kUser, std::string(kKey) + "\\x", "v", "1");
  WriteRecipe("one.cdp",
              "F|No|No|" + scratch + "in\\*.*\r\nR|No|No|HKEY_CURRENT_USER\\" + kKey + "\\x|v\r\n");
  WriteRecipe("two.cdp", "I|a.ini|s|Yes||" + scratch + "\r\n");
  WriteList("1|one.cdp|\r\n1|two.cdp|\r\n");
  manager.Load();
  view.stops = true;
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"the manager",
       [&] {
         Process({0, 1});
       }},
      {"the main window", [&] { ProcessTickedPlugins(context); }},
      {"the item", [&] { Clean("CleanPlugins"); }}};
  for (const auto& [what, process] : kRows) {
    SCOPED_TRACE(what);
    process();
    EXPECT_TRUE(engine.state().AbortRequested && machine->Exists(scratch + "in\\a"));
    EXPECT_EQ(ports.files.ReadWholeFile(scratch + "a.ini"), ini);
    EXPECT_EQ(machine->ValueNames(kUser, std::string(kKey) + "\\x").size(), 1u);
  }
}

TEST_F(PluginWindowsTest, TheEditorRefusesFilesWithItsSentences) {
  editor.Create();
  const auto files = [&](const char* path, const char* file, std::string told) {
    FilesForm form{path, file, true, true};
    ExpectRefused(editor.AddFiles(form), told);
  };
  const auto chosen = [&](const char* path, size_t there, const Names& names, const char* told) {
    ExpectRefused(editor.AddChosenFiles({path, "", false, false}, there, names), told);
  };
  files("", "*.*", "You must provide a path");
  files("C:\\Temp", "", "You must provide a filename or specification");
  files("C:\\", "*.*", "C:\\*.* is not cleaned");
  files("%WINDIR%", "*.log", ports.system.WindowsFolder() + "\\*.log is not cleaned");
  files("%USERPROFILE%\\", "*.*", "");
  files("Temp", "*.*", "Temp\\*.* is not cleaned: it is not the full path");
  files("C:\\Temp\nF", "*.*", "It holds a line break or another");
  chosen("C:\\Temp", 0, {}, "No files to add");
  chosen("C:\\Temp", 2, {}, "Please select a file to add.");
  chosen("C:\\", 1, {"a"}, "C:\\a is not cleaned");
  EXPECT_EQ(FormatPlugin(editor.plugin()), Text("D|\r\n"));
  EXPECT_TRUE(editor.MayClose() && prompts.asked.empty()) << "nothing to lose";
}

TEST_F(PluginWindowsTest, TheEditorRefusesKeysAndEntriesWithItsSentences) {
  editor.Create();
  const auto key = [&](size_t root, const char* subkey, const char* told) {
    ExpectRefused(editor.AddKey({root, subkey, "v", true, false}), told);
  };
  const auto ini = [&](const char* file, const char* section, const char* value, const char* told) {
    ExpectRefused(editor.AddIni({file, section, value, false}), told);
  };
  const auto generate = [&](const char* subkey, const char* value, Generated what) {
    return editor.CanGenerate({1, subkey, value, false, false}, what);
  };
  key(1, "", "Please enter a subkey");
  key(1, "Software", "HKEY_CURRENT_USER\\Software is not cleaned");
  key(6, "a\\b", "HKEY_DYN_DATA\\a\\b is not cleaned");
  key(1, "Software\\Qx\1", "It holds a line break or another");
  ExpectRefused(generate("", "v", Generated::kSubkeys), "Please enter a subkey");
  ExpectRefused(generate("", "v", Generated::kValues), "Please enter a subkey");
  ExpectRefused(generate("a", "", Generated::kValues), "Please enter a value");
  ini("a.ini", "s", "v", "File Path is not valid");
  ini("C:\\a.ini", "", "v", "Please select a section");
  ini("C:\\a.ini", "s", "", "Please enter a value");
  ini("a\\b.ini", "s", "v", "a\\b.ini is not cleaned");
  ini("C:\\a.ini", "s\1Yes", "v", "It holds a line break or another");
  ini("C:\\a.ini", "s", "v\r", "It holds a line break or another");
  EXPECT_EQ(FormatPlugin(editor.plugin()), Text("D|\r\n"));
  EXPECT_TRUE(generate("a", "", Generated::kSubkeys));
}

TEST_F(PluginWindowsTest, AnEntryIsChangedInItsPlaceAndNoneIsListedTwice) {
  editor.Create();
  for (const char* file : {"a.tmp", "b.tmp", "c.tmp"}) {
    FilesForm form{.path = "C:\\D", .file = file};
    EXPECT_TRUE(editor.AddFiles(form));
  }
  const auto locations = [this] {
    Names names;
    for (const FileEntry& entry : editor.plugin().files) names.push_back(entry.location);
    return names;
  };
  FilesForm form = editor.FilesFormOf(1);
  EXPECT_EQ(form.path + "|" + form.file, "C:\\D|b.tmp");
  const struct {
    const char *name, *path, *file;
    const char* refusal;  // null where it is taken
    Names left;
  } kRows[] = {
      {"another's",
       "C:\\D",
       "c.tmp",
       "This is listed already.",
       {"C:\\D\\a.tmp", "C:\\D\\b.tmp", "C:\\D\\c.tmp"}},
      {"nothing",
       "",
       "x",
       "You must provide a path",
       {"C:\\D\\a.tmp", "C:\\D\\b.tmp", "C:\\D\\c.tmp"}},
      {"itself", "C:\\D", "b.tmp", nullptr, {"C:\\D\\a.tmp", "C:\\D\\b.tmp", "C:\\D\\c.tmp"}},
      {"another", "C:\\D\\", "z.tmp", nullptr, {"C:\\D\\a.tmp", "C:\\D\\z.tmp", "C:\\D\\c.tmp"}}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    prompts.informed.clear();
    FilesForm changed{.path = row.path, .file = row.file};
    EXPECT_EQ(editor.ChangeFile(1, changed), row.refusal == nullptr);
    EXPECT_EQ(prompts.informed, row.refusal ? Names{row.refusal} : Names{});
    EXPECT_EQ(locations(), row.left);
  }
  FilesForm twice{.path = "C:\\D", .file = "a.tmp"};
  EXPECT_FALSE(editor.AddFiles(twice));

  EXPECT_TRUE(editor.AddKey({.root = 1, .subkey = "Software\\Qx", .value = "v"}));
  RegistryForm key = editor.KeyFormOf(0);
  EXPECT_EQ(std::to_string(key.root) + key.subkey + "|" + key.value, "1Software\\Qx|v");
  EXPECT_FALSE(editor.AddKey(key)) << "it is there";
  key.value = "w";
  EXPECT_TRUE(editor.ChangeKey(0, key));
  EXPECT_EQ(editor.plugin().registry[0].value_name, "w");

  EXPECT_TRUE(editor.AddIni({.file = "C:\\D\\a.ini", .section = "s", .value = "v"}));
  IniForm ini = editor.IniFormOf(0);
  EXPECT_EQ(ini.file + "|" + ini.section + "|" + ini.value, "C:\\D\\a.ini|s|v");
  ini.value = "w";
  EXPECT_TRUE(editor.ChangeIni(0, ini));
  EXPECT_EQ(editor.plugin().ini[0].key, "w");

  EXPECT_TRUE(editor.AddFurther({6, "Ours", ""}) && editor.AddFurther({7, "time", ""}));
  EXPECT_FALSE(editor.AddFurther({7, "time", ""}));
  FurtherForm further = editor.FurtherFormOf(0).value();
  EXPECT_EQ(further.place, "Ours");
  further.place = "Others";
  EXPECT_TRUE(editor.ChangeFurther(0, further));
  EXPECT_EQ(editor.plugin().group, "Others");
  EXPECT_EQ(editor.Further(0).place + "|" + editor.Further(1).place, "Others|time");
}

TEST_F(PluginWindowsTest, AddingALocationDoesNotSearchAWholeDisk) {
  for (int i = 0; i < 1010; ++i) machine->MakeFolder(scratch + "many\\" + std::to_string(i));
  struct Counted : ForwardingFolder {
    Counted(std::unique_ptr<Folder> folder, size_t& listed)
        : ForwardingFolder(std::move(folder)), count(listed) {}
    void Enumerate(Detail detail, const EntryVisitor& visit) override {
      ++count;
      ForwardingFolder::Enumerate(detail, visit);
    }
    size_t& count;
  };
  size_t listed = 0;
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    if (!path.starts_with(scratch)) return folder;
    return std::unique_ptr<Folder>(new Counted(std::move(folder), listed));
  });
  const Machine counted = WithFiles(ports, files);
  PluginEditor other(counted, prompts, manager);
  FilesForm form{scratch + "many\\*\\*", "*.log", true, false};
  EXPECT_TRUE(other.AddFiles(form));
  EXPECT_EQ(listed, 1000u);
}

// A recipe of every kind, composed step by step.
struct ComposedRecipeTest : PluginWindowsTest {
  void Compose() {
    editor.Create();
    EXPECT_EQ(editor.Title(), "Plugin: NoName");
    editor.SetDescription("Größe\r\nF|");
    FilesForm all{scratch + "a\\", "*.*", true, true}, some{scratch + "b", "*.log", true, true};
    EXPECT_TRUE(editor.AddFiles(all) && editor.AddFiles(some));
    EXPECT_TRUE(all.delete_subfolders && !some.delete_subfolders);
    EXPECT_TRUE(editor.AddChosenFiles({scratch, "", true, true}, 2, Names{"x.txt", "y.txt"}));
    EXPECT_TRUE(editor.AddKey({1, "Software\\Qx", "left over", true, true}));
    const RegistryForm file{1, "Software\\Qx", "File", false, false};
    EXPECT_TRUE(editor.AddGenerated(file, Generated::kValues, {"9", "10", true, "0"}));
    EXPECT_TRUE(editor.AddGenerated({3, "S-1\\Qx\\List", "", true, false}, Generated::kSubkeys,
                                    {"1", "1", false, ""}));
    EXPECT_FALSE(editor.AddGenerated(file, Generated::kValues, {"2", "1", false, ""}));
    EXPECT_EQ(LastTold(), "The To value should be greater than from");
    EXPECT_TRUE(editor.AddIni({scratch + "a.ini", "s", "k", false}));
    EXPECT_TRUE(editor.AddIni({scratch + "a.ini", "all", "", true}));
    for (const size_t row : {2, 9}) editor.RemoveFile(row);
  }

  const std::string key = "HKEY_CURRENT_USER\\Software\\Qx|", mine = plugins_folder + "mine.cdp";
  const std::string expected =
      Text("D|Größe\r\nF|Yes|Yes|" + scratch + "a\\*.*\r\nF|Yes|No|" + scratch +
           "b\\*.log\r\nF|Yes|No|" + scratch + "y.txt\r\nR|Yes|Yes|" + key +
           "left over\r\nR|No|No|" + key + "File09\r\nR|No|No|" + key +
           "File10\r\nR|Yes|No|HKEY_USERS\\S-1\\Qx\\List1|\r\nI|a.ini|s|No|k|" + scratch +
           "\r\nI|a.ini|all|Yes||" + scratch + "\r\n");
};

TEST_F(ComposedRecipeTest, IsTheFileThatIsSaved) {
  Compose();
  EXPECT_FALSE(editor.MayClose()) << "there are changes to lose";
  prompts.texts = {std::nullopt, " ", "a\\b", "mine", "mine"};
  prompts.yes_no = {false};
  for (int i = 0; i < 4; ++i) editor.Save();
  EXPECT_EQ(Read(mine), expected);
  EXPECT_FALSE(machine->Exists(plugins_folder + "a\\b.cdp"));
  EXPECT_EQ(editor.Title(), "Plugin: mine.cdp");
  EXPECT_TRUE(editor.MayClose());
  WriteRecipe("mine.cdp", "D|other\r\n");
  editor.Save();
  EXPECT_EQ(prompts.asked.back(), "This plugin already exists. Overwrite?");
  EXPECT_EQ(prompts.asked[prompts.asked.size() - 2], "Please enter filename for the plugin");
  EXPECT_EQ(Read(mine), Text("D|other\r\n"));
  ASSERT_EQ(manager.rows().size(), 1u);
  EXPECT_TRUE(manager.rows()[0].ticked);
  EXPECT_EQ(manager.status(), "1 plug-in(s) listed");
}

TEST_F(ComposedRecipeTest, IsReadAgainAndSavedUnderItsName) {
  machine->MakeFile(mine, expected);
  manager.AddSaved("mine.cdp", "");
  manager.Toggle(0);
  ASSERT_TRUE(editor.Load("MINE.cdp"));
  EXPECT_EQ(FormatPlugin(editor.plugin()), expected);
  editor.SetDescription("new");
  editor.RemoveKey(0);
  editor.RemoveIni(0);
  prompts.texts = {"mine", "mine.cdp"};
  prompts.yes_no = {true};
  editor.Save();
  EXPECT_EQ(manager.rows().size(), 1u);
  EXPECT_EQ(manager.rows()[0].description, "new");
  EXPECT_FALSE(manager.rows()[0].ticked);
  editor.Save();
  EXPECT_TRUE(machine->Exists(plugins_folder + "mine.cdp.cdp")) << "typed with its extension";
  EXPECT_FALSE(editor.Load("none.cdp"));
  EXPECT_EQ(editor.Title(), "Plugin: mine.cdp.cdp");
}

}  // namespace
}  // namespace quellix::modPlugin
