// Another user of the running Windows, whose registry is loaded for the time.
#include "platform/win32/other_user.h"

#include <cstdlib>

#include "app/preview_run.h"
#include "backup/registry_undo.h"
#include "platform/error.h"
#include "support/other_user_fixture_win32.h"

namespace quellix {
namespace {

using OtherUserTest = OtherUserFixture;

TEST_F(OtherUserTest, WhatIsHisIsCleanedAndNothingOfAnybodyElse) {
  StoreHive();
  machine->MakeFile(scratch + "binned", "1");
  ports.files.Recycle(scratch + "binned");
  const uint64_t binned = ports.shell.QueryRecycleBin().items;
  {
    OtherUserMachine other(ports.program_folder, user);
    const Machine his = other.machine();
    EXPECT_TRUE(IsLoaded());
    Engine run(his, view);
    for (const Item& item : AllItems()) run.selection().SetChecked(item, false);
    for (const char* key : {"CleanTempFiles", "CleanRunMRU", "CleanRecycleBin", "CleanClipboard"})
      run.selection().SetChecked(*FindItem(key), true);
    PreviewRun preview(his, view);
    preview.Run(run.selection());
    for (const char* files : {"1", "0"}) {
      run.RunCleaning();
      EXPECT_TRUE(Holds(run.state().RunLog, std::string("Files Deleted: ") + files));
      EXPECT_EQ(machine->Tree(his_temp), Names{"b.keep"});
    }
    EXPECT_EQ(preview.entries()->all.size(), 3u) << "a file, what is kept, and a value";
    const auto list = his.registry.Open(kUser, kRunMruKey, RegistryAccess::kRead);
    EXPECT_TRUE(list && !list->ValueAt(0));
    EXPECT_EQ(run.state().Outcomes[size_t(FindItem("CleanRecycleBin")->run_order) - 1],
              Outcome::kNotPossible);
  }
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey), Names{"a"});
  EXPECT_TRUE(machine->Exists(temp + "mine.tmp"));
  EXPECT_EQ(ports.shell.QueryRecycleBin().items, binned);
}

TEST_F(OtherUserTest, HisFoldersAndVariablesAreTold) {
  StoreHive();
  _putenv("QxOwn=mine");
  OtherUserMachine other(ports.program_folder, user);
  System& system = other.machine().system;
  const std::string profile = user.profile;
  const struct {
    const char* name;
    std::optional<std::string> value;
  } kRows[] = {{"userprofile", profile},
               {"APPDATA", profile + "\\AppData\\Roaming"},
               {"LocalAppData", profile + "\\AppData\\Local"},
               {"TEMP", profile + "\\his temp"},
               {"USERNAME", "qx2"},
               {"HOMEPATH", "\\users\\qx2"},
               {"windir", ports.system.Environment("windir")},
               {"ProgramFiles", ports.system.Environment("ProgramFiles")},
               {"QxOwn", std::nullopt}};
  for (const auto& row : kRows) EXPECT_EQ(system.Environment(row.name), row.value) << row.name;
  EXPECT_EQ(system.TempFolder(), his_temp);
  // Elsewhere his keys are not the current user's.
  Registry& registry = other.machine().registry;
  const PreviewMachine preview(other.machine());
  for (Registry* const each : {&registry, &preview.machine().registry}) {
    RegistryUndo undo;
    undo.AddValue(*each, kUser, kRunMruKey, "a");
    undo.AddTree(*each, kUser, "Environment");
    undo.Store(ports, scratch);
    const std::string text = FromUtf16Bytes(Read(undo.path()));
    for (const std::string key : {"Environment]", kRunMruKey})
      EXPECT_TRUE(Holds(text, "[HKEY_USERS\\" + user.sid + "\\" + key));
    EXPECT_EQ(each->LastingName(kUser, "Software").key, user.sid + "\\Software");
    EXPECT_EQ(each->LastingName(kMachine, "Software").key, "Software");
  }
  EXPECT_EQ(ports.registry.LastingName(kUser, "Software").root, kUser);
}

// He must have nothing removed that is another's.
TEST_F(OtherUserTest, WhatLeadsOutOfHisProfileIsNotFollowed) {
  const std::string usual = user.profile + "\\AppData\\Local\\Temp\\";
  for (const std::string& out :
       {scratch + "x", std::string("%USERPROFILE%\\..\\qx3"), std::string("%USERPROFILE%x")}) {
    StoreHive(out);
    OtherUserMachine other(ports.program_folder, user);
    EXPECT_EQ(other.machine().system.TempFolder(), usual) << out;
    EXPECT_EQ(other.machine().system.Environment("TEMP"), std::nullopt) << out;
  }
  const std::string home = scratch + "home", elsewhere = scratch + "elsewhere\\Temp\\";
  machine->MakeFile(elsewhere + "a.tmp", "1");
  machine->MakeFile(home + "\\Temp\\b.tmp", "1");
  machine->MakeFolderLink(home + "\\led", scratch + "elsewhere");
  OtherUserFiles files(ports.files, home);
  EXPECT_THROW(files.OpenFolder(home + "\\led\\Temp"), Error);
  EXPECT_THROW(files.RemoveFile(home + "\\LED\\Temp\\a.tmp"), Error);
  EXPECT_TRUE(machine->Exists(elsewhere + "a.tmp"));
  for (const std::string& folder : {home, home + "\\Temp\\", elsewhere})
    EXPECT_TRUE(files.OpenFolder(folder)) << folder;
  files.RemoveFile(home + "\\Temp\\b.tmp");
}

TEST_F(OtherUserTest, UsersAreThoseWithAProfileAndWithoutARegistryNothingIsOpened) {
  Names names;
  for (const UserProfile& each : UsersHere(ports)) names.push_back(each.name);
  EXPECT_EQ(std::ranges::count(names, "qx2"), 1);
  EXPECT_EQ(std::ranges::count(names, "qx3"), 0);
  EXPECT_THROW(OtherUserMachine(ports.program_folder, user), Error) << "no NTUSER.DAT";
  machine->MakeFolder(user.profile + "\\NTUSER.DAT");
  EXPECT_THROW(OtherUserMachine(ports.program_folder, user), Error) << "a folder";
  ports.files.RemoveFolder(user.profile + "\\NTUSER.DAT");
  EXPECT_FALSE(IsLoaded());
}

}  // namespace
}  // namespace quellix
