// The rules of a plug-in's trial and of the window that chooses files.
#include "plugins/plugin_trial.h"

#include "plugins/file_picker.h"
#include "plugins/mod_plugin.h"
#include "support/plugin_fixture.h"

namespace quellix::modPlugin {
namespace {

using PluginTrialTest = PluginFixture;

TEST_F(PluginTrialTest, TheTrialTellsWhatProcessingWouldRemove) {
  for (const char* file : {"in\\a", "in\\sub\\b"}) machine->MakeFile(scratch + file, "123");
  machine->MakeFile(scratch + "a.ini", "[s]\r\nk=1\r\n");
  machine->SetText(kUser, std::string(kKey) + "\\x", "v", "1");
  const Plugin plugin = ParsePlugin(
      Text("F|Yes|Yes|" + scratch + "in\\*.*\r\nF|No|No|%WINDIR%\\*.*\r\nI|a.ini|s|Yes||" +
           scratch + "\r\nR|Yes|No|HKEY_CURRENT_USER\\" + kKey + "\\x|\r\n"));
  const auto before = machine->Tree(scratch);
  PluginTrial trial(ports);
  trial.Run(plugin, view);
  ASSERT_EQ(trial.count(), 5u);
  EXPECT_EQ(trial.What(0) + " " + trial.Where(0), "INI section " + scratch + "a.ini, [s]");
  EXPECT_EQ(trial.What(1), "Registry key");
  EXPECT_EQ(trial.What(4) + " " + trial.Where(4), "Folder " + scratch + "in\\sub");
  EXPECT_EQ(trial.Summary(),
            "Would remove 2 files (6 Bytes) and 3 other things. Nothing was removed.");
  EXPECT_TRUE(Holds(trial.notes(), "is not cleaned"));
  EXPECT_EQ(machine->Tree(scratch), before);
  EXPECT_TRUE(machine->KeyExists(kUser, std::string(kKey) + "\\x"));
  PluginTrial stopped(ports);
  view.stops = true;
  stopped.Run(plugin, view);
  EXPECT_TRUE(stopped.Summary().starts_with("Stopped; found so far: 0 files")) << stopped.Summary();
}

TEST_F(PluginTrialTest, ThePickerLeadsThroughFolders) {
  MakeFiles(scratch, "B\\x.txt B\\A.txt B\\sub\\y a\\z", "");
  machine->MakeFolderLink(scratch + "link", scratch + "B");
  FilePicker picker(ports);
  EXPECT_TRUE(EqualsNoCase(picker.drives()[picker.drive()], scratch.substr(0, 2)));
  const auto enter = [&](const std::string& name) {
    for (size_t row = picker.open_row(); row < picker.folders().size(); ++row) {
      if (EqualsNoCase(picker.folders()[row].name, name)) return picker.OpenFolder(row);
    }
    ADD_FAILURE() << "no folder " << name;
  };
  for (const std::string& part : Split(scratch.substr(3, scratch.size() - 4), '\\')) enter(part);
  EXPECT_TRUE(EqualsNoCase(picker.Folder() + "\\", scratch));
  const size_t here = picker.open_row();
  ASSERT_EQ(picker.folders().size(), here + 3) << "links are left out";
  EXPECT_EQ(picker.folders()[here + 1].name, "a");
  enter("b");
  EXPECT_EQ(picker.files(), (Names{"A.txt", "x.txt"}));
  EXPECT_EQ(picker.folders().back().name, "sub");
  picker.OpenFolder(0);
  EXPECT_EQ(picker.Folder(), scratch.substr(0, 3));
  picker.OpenFolder(999);
  picker.ChooseDrive(999);
  EXPECT_EQ(picker.Folder(), scratch.substr(0, 3));
}

}  // namespace
}  // namespace quellix::modPlugin
