#include "backup/entry_path.h"
#include "backup/leftovers.h"
#include "support/backup_fixture.h"

namespace quellix {
namespace {

using BackupRestoreTest = RestoreFixture;

TEST(EntryPathTest, PathsThatLeaveTheirFolderAreRefusedByName) {
  for (const char* name :
       {"../a", "a/../../b", "/a",    "a//b",     "C:/a",        "a/b:stream", "a\\b",   "./a",
        "a/.",  "NUL",       "a/con", "Com1.txt", "lpt\xC2\xB9", "aux .h",     "conin$", "a.",
        "a/b ", "a\x01",     "what?", "",         "x/../"}) {
    const auto refusal = RefusalOf(name);
    ASSERT_TRUE(refusal) << name;
    EXPECT_NE(refusal->find(std::string("\"") + name + "\" is not restored"), std::string::npos);
  }
  for (const char* name : {"NUL", "a/con", "aux .h", "a.", "a/b "})
    EXPECT_FALSE(RefusalOf(name, true)) << name << " of an archive of ours";
  for (const char* name : {"../a", "a\\b", "a:b", "a//b", "a\x01"})
    EXPECT_TRUE(RefusalOf(name, true)) << name;
  for (const char* name : {"a", "Users/Me/a.txt", "..a", "a..b/c", "console", "com", "COM10",
                           "nul_", "\xE6\x97\xA5/\xD0\x96", "folder/"})
    EXPECT_FALSE(RefusalOf(name)) << name;
}

// As the archives of older programs have them.
TEST_F(BackupRestoreTest, NamesThatAreNotUtf8AreReadInTheirCodePage) {
  AddArchive("C_010120200000.zip", {"old/M\x81ll \xE1", "new/\xC3\xBC"}, 0);
  EXPECT_EQ(backups.ListEntries("C_010120200000.zip")[0].path, "old\\M\xC3\xBCll \xC3\x9F");
  EXPECT_EQ(Restore({}, scratch + "into").restored, 2u);
  EXPECT_EQ(Read(scratch + "into\\old\\M\xC3\xBCll \xC3\x9F"), "old/M\x81ll \xE1");
  EXPECT_EQ(Read(scratch + "into\\new\\\xC3\xBC"), "new/\xC3\xBC");
}

TEST_F(BackupRestoreTest, BytesNamesTimesAndAttributesComeBack) {
  const std::tuple<std::string, std::string, uint32_t, int64_t> files[] = {
      {"read only.txt", "kept", kReadOnly | kHidden, 132539328001234567},
      {"deep\\\xD0\x96\\\xE6\x97\xA5\xE6\x9C\xAC.bin", std::string(100000, 'b'), kArchive,
       131000000000000000},
      {"empty", "", kNormal, 125911584000000000},
      {"large", std::string(2500000, 'L') + "end", kSystem | kArchive, 133000000007654321}};
  std::map<std::string, FileInfo> before;
  for (const auto& [name, bytes, attributes, time] : files) {
    machine->MakeFile(tree + name, bytes);
    machine->SetLastWrite(tree + name, time);
    ports.files.SetAttributes(tree + name, attributes);
    before[name] = Look(tree + name);
  }
  const Names names = machine->Tree(tree);
  Clean(tree);
  for (const char* folder : {"deep\\\xD0\x96", "deep"}) ports.files.RemoveFolder(tree + folder);
  for (const std::string& to : {std::string(), scratch + "else where\\new"}) {
    SCOPED_TRACE(to);
    if (!to.empty()) CutArchive();  // the second time from what is left of it
    const RestoreResult result = Restore({}, to);
    EXPECT_EQ(result.restored, 4u);
    EXPECT_EQ(result.problems, Names());
    const std::string root = to.empty() ? tree : to + "\\" + tree.substr(3);
    EXPECT_EQ(machine->Tree(root), names);
    for (const auto& [name, bytes, attributes, time] : files) {
      SCOPED_TRACE(name);
      EXPECT_EQ(Read(root + name), bytes);
      EXPECT_EQ(Look(root + name).last_write, before[name].last_write);
      EXPECT_EQ(Look(root + name).attributes, before[name].attributes);
    }
  }
}

TEST_F(BackupRestoreTest, ASparseFileHasTheZerosOfItsEndAgain) {
  const std::string bytes = "x" + std::string(3 << 20, '\0'), archive = "C_010120200000.zip";
  machine->MakeFile(scratch + "source", bytes);
  machine->MakeFolder(safe);
  ZipWriter writer(ports.files.Open(safe + archive, OpenMode::kReadAndCreate), 0);
  writer.Add({.name = Stored(tree + "sparse"), .attributes = kSparse},
             *ports.files.Open(scratch + "source", OpenMode::kRead), {});
  writer.Finish();
  EXPECT_EQ(Restore().restored, 1u);
  EXPECT_TRUE(Read(tree + "sparse") == bytes);
}

TEST_F(BackupRestoreTest, FilesThatAreThereAreTreatedAsChosen) {
  constexpr int64_t kOld = 131000000000000000, kBackedUp = 132000000000000000,
                    kYoung = 133000000000000000;
  for (const char* name : {"old", "young", "gone"}) {
    machine->MakeFile(tree + name, "backup");
    machine->SetLastWrite(tree + name, kBackedUp);
  }
  CleanInOrder({"old", "young", "gone"});
  using A = OverwriteAnswer;
  using enum OverwriteMode;
  // What is restored of the two then, how many are asked for, and whether that was cancelled.
  const std::tuple<OverwriteMode, std::vector<A>, bool, bool, size_t, bool> kRows[] = {
      {kAlways, {}, true, true, 0, false},
      {kNewer, {}, true, false, 0, false},
      {kNever, {}, false, false, 0, false},
      {kAsk, {A::kYes, A::kNo}, true, false, 2, false},
      {kAsk, {A::kNo, A::kYes}, false, true, 2, false},
      {kAsk, {A::kAll}, true, true, 1, false},
      {kAsk, {A::kNone}, false, false, 1, false},
      {kAsk, {}, false, false, 1, true}};
  for (const auto& [mode, answers, old, young, asked, cancelled] : kRows) {
    SCOPED_TRACE(testing::PrintToString(std::tuple(mode, answers)));
    for (const char* name : {"old", "young"}) machine->MakeFile(tree + name, "there");
    machine->SetLastWrite(tree + "old", kOld);
    machine->SetLastWrite(tree + "young", kYoung);
    prompts.asked.clear();
    prompts.overwrites.assign(answers.begin(), answers.end());
    const RestoreResult result =
        Restore({tree.substr(3) + "OLD", tree.substr(3) + "young"}, "", mode);
    EXPECT_EQ(result.problems, Names());
    EXPECT_EQ(result.cancelled, cancelled);
    EXPECT_EQ(prompts.asked.size(), asked);
    EXPECT_EQ(Read(tree + "old"), old ? "backup" : "there");
    EXPECT_EQ(Read(tree + "young"), young ? "backup" : "there");
    EXPECT_FALSE(machine->Exists(tree + "gone"));
  }
  machine->MakeFile(tree + "old", "there");
  machine->SetLastWrite(tree + "old", kBackedUp);
  EXPECT_EQ(Restore({tree.substr(3) + "old"}, "", kNewer).restored, 0u);
  EXPECT_EQ(Read(tree + "old"), "there") << "one of the same time is not newer";
}

TEST_F(BackupRestoreTest, NothingIsWrittenThroughLinksOrOverFolders) {
  MakeFiles(tree, "sub\\dear plain", "backup");
  Clean(tree);
  const std::string outside = scratch + "outside\\";
  machine->MakeFile(outside + "dear", "outside");
  ports.files.RemoveFolder(tree + "sub");
  machine->MakeFolderLink(tree + "sub", outside);
  machine->MakeFolder(tree + "plain");
  const RestoreResult result = Restore({}, "", OverwriteMode::kAlways);
  EXPECT_EQ(result.restored, 0u);
  EXPECT_EQ(result.problems.size(), 2u);
  EXPECT_EQ(Read(outside + "dear"), "outside");
  EXPECT_EQ(machine->Tree(outside), Names{"dear"});
}

TEST_F(BackupRestoreTest, ArchivesAndEntriesAreListedViewedAndDeleted) {
  EXPECT_TRUE(backups.List().empty());  // no folder yet
  machine->MakeFile(tree + "a.txt", "12345");
  machine->SetLastWrite(tree + "a.txt", 132539328001234567);
  Clean(tree);
  MakeFiles(safe, "D_010120200000.zip note.txt", "no archive");
  const std::vector<BackupInfo> archives = backups.List();
  ASSERT_EQ(archives.size(), 2u);
  EXPECT_EQ(archives[0].root, scratch.substr(0, 3));
  EXPECT_EQ(archives[0].entries, 1u);
  EXPECT_EQ(archives[0].size, Read(safe + archives[0].name).size());
  EXPECT_EQ(archives[1].name, "D_010120200000.zip");
  EXPECT_EQ(archives[1].date.year, 2020);
  EXPECT_NE(archives[1].problem, "");
  const std::vector<BackupEntry> entries = backups.ListEntries(archives[0].name);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].path, tree.substr(3) + "a.txt");
  EXPECT_EQ(entries[0].size, 5u);
  EXPECT_EQ(entries[0].last_write / 10, 132539328001234567 / 10);
  const auto stop = [](const Progress&) { return true; };
  EXPECT_THROW(backups.ExtractTemporary(archives[0].name, entries[0].path, stop), Error);
  for (const std::string& left : machine->Tree(temp)) EXPECT_TRUE(left.ends_with('\\')) << left;
  const std::string copy = backups.ExtractTemporary(archives[0].name, entries[0].path);
  EXPECT_TRUE(copy.starts_with(temp));
  EXPECT_EQ(Read(copy), "12345");
  EXPECT_FALSE(machine->Exists(tree + "a.txt"));
  EXPECT_THROW(backups.ExtractTemporary(archives[0].name, "not there"), Error);
  backups.Delete(archives[0].name);
  EXPECT_EQ(Archives(), (Names{"D_010120200000.zip", "note.txt"}));
  for (const char* name : {"..\\Settings.ini", "a/b", "", "C:x", "missing.zip"})
    EXPECT_THROW(backups.Delete(name), Error) << name;
}

TEST_F(BackupRestoreTest, AStopLeavesWhatIsNotRestoredYetAsItWas) {
  for (const char* name : {"a", "b", "c"}) machine->MakeFile(tree + name, "backup");
  machine->MakeFile(tree + "large", std::string(3 << 20, 'x'));
  CleanInOrder({"a", "b", "large", "c"});
  // At which file, how many steps into it, and what was restored by then.
  const std::tuple<std::string, uint64_t, uint64_t> kRows[] = {
      {"a", 0, 0}, {"large", 0, 2}, {"large", 1 << 20, 2}, {"c", 0, 3}};
  for (const auto& row : kRows) {
    const auto [at, from, restored] = row;
    SCOPED_TRACE(at);
    for (const char* name : {"a", "b", "c", "large"}) machine->MakeFile(tree + name, "there");
    uint64_t begun = 0, last = 0;
    std::string path;
    pause = [&](const Progress& progress) {
      if (progress.work != std::string_view("Restoring")) return false;
      EXPECT_GE(progress.done, last);
      EXPECT_LT(progress.done, progress.total);
      last = progress.done;
      if (progress.path != path) begun = progress.done;
      path = progress.path;
      return NamePart(progress.path) == std::get<0>(row) &&
             progress.done - begun >= std::get<1>(row);
    };
    const RestoreResult result = Restore({}, "", OverwriteMode::kAlways);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.restored, restored);
    EXPECT_EQ(result.problems, Names());
    EXPECT_EQ(Read(tree + "a"), restored > 0 ? "backup" : "there");
    EXPECT_EQ(Read(tree + "large").size(), restored > 2 ? 3u << 20 : 5u);
    EXPECT_EQ(Read(tree + "c"), "there");
    EXPECT_EQ(machine->Tree(tree).size(), 4u);
  }
}

// Whatever Windows' own programs make of such names.
TEST_F(BackupRestoreTest, WhatCanBeBackedUpComesBackWhateverItsName) {
  const Names names = {"CON.txt", "NUL", "aux .h", "blank ", "dot."};
  machine->MakeFolder(tree);
  for (const std::string& name : names)
    ports.files.Open(tree + name, OpenMode::kCreateNew)->Write(0, name);
  Clean(tree);
  ASSERT_EQ(machine->Tree(tree), Names());
  const RestoreResult result = Restore();
  EXPECT_EQ(result.problems, Names());
  EXPECT_EQ(machine->Tree(tree), names);
  for (const std::string& name : names) {
    char bytes[16];
    const auto file = ports.files.Open(tree + name, OpenMode::kRead);
    EXPECT_EQ(std::string(bytes, file->Read(0, bytes)), name);
  }
}

TEST_F(BackupRestoreTest, NamesThatDifferInCaseBothComeBack) {
  AddArchive("C_010120200000.zip", {"x/Read.me", "x/READ.ME", "x/read.me"});
  for (const char* round : {"first", "again"}) {
    SCOPED_TRACE(round);
    const RestoreResult result = Restore({}, scratch + "into", OverwriteMode::kAlways);
    EXPECT_EQ(result.restored, 3u);
    EXPECT_EQ(result.problems.size(), 2u);
    EXPECT_EQ(Read(scratch + "into\\x\\Read.me"), "x/Read.me");
    EXPECT_EQ(Read(scratch + "into\\x\\READ (2).ME"), "x/READ.ME");
    if (round[0] == 'a') continue;
    EXPECT_EQ(Read(scratch + "into\\x\\read (3).me"), "x/read.me");
    EXPECT_EQ(machine->Tree(scratch + "into\\x").size(), 3u);
  }
}

TEST_F(BackupRestoreTest, WhatIsPreciousIsNeverReplaced) {
  const std::string hive = scratch + "NTUSER.DAT.LOG1";
  ModZip zip(ports, state);
  zip.MakeBackupArchiveName(safe, "C_");
  for (const std::string& path : {hive, tree + "a"}) {
    machine->MakeFile(path, "archived");
    zip.BackupFile(*OpenFolderOf(ports.files, path), path);
    ports.files.WriteWholeFile(path, "now");
  }
  zip.Close();
  EXPECT_EQ(Restore({}, "", OverwriteMode::kAlways).problems,
            Names{hive + " is not restored, as it is a file that Windows or this program needs."});
  EXPECT_EQ(Read(hive), "now");
  EXPECT_EQ(Read(tree + "a"), "archived");
  ports.files.RemoveFile(hive);
  EXPECT_EQ(Restore({}, "", OverwriteMode::kAlways).restored, 2u) << "what is missing comes back";
}

// What others put there, of whatever name, is neither written to nor taken for ours.
TEST_F(BackupRestoreTest, NothingBesideTheFilesThemselvesIsTouched) {
  for (const char* name : {"a", "b"}) machine->MakeFile(tree + name, "backup");
  Clean(tree);
  const Names others = {"~quellix-replaced.tmp", "~quellix-restore.tmp"};
  for (const std::string& name : others) machine->MakeFile(tree + name, "precious");
  machine->MakeFile(tree + "a", "there");
  size_t notes = 0;
  pause = [&](const Progress&) {
    for (const std::string& name : Archives()) notes += IsTemporaryName(name);
    return false;
  };
  const RestoreResult result = Restore({}, "", OverwriteMode::kAlways);
  EXPECT_EQ(result.problems, Names{});
  EXPECT_GT(notes, 0u) << "a kill would leave no trace of where it was at work";
  EXPECT_EQ(Archives().size(), 1u);
  EXPECT_EQ(machine->Tree(tree), (Names{"a", "b", others[0], others[1]}));
  EXPECT_EQ(Read(tree + "a"), "backup");
  for (const std::string& name : others) EXPECT_EQ(Read(tree + name), "precious");
}

TEST_F(BackupRestoreTest, WhatAKillLeftIsClearedAwayUnlessItIsHeld) {
  const std::string notes = "Quellix restores into\n" + tree + "\n" + scratch + "gone\\\n";
  machine->MakeFile(safe + "~qx00000000000000aa.tmp", notes);
  machine->MakeFile(safe + "~qx00000000000000ee.tmp",
                    "Another restored into\n" + scratch + "other\\");
  machine->MakeFile(scratch + "other\\~qx00000000000000ff.tmp", "not named by notes");
  machine->MakeFile(safe + "quellix-12-0.tmp", "half");
  machine->MakeFile(safe + "~qxmine.tmp", "theirs");
  machine->MakeFile(tree + "~qx00000000000000bb.tmp", "half");
  machine->MakeFile(tree + "~qx00000000000000cc.tmp", "at work");
  machine->MakeFile(tree + "~quellix-replaced.tmp", "the only one");
  machine->MakeFolder(tree + "~qx00000000000000dd.tmp");
  const std::string folders[] = {safe, scratch + "missing\\"};
  {
    const auto held = ports.files.Open(tree + "~qx00000000000000cc.tmp", OpenMode::kReadAndCreate);
    EXPECT_EQ(ClearLeftovers(ports.files, folders), 4u);
  }
  EXPECT_EQ(ClearLeftovers(ports.files, folders), 0u);
  EXPECT_EQ(Archives(), Names{"~qxmine.tmp"});
  EXPECT_EQ(machine->Tree(scratch + "other"), Names{"~qx00000000000000ff.tmp"});
  EXPECT_EQ(machine->Tree(tree), (Names{"~quellix-replaced.tmp", "~qx00000000000000cc.tmp",
                                        "~qx00000000000000dd.tmp\\"}));
}

}  // namespace
}  // namespace quellix
