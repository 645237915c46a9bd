#include <set>

#include "backup/entry_path.h"
#include "backup/leftovers.h"
#include "support/backup_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

class BackupRestoreTest : public BackupFixture {
 protected:
  RestoreResult Restore(const std::vector<std::string>& entries = {}, std::string_view to = "",
                        OverwriteMode mode = OverwriteMode::kAsk) {
    return backups.Restore(OnlyArchive(), {entries, std::string(to), mode}, prompts, pause);
  }
  FileInfo Look(const std::string& path) { return ports.files.Look(path).value(); }

  ScriptedPrompts prompts;
  Pause pause;
};

TEST(EntryPathTest, PathsThatLeaveTheirFolderAreRefusedByName) {
  for (const char* name :
       {"../a", "a/../../b", "/a",    "a//b",     "C:/a",        "a/b:stream", "a\\b",   "./a",
        "a/.",  "NUL",       "a/con", "Com1.txt", "lpt\xC2\xB9", "aux .h",     "conin$", "a.",
        "a/b ", "a\x01",     "what?", "",         "x/../"}) {
    const auto refusal = RefusalOf(name);
    ASSERT_TRUE(refusal) << name;
    EXPECT_NE(refusal->find(std::string("\"") + name + "\" is not restored"), std::string::npos);
  }
  for (const char* name : {"NUL", "a/con", "aux .h", "a.", "a/b "}) {
    EXPECT_FALSE(RefusalOf(name, true)) << name << " of an archive of ours";
  }
  for (const char* name : {"../a", "a\\b", "a:b", "a//b", "a\x01"}) {
    EXPECT_TRUE(RefusalOf(name, true)) << name;
  }
  for (const char* name : {"a", "Users/Me/a.txt", "..a", "a..b/c", "console", "com", "COM10",
                           "nul_", "\xE6\x97\xA5/\xD0\x96", "folder/"}) {
    EXPECT_FALSE(RefusalOf(name)) << name;
  }
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
  struct File {
    std::string name, bytes;
    uint32_t attributes;
    int64_t time;
  };
  const File files[] = {
      {"read only.txt", "kept", kReadOnly | kHidden, 132539328001234567},
      {"deep\\\xD0\x96\\\xE6\x97\xA5\xE6\x9C\xAC.bin", std::string(100000, 'b'), kArchive,
       131000000000000000},
      {"empty", "", kNormal, 125911584000000000},
      {"large", std::string(2500000, 'L') + "end", kSystem | kArchive, 133000000007654321},
  };
  std::map<std::string, FileInfo> before;
  for (const File& file : files) {
    machine->MakeFile(tree + file.name, file.bytes);
    machine->SetLastWrite(tree + file.name, file.time);
    ports.files.SetAttributes(tree + file.name, file.attributes);
    before[file.name] = Look(tree + file.name);
  }
  const std::vector<std::string> names = machine->Tree(tree);
  Clean(tree);
  for (const char* folder : {"deep\\\xD0\x96", "deep"}) ports.files.RemoveFolder(tree + folder);
  for (const std::string& to : {std::string(), scratch + "else where\\new"}) {
    SCOPED_TRACE(to);
    const std::string archive = safe + OnlyArchive();
    // The second time from an archive that lost its end.
    if (!to.empty()) ports.files.Open(archive, OpenMode::kWrite)->Resize(Read(archive).size() - 5);
    const RestoreResult result = Restore({}, to);
    EXPECT_EQ(result.restored, 4u);
    EXPECT_EQ(result.problems, std::vector<std::string>());
    const std::string root = to.empty() ? tree : to + "\\" + tree.substr(3);
    EXPECT_EQ(machine->Tree(root), names);
    for (const File& file : files) {
      SCOPED_TRACE(file.name);
      EXPECT_EQ(Read(root + file.name), file.bytes);
      EXPECT_EQ(Look(root + file.name).last_write, before[file.name].last_write);
      EXPECT_EQ(Look(root + file.name).attributes, before[file.name].attributes);
    }
  }
}

TEST_F(BackupRestoreTest, FilesThatAreThereAreTreatedAsChosen) {
  const int64_t old = 131000000000000000, backed_up = 132000000000000000,
                young = 133000000000000000;
  for (const char* name : {"old", "young", "gone"}) {
    machine->MakeFile(tree + name, "backup");
    machine->SetLastWrite(tree + name, backed_up);
  }
  CleanInOrder({"old", "young", "gone"});
  using A = OverwriteAnswer;
  struct Row {
    const char* what;
    OverwriteMode mode;
    std::vector<A> answers;
    const char *old, *young;
    size_t asked;
    bool cancelled;
  };
  const Row rows[] = {
      {"always", OverwriteMode::kAlways, {}, "backup", "backup", 0, false},
      {"newer", OverwriteMode::kNewer, {}, "backup", "there", 0, false},
      {"never", OverwriteMode::kNever, {}, "there", "there", 0, false},
      {"yes, no", OverwriteMode::kAsk, {A::kYes, A::kNo}, "backup", "there", 2, false},
      {"no, yes", OverwriteMode::kAsk, {A::kNo, A::kYes}, "there", "backup", 2, false},
      {"all", OverwriteMode::kAsk, {A::kAll}, "backup", "backup", 1, false},
      {"none", OverwriteMode::kAsk, {A::kNone}, "there", "there", 1, false},
      {"cancel", OverwriteMode::kAsk, {}, "there", "there", 1, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    for (const char* name : {"old", "young"}) machine->MakeFile(tree + name, "there");
    machine->SetLastWrite(tree + "old", old);
    machine->SetLastWrite(tree + "young", young);
    prompts.asked.clear();
    prompts.overwrites.assign(row.answers.begin(), row.answers.end());
    const RestoreResult result =
        Restore({tree.substr(3) + "OLD", tree.substr(3) + "young"}, "", row.mode);
    EXPECT_EQ(result.problems, std::vector<std::string>());
    EXPECT_EQ(result.cancelled, row.cancelled);
    EXPECT_EQ(prompts.asked.size(), row.asked);
    EXPECT_EQ(Read(tree + "old"), row.old);
    EXPECT_EQ(Read(tree + "young"), row.young);
    EXPECT_FALSE(machine->Exists(tree + "gone"));
  }
  machine->MakeFile(tree + "old", "there");
  machine->SetLastWrite(tree + "old", backed_up);
  EXPECT_EQ(Restore({tree.substr(3) + "old"}, "", OverwriteMode::kNewer).restored, 0u);
  EXPECT_EQ(Read(tree + "old"), "there") << "one of the same time is not newer";
}

TEST_F(BackupRestoreTest, NothingIsWrittenThroughLinksOrOverFolders) {
  machine->MakeFile(tree + "sub\\dear", "backup");
  machine->MakeFile(tree + "plain", "backup");
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
  EXPECT_EQ(machine->Tree(outside), std::vector<std::string>{"dear"});
}

TEST_F(BackupRestoreTest, ArchivesAndEntriesAreListedViewedAndDeleted) {
  EXPECT_TRUE(backups.List().empty());  // no folder yet
  machine->MakeFile(tree + "a.txt", "12345");
  machine->SetLastWrite(tree + "a.txt", 132539328001234567);
  Clean(tree);
  machine->MakeFile(safe + "D_010120200000.zip", "no archive");
  machine->MakeFile(safe + "note.txt", "no archive");
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
  EXPECT_EQ(Archives(), (std::vector<std::string>{"D_010120200000.zip", "note.txt"}));
  for (const char* name : {"..\\Settings.ini", "a/b", "", "C:x", "missing.zip"}) {
    EXPECT_THROW(backups.Delete(name), Error) << name;
  }
}

TEST_F(BackupRestoreTest, AStopLeavesWhatIsNotRestoredYetAsItWas) {
  for (const char* name : {"a", "b", "c"}) machine->MakeFile(tree + name, "backup");
  machine->MakeFile(tree + "large", std::string(3 << 20, 'x'));
  CleanInOrder({"a", "b", "large", "c"});
  struct Row {
    const char* at;
    uint64_t from;  // steps done
    uint64_t restored;
  };
  for (const Row& row :
       {Row{"a", 0, 0}, Row{"large", 0, 2}, Row{"large", 1 << 20, 2}, Row{"c", 0, 3}}) {
    SCOPED_TRACE(row.at);
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
      return NamePart(progress.path) == row.at && progress.done - begun >= row.from;
    };
    const RestoreResult result = Restore({}, "", OverwriteMode::kAlways);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.restored, row.restored);
    EXPECT_EQ(result.problems, std::vector<std::string>());
    EXPECT_EQ(Read(tree + "a"), row.restored > 0 ? "backup" : "there");
    EXPECT_EQ(Read(tree + "large").size(), row.restored > 2 ? 3u << 20 : 5u);
    EXPECT_EQ(Read(tree + "c"), "there");
    EXPECT_EQ(machine->Tree(tree).size(), 4u);
  }
}

// Whatever Windows' own programs make of such names.
TEST_F(BackupRestoreTest, WhatCanBeBackedUpComesBackWhateverItsName) {
  const std::vector<std::string> names = {"CON.txt", "NUL", "aux .h", "blank ", "dot."};
  machine->MakeFolder(tree);
  for (const std::string& name : names) {
    ports.files.Open(tree + name, OpenMode::kCreateNew)->Write(0, name);
  }
  Clean(tree);
  ASSERT_EQ(machine->Tree(tree), std::vector<std::string>());
  const RestoreResult result = Restore();
  EXPECT_EQ(result.problems, std::vector<std::string>());
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

// Files with streams, as NTFS has them.
class StreamFile : public ForwardingFile {
 public:
  using Streams_ = std::map<std::string, std::string, std::less<>>;
  StreamFile(std::unique_ptr<RandomFile> file, Streams_& streams)
      : ForwardingFile(std::move(file)), streams_(streams) {}
  std::vector<StreamInfo> Streams() override {
    std::vector<StreamInfo> infos;
    for (const auto& [name, bytes] : streams_) infos.push_back({name, bytes.size()});
    return infos;
  }
  std::string ReadStream(std::string_view name) override { return streams_.find(name)->second; }
  void WriteStream(std::string_view name, std::string_view bytes) override {
    streams_[std::string(name)] = bytes;
  }

 private:
  Streams_& streams_;
};

TEST_F(BackupRestoreTest, SmallStreamsComeBackAndLargeOnesAreNamed) {
  const StreamFile::Streams_ small = {{"Zone.Identifier", "[ZoneTransfer]\r\nZoneId=3\r\n"},
                                      {"\xC3\xA4", std::string("\0x", 2)}};
  StreamFile::Streams_ streams = small;
  ForwardingFiles files(ports.files, [&](std::string_view path, std::unique_ptr<RandomFile> file) {
    if (path.starts_with(safe)) return file;
    return std::unique_ptr<RandomFile>(new StreamFile(std::move(file), streams));
  });
  const Machine decorated = WithFiles(ports, files);
  machine->MakeFile(tree + "a", "backup");
  ModZip zip(decorated, state);
  zip.MakeBackupArchiveName(safe, tree.substr(0, 1) + "_");
  EXPECT_EQ(zip.BackupFile(*decorated.files.OpenFolder(tree), tree + "a"), "");
  zip.Close();
  for (const bool whole : {true, false}) {
    SCOPED_TRACE(whole);
    const std::string archive = safe + OnlyArchive();
    if (!whole) ports.files.Open(archive, OpenMode::kWrite)->Resize(Read(archive).size() - 5);
    streams.clear();
    const RestoreResult result =
        Backups(decorated, safe).Restore(OnlyArchive(), {{}, "", OverwriteMode::kAlways}, prompts);
    EXPECT_EQ(result.problems, std::vector<std::string>());
    EXPECT_EQ(streams, small);
  }
  streams["large"] = std::string(kMostStreamBytes, 'l');
  for (const bool strict : {false, true}) {
    state.Strict = strict;
    std::string told;
    try {
      told = zip.BackupFile(*decorated.files.OpenFolder(tree), tree + "a");
      EXPECT_FALSE(strict);
    } catch (const Error& error) {
      told = error.what();
      EXPECT_TRUE(strict);
    }
    EXPECT_NE(told.find("its stream \"large\" of 32768 bytes"), std::string::npos) << told;
  }
  state.Strict = false;
  CleaningContext losing{decorated, settings, state, view, zip};
  EXPECT_TRUE(RemoveFile(losing, tree + "a", Claim::kOwnList));
  EXPECT_NE(state.RunLog.find("Not backed up whole: " + tree + "a"), std::string::npos);
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
            std::vector<std::string>{
                hive + " is not restored, as it is a file that Windows or this program needs."});
  EXPECT_EQ(Read(hive), "now");
  EXPECT_EQ(Read(tree + "a"), "archived");
  ports.files.RemoveFile(hive);
  EXPECT_EQ(Restore({}, "", OverwriteMode::kAlways).restored, 2u) << "what is missing comes back";
}

// What others put there, of whatever name, is neither written to nor taken for ours.
TEST_F(BackupRestoreTest, NothingBesideTheFilesThemselvesIsTouched) {
  for (const char* name : {"a", "b"}) machine->MakeFile(tree + name, "backup");
  Clean(tree);
  const std::vector<std::string> others = {"~quellix-replaced.tmp", "~quellix-restore.tmp"};
  for (const std::string& name : others) machine->MakeFile(tree + name, "precious");
  machine->MakeFile(tree + "a", "there");
  size_t notes = 0;
  pause = [&](const Progress&) {
    for (const std::string& name : Archives()) notes += IsTemporaryName(name);
    return false;
  };
  const RestoreResult result = Restore({}, "", OverwriteMode::kAlways);
  EXPECT_EQ(result.problems, std::vector<std::string>{});
  EXPECT_GT(notes, 0u) << "a kill would leave no trace of where it was at work";
  EXPECT_EQ(Archives().size(), 1u);
  EXPECT_EQ(machine->Tree(tree), (std::vector<std::string>{"a", "b", others[0], others[1]}));
  EXPECT_EQ(Read(tree + "a"), "backup");
  for (const std::string& name : others) EXPECT_EQ(Read(tree + name), "precious");
}

TEST_F(BackupRestoreTest, WhatAKillLeftIsClearedAwayUnlessItIsHeld) {
  const std::string notes = "Quellix restores into\n" + tree + "\n" + scratch + "gone\\\n";
  machine->MakeFile(safe + "~qx00000000000000aa.tmp", notes);
  machine->MakeFile(safe + "quellix-12-0.tmp", "half");
  machine->MakeFile(safe + "~qxmine.tmp", "theirs");
  machine->MakeFile(tree + "~qx00000000000000bb.tmp", "half");
  machine->MakeFile(tree + "~qx00000000000000cc.tmp", "at work");
  machine->MakeFile(tree + "~quellix-replaced.tmp", "the only one");
  machine->MakeFolder(tree + "~qx00000000000000dd.tmp");
  const std::string folders[] = {safe, scratch + "missing\\"};
  {
    const auto held = ports.files.Open(tree + "~qx00000000000000cc.tmp", OpenMode::kReadAndCreate);
    EXPECT_EQ(ClearLeftovers(ports.files, folders), 3u);
  }
  EXPECT_EQ(ClearLeftovers(ports.files, folders), 0u);
  EXPECT_EQ(Archives(), std::vector<std::string>{"~qxmine.tmp"});
  EXPECT_EQ(machine->Tree(tree),
            (std::vector<std::string>{"~quellix-replaced.tmp", "~qx00000000000000cc.tmp",
                                      "~qx00000000000000dd.tmp\\"}));
}

// Files that tell a time of creation, take one, and may run out of space.
class CreatedFile : public ForwardingFile {
 public:
  struct Log {
    int64_t tells = 0;            // of a file that is read
    std::vector<int64_t> taken;   // by those that are written
    uint64_t space = UINT64_MAX;  // where writing fails
    bool is_full = false;         // flushing fails
  };
  CreatedFile(std::unique_ptr<RandomFile> file, Log& log)
      : ForwardingFile(std::move(file)), log_(log) {}
  FileTimes Times() override {
    FileTimes times = ForwardingFile::Times();
    times.created = log_.tells;
    return times;
  }
  void SetTimes(const FileTimes& times) override {
    log_.taken.push_back(times.created);
    ForwardingFile::SetTimes(times);
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    if (offset + bytes.size() > log_.space) throw Error(Error::Kind::kFull, "The disk is full.");
    ForwardingFile::Write(offset, bytes);
  }
  void Flush() override {
    if (log_.is_full) throw Error(Error::Kind::kFull, "The disk is full.");
    ForwardingFile::Flush();
  }

 private:
  Log& log_;
};

// A folder where no file can take another name.
class StuckFolder : public ForwardingFolder {
 public:
  using ForwardingFolder::ForwardingFolder;
  void Rename(std::string_view, std::string_view, IfThere) override {
    throw Error(Error::Kind::kInUse, "It is stuck.");
  }
};

TEST_F(BackupRestoreTest, WhatCannotBeReplacedStays) {
  machine->MakeFile(tree + "a", "backup");
  Clean(tree);
  machine->MakeFile(tree + "a", "there");
  ForwardingFiles files(ports.files, [](const std::string&, std::unique_ptr<Folder> folder) {
    return std::make_unique<StuckFolder>(std::move(folder));
  });
  const RestoreResult result =
      Backups(WithFiles(ports, files), safe)
          .Restore(OnlyArchive(), {{}, "", OverwriteMode::kAlways}, prompts);
  EXPECT_EQ(result.problems, std::vector<std::string>{"It is stuck."});
  EXPECT_EQ(machine->Tree(tree), std::vector<std::string>{"a"});
  EXPECT_EQ(Read(tree + "a"), "there");
}

// Not every disk of the tests keeps a time of creation.
TEST_F(BackupRestoreTest, TheTimeOfCreationTravelsThroughTheArchive) {
  CreatedFile::Log log;
  ForwardingFiles files(ports.files, [&](std::string_view path, std::unique_ptr<RandomFile> file) {
    if (path.starts_with(safe)) return file;
    return std::unique_ptr<RandomFile>(new CreatedFile(std::move(file), log));
  });
  const Machine decorated = WithFiles(ports, files);
  machine->MakeFile(tree + "a", "backup");
  log.tells = 130000000000000000;
  {
    ModZip zip(decorated, state);
    zip.MakeBackupArchiveName(safe, tree.substr(0, 1) + "_");
    zip.BackupFile(*files.OpenFolder(tree), tree + "a");
  }
  for (const bool whole : {true, false}) {  // from the directory, then from the entry's own header
    SCOPED_TRACE(whole);
    const std::string archive = safe + OnlyArchive();
    if (!whole) ports.files.Open(archive, OpenMode::kWrite)->Resize(Read(archive).size() - 5);
    log.taken.clear();
    Backups there(decorated, safe);
    const RestoreOrder order{{}, "", OverwriteMode::kAlways};
    EXPECT_EQ(there.Restore(OnlyArchive(), order, prompts).restored, 1u);
    EXPECT_EQ(log.taken, std::vector<int64_t>{log.tells});
  }
  machine->MakeFile(tree + "a", "there");
  for (const bool at_the_end : {false, true}) {
    log.space = at_the_end ? UINT64_MAX : 3;
    log.is_full = at_the_end;
    const RestoreResult result =
        Backups(decorated, safe).Restore(OnlyArchive(), {{}, "", OverwriteMode::kAlways}, prompts);
    EXPECT_EQ(result.problems, std::vector<std::string>{"The disk is full."});
    EXPECT_EQ(machine->Tree(tree), std::vector<std::string>{"a"});
    EXPECT_EQ(Read(tree + "a"), "there");
  }
}

}  // namespace
}  // namespace quellix
