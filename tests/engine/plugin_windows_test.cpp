// The rules of the plug-in manager, and what it shares with the editor.
#include "support/plugin_windows_fixture.h"

namespace quellix::modPlugin {
namespace {

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

// Kind, place, last, the line that is written, or why none is.
const std::tuple<size_t, const char*, const char*, const char*, const char*> kFurther[] = {
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

TEST_F(PluginWindowsTest, TheEditorAddsShowsAndRemovesWhatStandsBesideTheEntries) {
  WriteRecipe("a.cdp", "D|a\r\nQ|of tomorrow|\r\n");
  ASSERT_TRUE(editor.Load("a.cdp"));
  std::string lines = "Q|of tomorrow|\r\n";
  for (const auto& [kind, place, last, line, refusal] : kFurther) {
    SCOPED_TRACE(place);
    const bool added = editor.AddFurther({kind, place, last});
    EXPECT_EQ(added, *refusal == '\0');
    if (!added) ExpectRefused(added, refusal);
    if (*line != '\0') lines.append(line).append("\r\n");
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

}  // namespace
}  // namespace quellix::modPlugin
