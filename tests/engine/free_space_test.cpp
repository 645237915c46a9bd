#include "app/free_space_wiper.h"

#include "app/free_space_drives.h"
#include "backup/leftovers.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr uint64_t kRoom = 5u << 20, kReserve = 1u << 20;

// A disk on which little is free, as far as those who ask it are told.
struct FreeSpaceTest : RunFixture {
  struct SmallDisk : ForwardingFolder {
    SmallDisk(std::unique_ptr<Folder> folder, const uint64_t& free)
        : ForwardingFolder(std::move(folder)), free_(free) {}
    DiskRoom Room() override { return {.free = free_, .size = 1u << 30}; }
    const uint64_t& free_;
  };
  struct Counted : ForwardingFile {
    Counted(std::unique_ptr<RandomFile> file, FreeSpaceTest& test)
        : ForwardingFile(std::move(file)), test_(test) {}
    void Write(uint64_t offset, std::string_view bytes) override {
      const uint64_t stored = bytes.size() < 4096 ? test_.record : bytes.size() / test_.pressed;
      if (stored > test_.free) throw Error(Error::Kind::kFull, "The disk is full.");
      test_.free -= stored;
      test_.most_unsent = std::max(test_.most_unsent, test_.unsent += bytes.size());
      if (test_.is_random) test_.is_random = std::ranges::count(bytes, '\0') < 200'000;
      ForwardingFile::Write(offset, bytes);
    }
    void Flush() override {
      test_.unsent = 0;
      ++test_.flushes;
    }
    FreeSpaceTest& test_;
  };
  // Its first file cannot be removed: another program has it open, or there is no memory.
  struct Kept : ForwardingFolder {
    Kept(std::unique_ptr<Folder> folder, bool has_memory)
        : ForwardingFolder(std::move(folder)), has_memory_(has_memory) {}
    void RemoveFile(std::string_view name) override {
      if (std::exchange(is_first, false)) {
        if (!has_memory_) throw std::bad_alloc();
        throw Error(Error::Kind::kInUse, "It is in use.");
      }
      ForwardingFolder::RemoveFile(name);
    }
    DiskRoom Room() override { return {.free = (64u << 20) + 4096, .size = 1u << 30}; }
    const bool has_memory_;
    bool is_first = true;
  };
  // Where nobody may make a folder.
  struct Denied : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    void CreateFolder(std::string_view) override {
      throw Error(Error::Kind::kDenied, "Access is denied.");
    }
  };
  // Stopped at once, which leaves what cannot be removed.
  FreeSpaceWiped Begin(FileSystem& files, const std::string& root) {
    return WipeFreeSpace(WithFiles(ports, files), root, {}, [](const Progress&) { return true; });
  }

  FreeSpaceWiped Wipe(FreeSpaceOptions options, const Pause& pause = {}, uint64_t room = kRoom) {
    ForwardingFiles small(ports.files, [this](const std::string&, std::unique_ptr<Folder> folder) {
      return std::unique_ptr<Folder>(new SmallDisk(std::move(folder), free));
    });
    ForwardingFiles counted(small, [this](std::string_view path, std::unique_ptr<RandomFile> file) {
      if (!path.starts_with(scratch)) return file;
      return std::unique_ptr<RandomFile>(new Counted(std::move(file), *this));
    });
    free = room;
    is_random = true;
    options.reserve = kReserve;
    return WipeFreeSpace(WithFiles(ports, counted), scratch, options, pause);
  }

  uint64_t free = kRoom;
  uint64_t record = 100;  // what a small file takes: its name alone, or a record too
  uint64_t pressed = 1;   // how many bytes are stored in one
  uint64_t unsent = 0, most_unsent = 0, flushes = 0;
  bool is_random = true;
};

TEST_F(FreeSpaceTest, AllButTheReserveIsOverwrittenAndNothingIsLeftBehindHoweverItEnds) {
  MakeFiles(scratch, "dear");
  const Names before = machine->Tree(scratch), own_before = machine->Tree(own);
  FreeSpaceWiped wiped = Wipe({.most_records = 7});
  EXPECT_EQ(wiped.bytes, kRoom - kReserve);
  EXPECT_EQ(wiped.records, 7u);
  EXPECT_EQ(wiped.problem, "");
  EXPECT_TRUE(is_random && !wiped.is_stopped);
  EXPECT_EQ(Wipe({.zeros = true, .most_records = 1}).bytes, kRoom - kReserve);
  EXPECT_FALSE(is_random);
  uint64_t done = 0, total = 0;
  wiped = Wipe({}, [&](const Progress& progress) {
    total = progress.total;
    return (done = progress.done) >= (2u << 20);
  });
  EXPECT_TRUE(wiped.is_stopped);
  EXPECT_EQ(total, kRoom - kReserve);
  EXPECT_EQ(wiped.bytes, 2u << 20);
  EXPECT_EQ(Wipe({}, {}, kReserve).problem, "On " + scratch + " no more is free than the reserve.");
  EXPECT_EQ(machine->Tree(scratch), before);
  EXPECT_EQ(machine->Tree(own), own_before) << "nor a note";
}

// Each piece, each small file when it is made and when it is sent, and each file that goes.
TEST_F(FreeSpaceTest, EveryPieceAndEveryFileHasItsPauseAndAStopComesAtEach) {
  std::map<std::string, size_t> pauses;
  const auto count = [&](const Progress& progress) { return ++pauses[progress.work] == 0; };
  const uint64_t kSmall = 100;
  EXPECT_EQ(Wipe({.most_records = kSmall}, count).records, kSmall);
  const size_t pieces = (kRoom - kReserve) >> 20, work = pauses["Wiping"];
  EXPECT_GE(work, pieces + 2 * kSmall);
  EXPECT_GE(pauses[std::string(kClearingAway)], kSmall + 1);
  const Names before = machine->Tree(scratch), own_before = machine->Tree(own);
  uint64_t fewest = kSmall, most = 0;
  for (size_t stop_at = 1; stop_at < work; stop_at += 23) {
    size_t at = 0;
    const FreeSpaceWiped wiped =
        Wipe({.most_records = kSmall}, [&](const Progress&) { return ++at >= stop_at; });
    EXPECT_TRUE(wiped.is_stopped) << stop_at;
    EXPECT_LE(at, stop_at + kSmall + pieces + 2) << "nothing but clearing away follows " << stop_at;
    fewest = std::min(fewest, wiped.records);
    most = std::max(most, wiped.records);
  }
  EXPECT_TRUE(fewest == 0 && most > 0 && most < kSmall) << fewest << " " << most;
  EXPECT_EQ(machine->Tree(scratch), before);
  EXPECT_EQ(machine->Tree(own), own_before);
}

// What is written is sent to the disk piece by piece, not a whole file of gigabytes at its end.
TEST_F(FreeSpaceTest, NoFlushHasMuchToSend) {
  Wipe({.most_records = 1}, {}, 48u << 20);
  EXPECT_GT(flushes, 3u);
  EXPECT_LE(most_unsent, 33u << 20);
}

TEST_F(FreeSpaceTest, SmallFilesAreMadeUntilTheTableGrowsForThem) {
  record = 1100;
  FreeSpaceWiped wiped = Wipe({.most_records = 5000});
  EXPECT_EQ(wiped.records, 512u);
  EXPECT_EQ(wiped.problem, "");
  record = 690;  // nothing tells that the table grows
  wiped = Wipe({.most_records = 5000});
  EXPECT_TRUE(wiped.records < 5000 && Holds(wiped.problem, "The drive was full before"));
}

TEST_F(FreeSpaceTest, ADiskThatIsNeverFullAndAFolderThatTakesNoNoteAreTold) {
  pressed = 1'000'000;
  EXPECT_TRUE(Holds(Wipe({}).problem, "it stores what is written smaller"));
  pressed = 1;
  const Names before = machine->Tree(scratch);
  ports.program_folder = scratch + "missing";
  EXPECT_TRUE(Holds(Wipe({}).problem, "Nothing is wiped"));
  EXPECT_EQ(machine->Tree(scratch), before);
}

TEST_F(FreeSpaceTest, TheWindowsRowsTellWhatIsAskedAndWhatCameOfIt) {
  const std::string root = scratch.substr(0, 3);
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    if (!path.starts_with(root)) return folder;
    return std::unique_ptr<Folder>(new SmallDisk(std::move(folder), free));
  });
  FreeSpaceDrives drives(WithFiles(ports, files));
  drives.List();
  size_t row = 0;
  while (row < drives.count() && drives.row(row).root != root) ++row;
  ASSERT_LT(row, drives.count());
  EXPECT_TRUE(drives.row(row).free == kRoom && drives.row(row).size == 1u << 30);
  EXPECT_FALSE(drives.HasTicks());
  drives.Toggle(row);
  const std::string asked = drives.Question(true);
  EXPECT_TRUE(asked.starts_with("Overwrite what is free on " + root + " (5.00 MB) with zeros?"));
  EXPECT_TRUE(asked.ends_with(kBeyondWiping));
  const Names before = machine->Tree(own);
  drives.Wipe(true, {});
  EXPECT_TRUE(Holds(drives.row(row).result, " no more is free than the reserve."));
  EXPECT_EQ(drives.summary(), "0 of 1 drive wiped");
  free = (64u << 20) + kRoom;
  drives.Wipe(false, [](const Progress&) { return true; });
  EXPECT_TRUE(Holds(drives.row(row).result, ", stopped"));
  EXPECT_EQ(drives.summary(), "0 of 1 drive wiped, stopped");
  EXPECT_EQ(machine->Tree(own), before) << "no filler is noted any more";
  EXPECT_NE(WhyNotWiped(ports, '1'), "");
}

// And the note of a folder that is not there: the disk may be another one than now.
TEST_F(FreeSpaceTest, WhatCannotBeRemovedIsToldAndItsNoteStaysForTheNextStart) {
  WriteOwn(TemporaryName(), "Quellix restores into\n" + scratch + TemporaryName() + "\n");
  const Names before = machine->Tree(scratch), own_before = machine->Tree(own);
  for (const bool has_memory : {true, false}) {
    ForwardingFiles files(ports.files, [&](const std::string& path, auto folder) {
      const bool is_filler = path.starts_with(scratch) && path != scratch;
      return is_filler ? std::unique_ptr<Folder>(new Kept(std::move(folder), has_memory))
                       : std::move(folder);
    });
    EXPECT_TRUE(Holds(Begin(files, scratch).problem, " could not be removed. "));
    EXPECT_NE(machine->Tree(scratch), before);
    EXPECT_NE(machine->Tree(own), own_before);
    engine.ClearLeftovers();
    EXPECT_EQ(machine->Tree(scratch), before);
    EXPECT_EQ(machine->Tree(own), own_before);
  }
}

TEST_F(FreeSpaceTest, APauseThatFailsLeavesNothing) {
  const Names before = machine->Tree(scratch), own_before = machine->Tree(own);
  const FreeSpaceWiped wiped = Wipe({.most_records = 7}, [](const Progress& progress) {
    return progress.work == kClearingAway ? throw std::runtime_error("failed") : false;
  });
  EXPECT_FALSE(Holds(wiped.problem, "could not be removed"));
  EXPECT_EQ(machine->Tree(scratch), before);
  EXPECT_EQ(machine->Tree(own), own_before);
}

// A note of a folder that never was would stay for ever, as of a disk that is not here.
TEST_F(FreeSpaceTest, WhereTheRootIsDeniedTheFolderThatWasMadeIsNotedAlone) {
  const Names before = machine->Tree(temp), own_before = machine->Tree(own);
  const std::string root = temp.substr(0, 3);
  ForwardingFiles files(ports.files, [&](const std::string& path, auto folder) {
    if (path == root) return std::unique_ptr<Folder>(new Denied(std::move(folder)));
    const bool is_filler = path.starts_with(temp) && path != temp;
    return is_filler ? std::unique_ptr<Folder>(new Kept(std::move(folder), true))
                     : std::move(folder);
  });
  EXPECT_TRUE(Holds(Begin(files, root).problem, temp));
  EXPECT_NE(machine->Tree(temp), before);
  engine.ClearLeftovers();
  EXPECT_EQ(machine->Tree(temp), before);
  EXPECT_EQ(machine->Tree(own), own_before);
}

}  // namespace
}  // namespace quellix
