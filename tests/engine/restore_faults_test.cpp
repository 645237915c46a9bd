// A restore among files and folders that do not do as they are told.
#include "backup/leftovers.h"
#include "backup/registry_undo.h"
#include "support/backup_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

using BackupRestoreFaultsTest = RestoreFixture;

// Files with streams and a time of creation, which not every disk of the tests has; they take both,
// and may run out of space.
struct OddFile : ForwardingFile {
  using Texts = std::map<std::string, std::string, std::less<>>;
  struct Log {
    Texts streams;
    int64_t tells = 0;            // of a file that is read
    std::vector<int64_t> taken;   // by those that are written
    uint64_t space = UINT64_MAX;  // where writing fails
    bool is_full = false;         // flushing fails
  };
  OddFile(std::unique_ptr<RandomFile> file, Log& noted)
      : ForwardingFile(std::move(file)), log(noted) {}
  std::vector<StreamInfo> Streams() override {
    std::vector<StreamInfo> infos;
    for (const auto& [name, bytes] : log.streams) infos.push_back({name, bytes.size()});
    return infos;
  }
  std::string ReadStream(std::string_view name) override { return log.streams.find(name)->second; }
  void WriteStream(std::string_view name, std::string_view bytes) override {
    log.streams[std::string(name)] = bytes;
  }
  FileTimes Times() override {
    FileTimes times = ForwardingFile::Times();
    times.created = log.tells;
    return times;
  }
  void SetTimes(const FileTimes& times) override {
    log.taken.push_back(times.created);
    ForwardingFile::SetTimes(times);
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    if (offset + bytes.size() > log.space) throw Error(Error::Kind::kFull, "The disk is full.");
    ForwardingFile::Write(offset, bytes);
  }
  void Flush() override {
    if (log.is_full) throw Error(Error::Kind::kFull, "The disk is full.");
    ForwardingFile::Flush();
  }
  Log& log;
};

// A folder where no file can take another name.
struct StuckFolder : ForwardingFolder {
  using ForwardingFolder::ForwardingFolder;
  void Rename(std::string_view, std::string_view, IfThere) override {
    throw Error(Error::Kind::kInUse, "It is stuck.");
  }
};

// One where someone else takes each name first.
struct RacingFolder : ForwardingFolder {
  using ForwardingFolder::ForwardingFolder;
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override {
    Open(to, OpenMode::kCreateNew)->Write(0, "theirs");
    ForwardingFolder::Rename(from, to, if_there);
  }
};

TEST_F(BackupRestoreFaultsTest, WhatCameMeanwhileIsNotReplaced) {
  machine->MakeFile(tree + "a", "backup");
  Clean(tree);
  ForwardingFiles files(ports.files, [](const std::string&, std::unique_ptr<Folder> folder) {
    return std::make_unique<RacingFolder>(std::move(folder));
  });
  Backups there(WithFiles(ports, files), safe);
  EXPECT_EQ(there.Restore(OnlyArchive(), {}, prompts).problems.size(), 1u);
  EXPECT_EQ(Read(tree + "a"), "theirs");
}

TEST_F(BackupRestoreFaultsTest, WhatCannotBeReplacedStays) {
  machine->MakeFile(tree + "a", "backup");
  Clean(tree);
  machine->MakeFile(tree + "a", "there");
  ForwardingFiles files(ports.files, [](const std::string&, std::unique_ptr<Folder> folder) {
    return std::make_unique<StuckFolder>(std::move(folder));
  });
  const RestoreResult result =
      Backups(WithFiles(ports, files), safe)
          .Restore(OnlyArchive(), {{}, "", OverwriteMode::kAlways}, prompts);
  EXPECT_EQ(result.problems, Names{"It is stuck."});
  EXPECT_EQ(machine->Tree(tree), Names{"a"});
  EXPECT_EQ(Read(tree + "a"), "there");
}

struct OddFilesTest : RestoreFixture {
  OddFilesTest() {
    machine->MakeFile(tree + "a", "backup");
    zip.MakeBackupArchiveName(safe, tree.substr(0, 1) + "_");
  }
  std::string BackUp() { return zip.BackupFile(*odd.files.OpenFolder(tree), tree + "a").english; }
  RestoreResult RestoreOdd() {
    return Backups(odd, safe).Restore(OnlyArchive(), {{}, "", OverwriteMode::kAlways}, prompts);
  }

  OddFile::Log log;
  ForwardingFiles files{ports.files,
                        [this](std::string_view path, std::unique_ptr<RandomFile> file) {
                          if (path.starts_with(safe)) return file;
                          return std::unique_ptr<RandomFile>(new OddFile(std::move(file), log));
                        }};
  const Machine odd = WithFiles(ports, files);
  ModZip zip{odd, state};
};

TEST_F(OddFilesTest, StreamsAndTheTimeOfCreationTravelThroughTheArchive) {
  const OddFile::Texts small = {{"Zone.Identifier", "[ZoneTransfer]\r\nZoneId=3\r\n"},
                                {"ä", std::string("\0x", 2)}};
  log.streams = small;
  log.tells = 130000000000000000;
  EXPECT_EQ(BackUp(), "");
  zip.Close();
  for (const bool whole : {true, false}) {  // from the directory, then from the entry's own header
    SCOPED_TRACE(whole);
    if (!whole) CutArchive();
    log.streams.clear();
    log.taken.clear();
    EXPECT_EQ(RestoreOdd().problems, Names());
    EXPECT_EQ(log.streams, small);
    EXPECT_EQ(log.taken, std::vector<int64_t>{log.tells});
  }
  machine->MakeFile(tree + "a", "there");
  for (const bool at_the_end : {false, true}) {
    log.space = at_the_end ? UINT64_MAX : 3;
    log.is_full = at_the_end;
    EXPECT_EQ(RestoreOdd().problems, Names{"The disk is full."});
    EXPECT_EQ(machine->Tree(tree), Names{"a"});
    EXPECT_EQ(Read(tree + "a"), "there");
  }
}

TEST_F(OddFilesTest, LargeStreamsAreNamed) {
  log.streams["large"] = std::string(kMostStreamBytes, 'l');
  EXPECT_TRUE(Holds(BackUp(), "its stream \"large\" of 32768 bytes"));
  CleaningContext losing{odd, settings, state, view, zip};
  state.Strict = true;
  EXPECT_FALSE(RemoveFile(losing, tree + "a", Claim::kOwnList));
  EXPECT_TRUE(Holds(StayedNames(state, 9), "its stream \"large\" of 32768 bytes"));
  state.Strict = false;
  EXPECT_TRUE(RemoveFile(losing, tree + "a", Claim::kOwnList));
  EXPECT_TRUE(Holds(state.RunLog, "Not backed up whole: " + tree + "a"));
}

// What is in memory alone while names change and files go would be lost with the power.
struct DiskOrder {
  std::set<std::string> unflushed;  // files and, where names changed, folders
  int files_flushed = 0;
};

struct WatchedFile : ForwardingFile {
  WatchedFile(std::unique_ptr<RandomFile> file, std::string path, DiskOrder& order)
      : ForwardingFile(std::move(file)), path_(std::move(path)), order_(order) {}
  void Write(uint64_t offset, std::string_view bytes) override {
    order_.unflushed.insert(path_);
    ForwardingFile::Write(offset, bytes);
  }
  void Flush() override {
    ForwardingFile::Flush();
    order_.unflushed.erase(path_);
    ++order_.files_flushed;
  }

  std::string path_;
  DiskOrder& order_;
};

struct WatchedFolder : ForwardingFolder {
  WatchedFolder(std::unique_ptr<Folder> folder, std::string path, DiskOrder& order)
      : ForwardingFolder(std::move(folder)), path_(std::move(path)), order_(order) {}
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    return std::make_unique<WatchedFile>(ForwardingFolder::Open(name, mode),
                                         path_ + std::string(name), order_);
  }
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override {
    EXPECT_FALSE(order_.unflushed.contains(path_ + std::string(from))) << from << " to " << to;
    ForwardingFolder::Rename(from, to, if_there);
    order_.unflushed.insert(path_);
  }
  void RemoveFile(std::string_view name) override {
    // Notes and probes may be lost.
    std::erase_if(order_.unflushed,
                  [](const std::string& path) { return IsTemporaryName(NamePart(path)); });
    EXPECT_EQ(order_.unflushed, std::set<std::string>()) << "when " << name << " goes";
    ForwardingFolder::RemoveFile(name);
  }
  void Flush() override {
    ForwardingFolder::Flush();
    order_.unflushed.erase(path_);
  }

  std::string path_;
  DiskOrder& order_;
};

struct BackupOrderTest : BackupFixture {
  void KeepAnEntry(const Machine& watched) {
    machine->SetText(kUser, kRunMruKey, "a", "x");
    RegistryUndo undo;
    undo.AddValue(ports.registry, kUser, kRunMruKey, "a");
    undo.Store(watched, safe);
  }
};

TEST_F(BackupOrderTest, WhatIsWrittenIsOnTheDiskBeforeNamesChangeAndFilesGo) {
  DiskOrder order;
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    return std::make_unique<WatchedFolder>(std::move(folder), path, order);
  });
  const Machine watched = WithFiles(ports, files);
  Engine run(watched, view);
  Backups there(watched, safe);
  ScriptedPrompts prompts;
  const auto clean = [&](const char* method) {
    WriteSettings(std::string("[General]\r\nDelMethod=") + method);
    for (const char* name : {"a", "b"}) machine->MakeFile(temp + name, "12345");
    run.RunOneItem(*FindItem("CleanTempFiles"));
    EXPECT_GE(run.state().RunFilesDeleted, 2) << "the system may keep files of its own there";
  };
  // least: files flushed.
  const std::tuple<const char*, std::function<void()>, int> kRows[] = {
      {"wipe byte by byte", [&] { clean("W"); }, 10},
      {"wipe", [&] { clean("W\r\nWipeStep=4096"); }, 2},
      {"back up", [&] { clean("B"); }, 2},
      {"restore", [&] { there.Restore(OnlyArchive(), {}, prompts, {}); }, 2},
      {"repair",
       [&] {
         CutArchive();
         EXPECT_NE(there.Repair(OnlyArchive()), "");
       },
       1},
      {"keep a registry entry", [&] { KeepAnEntry(watched); }, 1}};
  for (const auto& [what, work, least] : kRows) {
    SCOPED_TRACE(what);
    order = {};
    work();
    EXPECT_EQ(order.unflushed, std::set<std::string>());
    EXPECT_GE(order.files_flushed, least);
  }
}

}  // namespace
}  // namespace quellix
