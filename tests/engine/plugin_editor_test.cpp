// The rules of the editor of plug-ins and of its name generator.
#include "support/forwarding_files.h"
#include "support/plugin_windows_fixture.h"

namespace quellix::modPlugin {
namespace {

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
  const auto listed = [this] {
    Names names;
    for (const FileEntry& entry : editor.plugin().files)
      names.push_back(ReplaceNoCase(entry.location, "C:\\D\\", ""));
    return Joined(names);
  };
  FilesForm form = editor.FilesFormOf(1);
  EXPECT_EQ(form.path + "|" + form.file, "C:\\D|b.tmp");
  const struct {
    const char *name, *path, *file;
    const char* refusal;  // null where it is taken
    const char* left = "a.tmp b.tmp c.tmp";
  } kRows[] = {{"another's", "C:\\D", "c.tmp", "This is listed already."},
               {"nothing", "", "x", "You must provide a path"},
               {"itself", "C:\\D", "b.tmp", nullptr},
               {"another", "C:\\D\\", "z.tmp", nullptr, "a.tmp z.tmp c.tmp"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    prompts.informed.clear();
    FilesForm changed{.path = row.path, .file = row.file};
    EXPECT_EQ(editor.ChangeFile(1, changed), row.refusal == nullptr);
    EXPECT_EQ(prompts.informed, row.refusal ? Names{row.refusal} : Names{});
    EXPECT_EQ(listed(), row.left);
  }
  FilesForm twice{.path = "C:\\D", .file = "a.tmp"};
  EXPECT_FALSE(editor.AddFiles(twice));
}

TEST_F(PluginWindowsTest, KeysIniPartsAndFurtherEntriesAreChangedInTheirPlace) {
  editor.Create();
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
