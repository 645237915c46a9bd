// Another user of the running Windows, whose registry is loaded for the time.
#include "platform/win32/other_user.h"

#include <cstdlib>
#include <functional>

#include "app/preview_run.h"
#include "app/undo_run.h"
#include "backup/registry_undo.h"
#include "platform/error.h"
#include "run/protected_places.h"
#include "support/key_link_win32.h"
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

TEST_F(OtherUserTest, FoldersThatHeMovedAreProtectedWhileHisRegistryIsLoaded) {
  const std::string his = user.sid +
                          "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
                          "User Shell Folders";
  const std::string documents = scratch + "his documents", music = user.profile + "\\tunes";
  const std::string free = scratch + "free";
  for (const std::string& folder : {documents, music, free}) machine->MakeFolder(folder);
  machine->SetText(RegistryRoot::kUsers, his, "Personal", documents);
  machine->SetText(RegistryRoot::kUsers, his, "My Music", "%USERPROFILE%\\tunes");
  machine->SetText(RegistryRoot::kUsers, his, "My Video", "\\\\server\\his");
  ProtectedPlaces places(ports, own + "Backup\\");
  for (const std::string& folder : {documents, music, free}) {
    const auto open = ports.files.OpenFolder(folder);
    const std::string why = places.WhyNot(*open, "*.*", true, Claim::kItem).english;
    EXPECT_EQ(why.empty(), folder == free) << folder;
  }
  machine->RemoveRegistryTree(RegistryRoot::kUsers, user.sid);
}

TEST_F(OtherUserTest, HisFoldersAndVariablesAreTold) {
  StoreHive();
  _putenv("QxOwn=mine");
  OtherUserMachine other(ports.program_folder, user);
  System& system = other.machine().system;
  const std::string profile = user.profile;
  const std::pair<const char*, std::optional<std::string>> kRows[] = {
      {"userprofile", profile},
      {"APPDATA", profile + "\\AppData\\Roaming"},
      {"LocalAppData", profile + "\\AppData\\Local"},
      {"TEMP", profile + "\\his temp"},
      {"USERNAME", "qx2"},
      {"HOMEPATH", "\\users\\qx2"},
      {"windir", ports.system.Environment("windir")},
      {"ProgramFiles", ports.system.Environment("ProgramFiles")},
      {"QxOwn", std::nullopt}};
  for (const auto& [name, value] : kRows) EXPECT_EQ(system.Environment(name), value) << name;
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
  for (const std::string& out : {scratch + "x", std::string("%USERPROFILE%\\..\\qx3"),
                                 std::string("%USERPROFILE%x"), std::string("none")}) {
    StoreHive(out);
    OtherUserMachine other(ports.program_folder, user);
    EXPECT_EQ(other.machine().system.TempFolder(), usual) << out;
    EXPECT_EQ(other.machine().system.Environment("TEMP").has_value(), out == "none") << out;
  }
}

// What he may name and lay as he likes, and what a run then does.
TEST_F(OtherUserTest, WhatHeNamesOutsideStaysInEveryRun) {
  const std::string recent = scratch + "recent\\a.lnk", cached = scratch + "ff\\cache2\\a";
  for (const std::string& file : {recent, cached, scratch + "ff\\prefs.js"})
    machine->MakeFile(file, "1");
  machine->SetText(kUser,
                   std::string(kSeed) +
                       "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                   "Recent", scratch + "recent");
  machine->MakeFile(user.profile + "\\AppData\\Roaming\\Mozilla\\Firefox\\profiles.ini",
                    "[Profile0]\r\nIsRelative=0\r\nPath=" + scratch + "ff\r\n");
  StoreHive();
  const Names before = machine->Tree(scratch);
  OtherUserMachine other(ports.program_folder, user);
  Engine run(other.machine(), view);
  for (const char* key : {"CleanRecentDocs", "CleanMozillaCache"}) {
    run.RunOneItem(*FindItem(key));
    const auto& entries = run.state().Entries->all;
    EXPECT_TRUE(std::ranges::any_of(entries, [](const RunEntry& entry) {
      return Holds(entry.note, "lies outside the profile of qx2.");
    })) << key;
    EXPECT_EQ(machine->Tree(scratch), before) << key;
  }
  EXPECT_THROW(other.machine().shell.OpenShortcuts(), Error);
}

// What was his is put back as his, and nowhere else.
struct OtherUserUndoTest : OtherUserFixture {
  OtherUserUndoTest() {
    StoreHive();
    WriteSettings("[General]\r\nDelMethod=B\r\n");
    OtherUserMachine other(ports.program_folder, user);
    Engine his(other.machine(), view);
    for (const char* key : {"CleanTempFiles", "CleanRunMRU"})
      his.selection().SetChecked(*FindItem(key), true);
    his.RunCleaning();
    run = his.state().Entries;
    EXPECT_EQ(machine->Tree(his_temp), Names{"b.keep"});
  }
  ~OtherUserUndoTest() override {
    RegUnLoadKeyW(HKEY_USERS, Wide(user.sid).c_str());
    machine->RemoveRegistryTree(kMachine, "Software\\QxOthers");
  }
  std::string Undo(const Machine& on) {
    NoPrompts prompts;
    return Joined(UndoRun(on, *run, prompts, {}).problems);
  }
  // As when he logs on.
  void LogOn() {
    for (const char* name : {"SeBackupPrivilege", "SeRestorePrivilege"})
      ports.session.EnablePrivilege(name);
    const std::wstring file = Wide(user.profile + "\\NTUSER.DAT");
    ASSERT_EQ(RegLoadKeyW(HKEY_USERS, Wide(user.sid).c_str(), file.c_str()), ERROR_SUCCESS);
    ports.registry.Open(RegistryRoot::kUsers, his_list, RegistryAccess::kWrite)->DeleteValue("a");
  }
  Names HisValues() { return machine->ValueNames(RegistryRoot::kUsers, his_list); }

  const std::string his_list = user.sid + "\\" + kRunMruKey;
  std::shared_ptr<RunEntries> run;
};

TEST_F(OtherUserUndoTest, HisKeysAreHisOwnAlsoWhereHisLinksLeadElsewhere) {
  EXPECT_TRUE(Holds(Undo(ports), "he is not logged on"));
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey), Names{"a"}) << "mine";
  {
    OtherUserMachine other(ports.program_folder, user);
    const auto open = [&] {
      return other.machine().registry.Open(kUser, kRunMruKey, RegistryAccess::kWrite);
    };
    open()->DeleteValue("a");
    EXPECT_EQ(Undo(other.machine()), "");
    EXPECT_TRUE(open()->QueryValue("a"));
  }
  LogOn();
  machine->SetText(kMachine, "Software\\QxOthers", "v", "x");
  machine->RemoveRegistryTree(RegistryRoot::kUsers, his_list);
  {
    const KeyLink link(Wide(his_list), L"\\Registry\\Machine\\Software\\QxOthers", HKEY_USERS);
    ASSERT_TRUE(link.made());
    EXPECT_TRUE(Holds(Undo(ports), "is not this user's own"));
    for (const std::string& spelled : {his_list, "s" + his_list.substr(1)})
      EXPECT_THROW(ports.registry.Create(RegistryRoot::kUsers, spelled), Error) << spelled;
    EXPECT_EQ(machine->ValueNames(kMachine, "Software\\QxOthers"), Names{"v"});
  }
  EXPECT_EQ(Undo(ports), "");
  EXPECT_EQ(HisValues(), Names{"a"});
}

struct OtherUserFilesTest : OtherUserFixture {
  OtherUserFilesTest() {
    for (const std::string& file : {elsewhere + "Temp\\a.tmp", home + "\\Temp\\b.tmp",
                                    home + "\\a..b\\c.tmp", own_folder + "\\log.txt"})
      machine->MakeFile(file, "1");
    machine->MakeFolderLink(home + "\\led", scratch + "elsewhere");
    machine->MakeFolderLink(home + "\\a..b\\led", scratch + "elsewhere");
  }
  const std::string home = scratch + "home", elsewhere = scratch + "elsewhere\\",
                    own_folder = scratch + "deep\\own";
  OtherUserFiles files{ports.files, {"he", "S-1-5-21-7", home}, {own_folder, scratch, "C:\\"}};
};

TEST_F(OtherUserFilesTest, NothingOutsideIsChangedByAnyPath) {
  const std::string in = elsewhere + "Temp";
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"by a link", [&] { files.RemoveFile(home + "\\LED\\Temp\\a.tmp"); }},
      {"behind a..b", [&] { files.RemoveFile(home + "\\a..b\\led\\Temp\\a.tmp"); }},
      {"upwards", [&] { files.RemoveFile(home + "\\..\\elsewhere\\Temp\\a.tmp"); }},
      {"written by a link", [&] { files.WriteWholeFile(home + "\\led\\Temp\\a.tmp", "2"); }},
      {"written upwards", [&] { files.WriteWholeFile(home + "\\..\\elsewhere\\x", "2"); }},
      {"a file", [&] { files.RemoveFile(in + "\\a.tmp"); }},
      {"a folder", [&] { files.RemoveFolder(in); }},
      {"its own folder", [&] { files.RemoveFolder(home); }},
      {"below one", [&] { files.OpenFolder(elsewhere)->OpenFolder("Temp")->RemoveFile("a.tmp"); }},
      {"below the drive", [&] { files.OpenFolder("C:\\")->CreateFolder("qx none"); }},
      {"written", [&] { files.WriteWholeFile(in + "\\a.tmp", "2"); }},
      {"opened", [&] { files.Open(in + "\\a.tmp", OpenMode::kWrite); }},
      {"made", [&] { files.Open(in + "\\c.tmp", OpenMode::kCreateNew); }},
      {"a folder made", [&] { files.CreateFolder(in + "\\c"); }},
      {"renamed", [&] { files.Rename(in + "\\a.tmp", in + "\\c.tmp"); }},
      {"recycled", [&] { files.Recycle(in + "\\a.tmp"); }},
      {"removable", [&] { files.OpenFolder(in)->RequireRemovable("a.tmp"); }},
      {"attributes", [&] { files.SetAttributes(in + "\\a.tmp", kHidden); }},
      {"moved out",
       [&] { files.OpenFolder(home + "\\Temp")->MoveTo("b.tmp", *files.OpenFolder(in), "b"); }},
      {"INI edit", [&] {
         const IniEntry entry{"a", "b", "c"};
         IniFiles(files, ports.system).Write(in + "\\a.tmp", std::span(&entry, 1));
       }}};
  const Names before = machine->Tree(scratch);
  for (const auto& [name, change] : kRows) {
    EXPECT_THROW(change(), Error) << name;
    EXPECT_EQ(machine->Tree(scratch), before) << name;
    EXPECT_EQ(Read(in + "\\a.tmp"), "1") << name;
    EXPECT_EQ(ports.files.Look(in + "\\a.tmp")->attributes & kHidden, 0u) << name;
  }
}

TEST_F(OtherUserFilesTest, HisOwnAndTheProgramsOwnAreAsEver) {
  const std::string in = elsewhere + "Temp\\";
  for (const std::string& folder : {home, home + "\\Temp\\", home + "\\a..b", in})
    EXPECT_TRUE(files.OpenFolder(folder)) << folder;
  EXPECT_EQ(files.ReadWholeFile(in + "a.tmp", 9), "1") << "read";
  EXPECT_EQ(files.ReadWholeFile(home + "\\a..b\\c.tmp", 9), "1");
  EXPECT_TRUE(files.Look(home + "\\led")->is_link);
  for (const std::string& path : {home + "\\led\\Temp", home + "\\led\\Temp\\a.tmp",
                                  home + "\\..\\elsewhere", std::string("\\\\qx\\share")})
    EXPECT_FALSE(files.Look(path)) << path;
  EXPECT_FALSE(files.OpenFolder("\\\\localhost\\c$"));
  files.WriteWholeFile(home + "\\Temp\\b.tmp", "22");
  EXPECT_EQ(Read(home + "\\Temp\\b.tmp"), "22");
  for (const std::string& file : {home + "\\Temp\\b.tmp", home + "\\a..b\\c.tmp"}) {
    files.RemoveFile(file);
    EXPECT_FALSE(machine->Exists(file));
  }
  files.RemoveFile(own_folder + "\\log.txt");
  ports.files.RemoveFolder(own_folder);
  ports.files.RemoveFolder(scratch + "deep");
  MakeFolders(files, own_folder);
  files.WriteWholeFile(own_folder + "\\log.txt", "3");
  EXPECT_EQ(Read(own_folder + "\\log.txt"), "3");
}

TEST_F(OtherUserTest, OneRunAtATimeThatAsksNobodyToClose) {
  StoreHive();
  OtherUserMachine other(ports.program_folder, user);
  EXPECT_THROW(OtherUserMachine(ports.program_folder, user), Error);
  const Machine his = other.machine();
  EXPECT_TRUE(his.system.IsProgramRunning("engine_tests.exe"));
  EXPECT_FALSE(his.session.AskToClose({.file_name = "explorer.exe"}));
  auto key = std::make_unique<UniqueKey>();
  RegOpenKeyExW(HKEY_USERS, Wide("Quellix " + user.sid).c_str(), 0, KEY_READ, key->Put());
  int breaths = 0;
  EXPECT_FALSE(other.Unload([&breaths] { ++breaths; })) << "a key is open";
  EXPECT_GT(breaths, 0) << "whoever waits can do something else";
  key.reset();
  EXPECT_TRUE(other.Unload());
  EXPECT_FALSE(IsLoaded());
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
