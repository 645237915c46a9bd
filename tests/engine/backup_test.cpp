#include "backup/backup_folder.h"
#include "backup/backup_names.h"
#include "run/exit_code.h"
#include "run/run_steps.h"
#include "support/backup_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

class BackupTest : public BackupFixture {};

TEST(BackupNamesTest, HourAndSecondHaveNoLeadingZero) {
  // dated: the digits can be read in one way only.
  const std::tuple<LocalTime, const char*, bool> rows[] = {
      {{2026, 11, 14, 9, 5, 7}, "C_141120269057.zip", true},
      {{2026, 1, 2, 0, 0, 0}, "C_020120260000.zip", true},
      {{1999, 12, 31, 23, 59, 59}, "C_31121999235959.zip", true},
      {{2026, 11, 14, 9, 5, 12}, "C_1411202690512.zip", true},
      {{2026, 11, 14, 1, 11, 11}, "C_1411202611111.zip", false}};
  for (const auto& [time, what, dated] : rows) {
    SCOPED_TRACE(what);
    EXPECT_EQ(BackupArchiveName("C_", time), what);
    const auto date = DateOfArchive(what);
    ASSERT_EQ(date.has_value(), dated);
    if (date) {
      EXPECT_EQ(BackupArchiveName("C_", *date), what);
    }
  }
  for (const char* name : {"C_.zip", "C_14112026.zip", "C_99992026111.zip", "C_14112026905x.zip"})
    EXPECT_FALSE(DateOfArchive(name)) << name;
  for (const char* name : {"C_141120269057.zip", "@_1411202611111.ZIP", "__020120260000.zip"})
    EXPECT_TRUE(IsArchiveName(name)) << name;
  for (const char* name :
       {"C_.zip", "C-141120269057.zip", "C_14112026905x.zip", "R_141120269057.reg"})
    EXPECT_FALSE(IsArchiveName(name)) << name;
  EXPECT_EQ(RootOfArchive("D_1.zip"), "D:\\");
  EXPECT_EQ(RootOfArchive("@_1.zip"), "@:\\");
  EXPECT_EQ(RootOfArchive("__1.zip"), "\\\\");
  EXPECT_EQ(RootOfArchive("mine.zip"), std::nullopt);
}

TEST_F(BackupTest, EveryKindOfFileIsInTheArchiveAndGone) {
  const std::map<std::string, std::string> files = {
      {"plain.txt", "text text text text text text text"},
      {"empty", ""},
      {"\xE6\x97\xA5\xE6\x9C\xAC \xD0\x96", "names of any script"},
      {"deep\\er\\one.bin", std::string("\0\1\2\xFF", 4)},
      {"exactly.dat", std::string(1 << 20, 'y')},
      {"large.dat", std::string(3 << 20, 'x') + "end"}};
  std::map<std::string, std::string> want;
  for (const auto& [name, bytes] : files) {
    machine->MakeFile(tree + name, bytes);
    want[Stored(tree + name)] = bytes;
  }
  ports.files.SetAttributes(tree + "plain.txt", kReadOnly | kHidden);
  Clean(tree);
  EXPECT_EQ(state.RunFilesDeleted, 6);
  EXPECT_EQ(state.FilesBackedUp, 6);
  EXPECT_FALSE(state.SomeFilesLocked);
  EXPECT_EQ(Content(safe + OnlyArchive()), want);
  for (const std::string& left : machine->Tree(tree)) EXPECT_TRUE(left.ends_with('\\')) << left;

  Clean(tree);  // nothing left: no further archive, the first one as it was
  EXPECT_EQ(Content(safe + OnlyArchive()), want);
}

TEST_F(BackupTest, SingleFilesOfADriveInAnyCaseGoIntoOneArchive) {
  MakeFiles(tree, "1 2");
  const std::string other_case = static_cast<char>(tree[0] + 32) + tree.substr(1);
  for (const std::string& file : {tree + "1", other_case + "2"})
    EXPECT_TRUE(RemoveFile(context, file, Claim::kItem));
  mod_zip.Close();
  EXPECT_TRUE(OnlyArchive().starts_with(tree.substr(0, 1) + "_"));
  EXPECT_EQ(Content(safe + OnlyArchive()).size(), 2u);
  EXPECT_TRUE(state.FilesBackedUp == 2 && machine->Tree(tree).empty());
}

TEST_F(BackupTest, AnArchiveOfTheSameNameIsAddedTo) {
  machine->MakeFile(tree + "first", "1");
  Clean(tree);
  const std::string archive = safe + OnlyArchive();
  machine->MakeFile(tree + "second", "22");
  {
    ZipWriter writer(ports.files.Open(archive, OpenMode::kReadAndCreate), 1);
    for (const char* name : {"second", "taken back"})
      writer.Add({.name = name}, *ports.files.Open(tree + "second", OpenMode::kRead), {});
    // An archive in use is neither repaired nor filled by anyone else.
    EXPECT_THROW(ports.files.Open(archive, OpenMode::kReadAndCreate), Error);
    EXPECT_THROW(backups.Repair(NamePart(archive)), Error);
  }  // as after a crash: never finished
  const std::map<std::string, std::string> first = {{Stored(tree + "first"), "1"}};
  EXPECT_EQ(Content(archive), first);
}

// A run of the same second goes on with our own archive, and with nothing else.
TEST_F(BackupTest, WhatOthersNamedAsAnArchiveStaysAsItIs) {
  machine->MakeFile(tree + "a", "a");
  ModZip zip(ports, state);
  const auto back_up = [&] {
    zip.MakeBackupArchiveName(safe, "C_");
    zip.BackupFile(*ports.files.OpenFolder(tree), tree + "a");
    zip.Close();
  };
  back_up();
  const std::string bytes = Read(safe + OnlyArchive());
  ports.files.RemoveFile(safe + OnlyArchive());
  AddArchive("C_010120200000.zip", {"x"});
  const std::string kinds[] = {bytes.substr(0, bytes.size() - 5), "theirs",
                               Read(safe + "C_010120200000.zip")};
  // The names of the seconds to come are taken.
  LocalTime time = ports.system.Now();
  std::map<std::string, std::string> taken;
  for (int i = 0; i < 20; ++i, time = NextSecond(time)) {
    const std::string name = BackupArchiveName("C_", time);
    taken[name] = kinds[i % 3];
    machine->MakeFile(safe + name, taken[name]);
  }
  back_up();
  EXPECT_EQ(Archives().size(), taken.size() + 2);
  for (const auto& [name, was] : taken) EXPECT_EQ(Read(safe + name), was) << name;
}

TEST_F(BackupTest, ABackupFolderIsProvenBeforeItIsUsed) {
  machine->MakeFile(scratch + "file", "x");
  EXPECT_TRUE(WhyBackupFolderCannotBeUsed(ports.files, scratch + "new\\er\\").empty());
  EXPECT_EQ(machine->Tree(scratch + "new"), Names{"er\\"});
  for (const std::string& folder :
       {scratch + "file\\", scratch + "file\\below\\", std::string("Q:\\safe\\")}) {
    const std::string why = WhyBackupFolderCannotBeUsed(ports.files, folder).english;
    EXPECT_TRUE(why.starts_with("The backup folder " + folder.substr(0, folder.size() - 1))) << why;
  }
}

TEST_F(BackupTest, WhatCannotBeArchivedGoesOrStaysAsTheUserChose) {
  machine->MakeFile(scratch + "no folder", "a file where the backup folder should be");
  const std::string no_folder = scratch + "no folder\\", no_drive = "Q:\\safe\\";
  for (const auto& [folder, strict] : {std::pair(no_folder, false), std::pair(no_folder, true),
                                       std::pair(no_drive, false), std::pair(no_drive, true)}) {
    SCOPED_TRACE(folder + (strict ? ", strictly" : ", by default"));
    static_cast<RunTotals&>(state) = {};
    state.Strict = strict;
    state.BackupFolder = folder;
    MakeFiles(tree, "a b");
    CleanInOrder({"a", "b"});
    EXPECT_EQ(machine->Tree(tree).size(), strict ? 2u : 0u);
    EXPECT_EQ(state.RunFilesDeleted, strict ? 0 : 2);
    EXPECT_EQ(state.FilesBackedUp, 0);
    EXPECT_EQ(state.SomeFilesLocked, strict);
    EXPECT_EQ(state.FilesNotBackedUp, strict ? 0 : 2);
    EXPECT_EQ(StayedNames(state, 9).find("a: It could not be backed up") != std::string::npos,
              strict);
    if (strict) {
      EXPECT_FALSE(RemoveFile(context, tree + "b", Claim::kItem));
    }
    EXPECT_TRUE(Backups(ports, folder).List().empty());
  }
}

TEST_F(BackupTest, ARunWhoseArchiveIsNotFinishedHasFailed) {
  struct Unfinished : BackupArchive {
    Sentence WhyUnusable(std::string_view) override { return {}; }
    void MakeBackupArchiveName(std::string_view, std::string_view) override {}
    Sentence BackupFile(Folder&, std::string_view) override { return {}; }
    void Flush() override {}
    void DeleteBackupArchive() override {}
    void Close() override { throw Error(Error::Kind::kFull, "The disk is full."); }
  } unfinished;
  CleaningContext run{context.machine, context.settings, state, view, unfinished};
  CloseBackup(run);
  EXPECT_EQ(ExitCodeOf(state), kFailed);
  EXPECT_EQ(state.RunLog, "The backup archive could not be finished: The disk is full.\r\n");
}

TEST_F(BackupTest, StrictlyAFileThatChangesAfterItWasArchivedStays) {
  constexpr int64_t kTime = 132'000'000'000'000'000, kLater = kTime + 10'000'000;
  const struct {
    const char* bytes;
    int64_t time;
  } kRows[] = {{"newer", kTime}, {"b", kLater}};
  state.Strict = true;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.bytes);
    for (const char* name : {"a", "b"}) machine->MakeFile(tree + name, name);
    machine->SetLastWrite(tree + "a", kTime);
    view.on_status = [&](const std::string& status) {
      if (status != "Deleting file: " + tree + "b") return;
      machine->MakeFile(tree + "a", row.bytes);
      machine->SetLastWrite(tree + "a", row.time);
    };
    const std::string drive = state.BackupDrive;
    static_cast<RunTotals&>(state) = {};
    state.BackupDrive = drive;
    CleanInOrder({"a", "b"});
    EXPECT_EQ(machine->Tree(tree), Names{"a"});
    EXPECT_EQ(Read(tree + "a"), row.bytes);
    EXPECT_TRUE(Holds(StayedNames(state, 9), "it changed after it was archived"));
    EXPECT_TRUE(state.SomeFilesLocked);
    EXPECT_EQ(state.FilesBackedUp, 1);
  }
}

TEST_F(BackupTest, StopLeavesWhatIsNotGoneYetAndTheArchiveOnRequest) {
  for (const bool keep : {false, true}) {
    SCOPED_TRACE(keep);
    state.KeepOnAbort = keep;
    state.AbortRequested = false;
    state.BackupDrive.clear();
    for (const char* name : {"a", "b", "c"}) machine->MakeFile(tree + name, name);
    StopWhenStatusBegins("Deleting file: " + tree + "b");
    CleanInOrder({"a", "b", "c"});
    EXPECT_EQ(machine->Tree(tree), (Names{"a", "b", "c"}));
    EXPECT_EQ(view.statuses.back(), "Aborted by user");
    EXPECT_EQ(Archives().size(), keep ? 1u : 0u);
  }
  EXPECT_EQ(Content(safe + OnlyArchive()).size(), 2u);
}

// Whether or not the second run of a second goes on with the archive of the first.
TEST_F(BackupTest, AStopTakesNothingFromAnEarlierRun) {
  for (const char* name : {"a", "b"}) machine->MakeFile(tree + name, name);
  for (const char* name : {"a", "b"}) {
    ModZip zip(ports, state);
    zip.MakeBackupArchiveName(safe, "C_");
    zip.BackupFile(*ports.files.OpenFolder(tree), tree + name);
    if (name[0] == 'b') zip.DeleteBackupArchive();
  }
  EXPECT_EQ(Content(safe + OnlyArchive()).size(), 1u);
}

TEST_F(BackupTest, StopDuringALargeFileLeavesIt) {
  machine->MakeFile(tree + "large", std::string(8 << 20, 'x'));
  mod_zip.OnPause([&](const Progress&) { return state.AbortRequested = true; });
  Clean(tree);
  EXPECT_TRUE(machine->Exists(tree + "large"));
  EXPECT_EQ(Archives(), Names());
}

// Gives more or fewer bytes than it said when it was opened.
struct ChangingFile : RandomFile {
  ChangingFile(uint64_t said, std::string bytes) : said_(said), bytes_(std::move(bytes)) {}
  uint64_t Size() const override { return said_; }
  size_t Read(uint64_t offset, std::span<char> buffer) override {
    if (offset >= fails_from) throw Error(Error::Kind::kInUse, "locked from here");
    const size_t from = std::min<size_t>(static_cast<size_t>(offset), bytes_.size());
    return bytes_.copy(buffer.data(), buffer.size(), from);
  }
  void Write(uint64_t, std::string_view) override {}
  void Resize(uint64_t) override {}
  void Flush() override {}
  FileTimes Times() override { return {}; }
  uint32_t Attributes() override { return 0; }
  void SetTimes(const FileTimes&) override {}
  uint64_t fails_from = UINT64_MAX;

  uint64_t said_;
  std::string bytes_;
};

TEST_F(BackupTest, FilesThatChangeWhileTheyAreReadAreTakenAsTheyAre) {
  const std::string archive = scratch + "a.zip";
  ZipWriter writer(ports.files.Open(archive, OpenMode::kReadAndCreate), 0);
  const auto add = [&](const char* name, ChangingFile file) {
    writer.Add({.name = name}, file, {});
  };
  const std::string large(2 << 20, 'l');
  add("shrunk", ChangingFile(100, "short"));
  add("grown", ChangingFile(5, "longer than five"));
  add("grown large", ChangingFile(5, large));
  add("shrunk to nothing", ChangingFile(5 << 20, ""));
  ChangingFile failing(4 << 20, std::string(4 << 20, 'f'));
  failing.fails_from = 1 << 20;
  EXPECT_THROW(add("unreadable", failing), Error);
  add("after", ChangingFile(1, "a"));
  writer.Finish();
  const std::map<std::string, std::string> want = {{"shrunk", "short"},
                                                   {"grown", "longer than five"},
                                                   {"grown large", large},
                                                   {"shrunk to nothing", ""},
                                                   {"after", "a"}};
  EXPECT_EQ(Content(archive), want);
}

TEST_F(BackupTest, WhatAFlushDoesNotBringToTheDiskIsTakenBack) {
  struct FullFile : ForwardingFile {
    FullFile(std::unique_ptr<RandomFile> file, const bool& full)
        : ForwardingFile(std::move(file)), is_full(full) {}
    void Flush() override {
      if (is_full) throw Error(Error::Kind::kFull, "The disk is full.");
    }
    const bool& is_full;
  };
  bool is_full = false;
  const std::string archive = scratch + "a.zip";
  ZipWriter writer(
      std::make_unique<FullFile>(ports.files.Open(archive, OpenMode::kReadAndCreate), is_full), 0);
  for (const std::string name : {"first", "lost", "last"}) {
    ChangingFile file(1, "x");
    writer.Add({.name = name}, file, {});
    is_full = name == "lost";
    if (is_full) {
      EXPECT_THROW(writer.Flush(), Error);
    } else {
      writer.Flush();
    }
  }
  is_full = false;
  writer.Finish();
  const std::map<std::string, std::string> want = {{"first", "x"}, {"last", "x"}};
  EXPECT_EQ(Content(archive), want);
}

// Nothing remains of an archive into which nothing got.
TEST_F(BackupTest, AFileThatCannotBeReadLeavesNoArchive) {
  machine->MakeFile(tree + "a", "a");
  ForwardingFiles files(ports.files, [](std::string_view path, std::unique_ptr<RandomFile> file) {
    if (!path.ends_with("\\a")) return file;
    ChangingFile failing(5, "never");
    failing.fails_from = 0;
    return std::unique_ptr<RandomFile>(new ChangingFile(std::move(failing)));
  });
  const Machine decorated = WithFiles(ports, files);
  ModZip zip(decorated, state);
  zip.MakeBackupArchiveName(safe, "C_");
  EXPECT_THROW(zip.BackupFile(*files.OpenFolder(tree), tree + "a"), Error);
  zip.Close();
  EXPECT_EQ(Archives(), Names());
}

}  // namespace
}  // namespace quellix
