// Backups against the world outside: other programs, sudden ends, full disks.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

#include "backup/backup_folder.h"
#include "support/backup_fixture.h"
#include "support/forwarding_files.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

struct VolumeBackupTest : BackupFixture {
  std::string Native(const std::string& path) {
    return static_cast<VolumeTestMachine&>(*machine).Native(path);
  }
  NoPrompts prompts;

  // The exit code of a command of this system.
  static int Shell(const std::string& command) {
    return WEXITSTATUS(std::system(("(" + command + ") > /dev/null 2>&1").c_str()));
  }
  // The native folder of a disk of its own that stands as "disk" in the scratch folder; "" where
  // none can be mounted.
  std::string MountDisk(const std::string& options) {
    const std::string mount = Native(scratch + "disk");
    fs::create_directories(mount);
    if (geteuid() != 0) return "";
    return Shell("mount -t tmpfs " + options + " tmpfs '" + mount + "'") == 0 ? mount : "";
  }
};

TEST_F(VolumeBackupTest, AnotherProgramTestsAndUnpacksTheArchive) {
  if (Shell("unzip -v") != 0) GTEST_SKIP() << "no unzip";
  const std::string large(3 << 20, 'x');
  machine->MakeFile(tree + "sub\\plain.txt", "plain plain plain plain plain");
  machine->MakeFile(tree + "\xE6\x97\xA5\xE6\x9C\xAC \xD0\x96", "name");
  machine->MakeFile(tree + "empty", "");
  machine->MakeFile(tree + "large", large);
  Clean(tree);
  const std::string archive = "'" + Native(safe + OnlyArchive()) + "'";
  EXPECT_EQ(Shell("unzip -tq " + archive), 0);
  const std::string out = Native(scratch + "out");
  EXPECT_EQ(Shell("LC_ALL=C.UTF-8 unzip -q " + archive + " -d '" + out + "'"), 0);
  const std::string unpacked = out + "/Scratch/tree/";
  EXPECT_EQ(ReadNative(unpacked + "sub/plain.txt"), "plain plain plain plain plain");
  EXPECT_EQ(ReadNative(unpacked + "\xE6\x97\xA5\xE6\x9C\xAC \xD0\x96"), "name");
  EXPECT_EQ(ReadNative(unpacked + "empty"), "");
  EXPECT_EQ(ReadNative(unpacked + "large"), large);
}

TEST_F(VolumeBackupTest, ArchivesOfAnotherProgramAreReadAndRepaired) {
  if (Shell("zip -v") != 0) GTEST_SKIP() << "no zip";
  const std::string folder = Native(scratch), archive = Native(scratch + "other.zip");
  WriteNative(folder + "/a", std::string(300, 'a'));
  WriteNative(folder + "/b", "b");
  // Written into a pipe, it tells the sizes behind the data only.
  ASSERT_EQ(Shell("cd '" + folder + "' && zip -fd - a b | cat > other.zip"), 0);
  const std::map<std::string, std::string> want = {{"a", std::string(300, 'a')}, {"b", "b"}};
  EXPECT_EQ(Content(scratch + "other.zip"), want);
  std::string bytes = ReadNative(archive);
  WriteNative(archive, bytes.substr(0, bytes.size() - 30));
  EXPECT_EQ(Content(scratch + "other.zip"), want);
}

// A file of zeros that tells one size and gives another.
struct ZeroFile : ForwardingFile {
  ZeroFile(std::unique_ptr<RandomFile> file, uint64_t said, uint64_t given)
      : ForwardingFile(std::move(file)), said_(said), given_(given) {}
  uint64_t Size() const override { return said_; }
  size_t Read(uint64_t offset, std::span<char> buffer) override {
    const uint64_t left = given_ - std::min(offset, given_);
    const auto got = static_cast<size_t>(std::min<uint64_t>(left, buffer.size()));
    std::fill_n(buffer.begin(), got, '\0');
    return got;
  }

  uint64_t said_, given_;
};

// With the wide fields of an archive: its small neighbour behind it is found, whole and cut off.
TEST_F(VolumeBackupTest, AFileBeyondFourGibibytesIsArchived) {
  constexpr uint64_t kSize = (4ull << 30) + 3;
  machine->MakeFile(scratch + "source", "behind");
  const auto source = [&] { return ports.files.Open(scratch + "source", OpenMode::kRead); };
  for (const uint64_t given : {uint64_t{5}, kSize}) {
    SCOPED_TRACE(given);
    if (given == kSize && !std::getenv("QUELLIX_LONG"))
      break;  // packing that takes a quarter minute
    const std::string archive = "C_010120200000.zip", path = Native(safe + archive);
    machine->MakeFile(safe + archive, "");
    {
      ZipWriter writer(ports.files.Open(safe + archive, OpenMode::kReadAndCreate), 0);
      ZeroFile zeros(source(), kSize, given);
      writer.Add({.name = Stored(tree + "large")}, zeros, {});
      writer.Add({.name = Stored(tree + "small")}, *source(), {});
      writer.Finish();
    }
    EXPECT_LT(fs::file_size(path), 64u << 20);
    EXPECT_EQ(Shell("unzip -l '" + path + "'"), 0);
    EXPECT_EQ(backups.ListEntries(archive).at(0).size, given);
    const RestoreOrder order{{tree.substr(3) + "small"}, "", OverwriteMode::kAlways};
    EXPECT_EQ(backups.Restore(archive, order, prompts, {}).restored, 1u);
    EXPECT_EQ(Read(tree + "small"), "behind");
    if (given == kSize) break;
    fs::resize_file(path, fs::file_size(path) - 10);
    const std::optional<Repair> repair = FoundIn(archive);  // unpacks everything
    ASSERT_TRUE(repair);
    EXPECT_EQ(repair->kept, 2u);
    EXPECT_EQ(repair->damaged, 0u);
  }
}

// What another program packed on a machine in New York at noon was written at noon there.
TEST_F(VolumeBackupTest, TimesOfDosAreThoseOfTheMachinesZone) {
  MakeFolders(ports.files, safe);
  {
    ZipWriter writer(ports.files.Open(safe + "C_010120200000.zip", OpenMode::kReadAndCreate), 0);
    machine->MakeFile(scratch + "source", "bytes");
    for (const int month : {1, 7}) {
      writer.Add({.name = Stored(tree + std::to_string(month)),
                  .dos_time = ToDosTime({2020, month, 1, 12, 0, 0})},
                 *ports.files.Open(scratch + "source", OpenMode::kRead), {});
    }
    writer.Finish();
  }
  setenv("TZ", "America/New_York", 1);
  tzset();
  const RestoreResult result = backups.Restore("C_010120200000.zip", {}, prompts);
  unsetenv("TZ");
  tzset();
  EXPECT_EQ(result.restored, 2u);
  for (const auto& [name, hours] : {std::pair("1", 17), std::pair("7", 16)}) {
    const LocalTime utc = ports.system.ToLocalTime(ports.files.Look(tree + name)->last_write);
    EXPECT_EQ(utc.hour, hours);
  }
}

TEST_F(VolumeBackupTest, AFullDiskTakesNothingFromTheArchive) {
  const std::string mount = MountDisk("-o size=2m");
  if (mount.empty()) GTEST_SKIP() << "no small disk can be mounted";
  state.BackupFolder = safe = scratch + "disk\\safe\\";
  Backups backups_there(ports, safe);
  state.Strict = true;
  std::mt19937 random(1);
  std::string noise(6 << 20, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  machine->MakeFile(tree + "before", "before");
  machine->MakeFile(tree + "too large", noise);
  machine->MakeFile(tree + "after", "after");
  CleanInOrder({"before", "too large", "after"});
  EXPECT_EQ(machine->Tree(tree), Names{"too large"});
  EXPECT_EQ(Read(tree + "too large") == noise, true);
  EXPECT_EQ(Content(safe + OnlyArchive()).size(), 2u);
  // Many small ones: those that no longer fit stay, all others are in the archive.
  Names names;
  for (int i = 0; i < 400; ++i) {
    names.push_back(tree + "s" + std::to_string(i));
    machine->MakeFile(names.back(), noise.substr(static_cast<size_t>(i) * 10000, 10000));
  }
  state.BackupDrive.clear();
  RemovePendingFiles(context, Collect(tree, "s*"));
  EXPECT_FALSE(WhyBackupFolderCannotBeUsed(ports.files, safe).empty());
  EXPECT_TRUE(Holds(WhyBackupFolderLooksUnusable(ports.files, safe).english, "full"));
  try {
    mod_zip.Close();
  } catch (const Error&) {  // not even the directory fits: every reader finds the entries itself
  }
  std::map<std::string, std::string> archived;
  for (const BackupInfo& info : backups_there.List()) {
    EXPECT_EQ(info.problem, "");
    archived.merge(Content(safe + info.name));
  }
  for (size_t i = 0; i < names.size(); ++i) {
    const bool is_there = machine->Exists(names[i]);
    EXPECT_TRUE(is_there || archived[Stored(names[i])] == noise.substr(i * 10000, 10000)) << i;
  }
  EXPECT_EQ(Shell("umount '" + mount + "'"), 0);
}

TEST_F(VolumeBackupTest, AWriteProtectedDiskIsReadAndTakesNothing) {
  const std::string mount = MountDisk("");
  if (mount.empty()) GTEST_SKIP() << "no disk can be mounted";
  state.BackupFolder = safe = scratch + "disk\\";
  MakeFiles(tree, "a b", "backup");
  Clean(tree);
  const std::string archive = OnlyArchive(), path = Native(safe + archive);
  fs::resize_file(path, fs::file_size(path) - 5);
  const std::string cut = ReadNative(path);
  EXPECT_EQ(Shell("mount -o remount,ro '" + mount + "'"), 0);

  Backups there(ports, safe);
  const BackupInfo info = there.Check(archive);
  EXPECT_EQ(info.entries, 2u);
  EXPECT_EQ(info.incomplete, "The archive is incomplete: 2 file(s) whole, " +
                                 std::to_string(cut.size() - cut.find("PK\1\2")) +
                                 " bytes behind them.");
  EXPECT_THROW(there.Repair(archive), Error);
  EXPECT_FALSE(WhyBackupFolderCannotBeUsed(ports.files, safe).empty());
  EXPECT_TRUE(Holds(WhyBackupFolderLooksUnusable(ports.files, safe).english, "can only be read"));
  EXPECT_EQ(there.Restore(archive, {}, prompts).restored, 2u);
  EXPECT_THROW(there.Delete(archive), Error);
  state.Strict = true;
  state.BackupDrive.clear();
  CleanInOrder({"a", "b"});
  EXPECT_EQ(machine->Tree(tree), (Names{"a", "b"}));
  EXPECT_TRUE(Holds(StayedNames(state, 9), "could not be backed up")) << state.RunLog;
  EXPECT_EQ(ReadNative(path), cut);
  ports.files.Look(scratch);  // no file of the disk is held any longer
  EXPECT_EQ(Shell("umount '" + mount + "'"), 0);
}

}  // namespace
}  // namespace quellix
