#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>

#include "cli/console_fixture.h"
#include "ntfs/ntfs_volume.h"
#include "platform/volume/unique_fd.h"
#include "support/jump_list_bytes.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

// A Windows on an NTFS, cleaned by the console.
struct NtfsRun : testing::Test {
  void SetUp() override {
    if (const std::string hindrance = NtfsVolume::Hindrance(); !hindrance.empty()) {
      GTEST_SKIP() << hindrance;
    }
    volume_.emplace();
    setenv("TMPDIR", volume_->Beside("").c_str(), 1);
    SeedWindows(volume_->path());
    WriteNative(Temp("a.tmp"), "12345");
    fs::create_directory(Temp("Sub"));
    WriteNative(Temp("Sub/b.tmp"), "12345");
    VolumeMachine machine(options());
    const auto key = machine.machine().registry.Create(kUser, kRunMruKey);
    key->SetValue("MRUList", {kRegSz, ToUtf16Bytes("a") + std::string(2, '\0')});
    key->SetValue("a", {kRegSz, ToUtf16Bytes("cmd\\1") + std::string(2, '\0')});
    machine.registry().CloseHives();
  }
  VolumeOptions options() { return {volume_->path(), {}, "", volume_->Beside("settings")}; }
  std::string Temp(const std::string& name) {
    return volume_->path() + "/Users/" + kTesterName + "/AppData/Local/Temp/" + name;
  }
  bool HasMru() {
    VolumeMachine machine(options());
    const auto key = machine.machine().registry.Open(kUser, kRunMruKey, RegistryAccess::kRead);
    return key && key->ValueAt(0).has_value();
  }
  ProgramResult Run(const std::vector<std::string>& arguments) {
    return RunQuellixctl(
        With(arguments, {"--volume", options().volume, "--settings", options().settings}));
  }
  void Fix(const std::string& options) {
    volume_->Remount("ro");
    ASSERT_EQ(std::system(("PATH=$PATH:/usr/sbin ntfsfix " + options + " '" + volume_->Image() +
                           "' > /dev/null 2>&1")
                              .c_str()),
              0);
    volume_->Remount("rw");
  }
  void Hibernate() {
    volume_->Remount("rw");
    WriteNative(volume_->path() + "/hiberfil.sys", "hibr" + std::string(8188, '\0'));
    volume_->Remount("rw");  // it falls back to reading by itself
  }
  // A survey and a preview tell it, a run does not begin.
  void ExpectRefused(const std::string& told) {
    const auto before = Snapshot();
    const ProgramResult surveyed = RunQuellixctl({"volumes", volume_->path()});
    EXPECT_EQ(surveyed.exit_code, 0) << surveyed.output;
    EXPECT_TRUE(Holds(surveyed.output, told));
    for (const char* items : {"CleanTempFiles", "CleanRunMRU"}) {
      const ProgramResult result = Run({"clean", "--item", items});
      EXPECT_EQ(result.exit_code, 1) << result.output;
      EXPECT_TRUE(Holds(result.output, told));
      EXPECT_TRUE(Holds(Run({"clean", "--preview", "--item", items}).output, told));
    }
    EXPECT_TRUE(HasMru());
    EXPECT_EQ(Snapshot(), before);
  }
  // Takes all room there is.
  void Fill() {
    const UniqueFd file(open((volume_->path() + "/fill").c_str(), O_WRONLY | O_CREAT, 0600));
    for (const size_t piece : {1u << 20, 4096u}) {
      const std::string bytes(piece, 'x');
      while (write(file.get(), bytes.data(), piece) > 0) {
      }
    }
  }
  // Everything on the volume: size, times, attributes and bytes; of folders no times, where files
  // may have been made and removed again.
  std::map<std::string, std::string> Snapshot(bool folder_times = true) {
    std::map<std::string, std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(volume_->path())) {
      const std::string path = entry.path().string();
      std::string& told = all[path.substr(volume_->path().size())];
      if (folder_times || !entry.is_directory()) {
        told = NtfsAttribute(path, "system.ntfs_times").substr(0, 16);
      }
      told += NtfsAttribute(path, "system.ntfs_attrib") + NtfsAttribute(path, "system.ntfs_acl");
      if (entry.is_regular_file() && !entry.is_symlink()) told += ReadNative(path);
      told = std::to_string(std::hash<std::string>()(told));
    }
    return all;
  }

  std::optional<NtfsVolume> volume_;
};

// In the bytes of the whole disk: hive, logs, the hive before, and what was written meanwhile.
TEST_F(NtfsRun, WhatIsDeletedFromTheRegistryIsNowhereOnTheDisk) {
  const std::string secret = "QxSecretCommand", wide = ToUtf16Bytes(secret);
  const std::string hive = volume_->path() + "/Users/" + kTesterName + "/NTUSER.DAT";
  {
    VolumeMachine machine(options());
    const auto key = machine.machine().registry.Create(kUser, kRunMruKey);
    key->SetValue("b", {kRegSz, wide + std::string(2, '\0')});
    machine.registry().CloseHives();
  }
  const std::string bytes = ReadNative(hive);
  WriteNative(hive + ".LOG1", HiveLog(bytes, HiveLogEntry(HiveSequence(hive), "", bytes)));
  ASSERT_NE(volume_->Bytes().find(wide), std::string::npos);
  const ProgramResult result = Run({"clean", "--item", "CleanRunMRU"});
  EXPECT_EQ(result.exit_code, 0) << result.output;
  EXPECT_FALSE(HasMru());
  const std::string disk = volume_->Bytes();
  EXPECT_EQ(disk.find(wide), std::string::npos);
  EXPECT_EQ(disk.find(secret), std::string::npos);
}

TEST_F(NtfsRun, WhatWasDeletedBeforeIsNowhereOnceTheFreeSpaceIsWiped) {
  const std::string small = "QxSmallSecret", large = "QxLargeSecret";
  WriteNative(Temp("stays.tmp"), "dear");
  for (int i = 0; i < 3000; ++i) WriteNative(Temp(std::to_string(i) + ".tmp"), small);
  WriteNative(Temp("large.tmp"), std::string(5000, 'x') + large + std::string(3 << 20, 'x'));
  volume_->Remount("rw");
  for (int i = 0; i < 3000; ++i) fs::remove(Temp(std::to_string(i) + ".tmp"));
  fs::remove(Temp("large.tmp"));
  volume_->Remount("rw");
  const std::string before = volume_->Bytes();
  for (const std::string& secret : {small, large})
    ASSERT_NE(before.find(secret), std::string::npos) << "deleting overwrites nothing";
  const auto files = PictureOf(volume_->path());
  const ProgramResult result = Run({"wipe-free", "C:", "--reserve", "1"});
  EXPECT_EQ(result.exit_code, 0) << result.output;
  EXPECT_TRUE(Holds(result.output, "no program reaches this way"));
  EXPECT_TRUE(PictureOf(volume_->path()) == files);
  volume_->Remount("rw");
  const std::string disk = volume_->Bytes();
  for (const std::string& secret : {small, large})
    EXPECT_EQ(disk.find(secret), std::string::npos) << secret << result.output;
}

// Small files lie in the file table itself, large ones outside of it. Names are for no driver to
// promise, which is said.
TEST_F(NtfsRun, WhatIsWipedIsNowhereOnTheDisk) {
  const std::string secrets[] = {"QxSmallSecret", "QxLargeSecret", "QxPagedSecret"};
  WriteNative(volume_->Beside("settings/Settings.ini"), "[General]\r\nWipeStep=65536\r\n");
  WriteNative(Temp("small.tmp"), secrets[0]);
  WriteNative(Temp("large.tmp"), std::string(5000, 'x') + secrets[1] + std::string(3 << 20, 'x'));
  WriteNative(volume_->path() + "/pagefile.sys", std::string(2 << 20, 'x') + secrets[2]);
  volume_->Remount("rw");
  const std::string before = volume_->Bytes();
  for (const std::string& secret : secrets) ASSERT_NE(before.find(secret), std::string::npos);
  const ProgramResult result =
      Run({"clean", "--item", "CleanTempFiles", "VolumePageFile", "--method", "wipe"});
  EXPECT_EQ(result.exit_code, 0) << result.output;
  EXPECT_TRUE(Holds(result.output, "\n\nThe contents of wiped files are overwritten"));
  volume_->Remount("rw");
  const std::string disk = volume_->Bytes();
  for (const std::string& secret : secrets) EXPECT_EQ(disk.find(secret), std::string::npos);
}

TEST_F(NtfsRun, AFullDiskIsSaidAndTheRegistryStays) {
  Fill();
  const auto before = Snapshot(false);
  const ProgramResult result = Run({"clean", "--item", "CleanRunMRU"});
  EXPECT_EQ(result.exit_code, 1) << result.output;
  EXPECT_TRUE(Holds(result.output, "not enough space"));
  EXPECT_TRUE(HasMru());
  EXPECT_EQ(Snapshot(false), before);
}

TEST_F(NtfsRun, WhatStandsInTheWayIsToldAndRefusesARun) {
  UniqueFd image;
  const auto lock_image = [&] {  // as a virtual machine does
    image = UniqueFd(open(volume_->Image().c_str(), O_RDWR | O_CLOEXEC));
    struct flock bytes = {};
    bytes.l_type = F_RDLCK;
    bytes.l_start = 100;
    bytes.l_len = 1;
    ASSERT_EQ(fcntl(image.get(), F_OFD_SETLK, &bytes), 0);
  };
  const auto let_go = [&] {
    image = UniqueFd();
    Fix("-d");
  };
  const std::tuple<const char*, std::function<void()>, const char*> kRows[] = {
      {"not closed", [&] { Fix(""); }, "not closed properly"},
      {"a running machine", [&] { Fix("-d"), lock_image(); }, "running virtual machine"},
      {"read-only", [&] { let_go(), volume_->Remount("ro"); }, "mount -o remount,rw"},
      {"hibernated", [&] { Hibernate(); }, "as ntfs-3g does by itself"}};
  for (const auto& [row, prepare, told] : kRows) {
    SCOPED_TRACE(row);
    prepare();
    ExpectRefused(told);
  }
  volume_->Remount("remove_hiberfile");
  const ProgramResult nothing = RunQuellixctl({"volumes", volume_->path()});
  EXPECT_TRUE(nothing.output.find("hindrance") == std::string::npos) << nothing.output;
  EXPECT_EQ(Run({"clean", "--item", "CleanRunMRU"}).exit_code, 0);
  EXPECT_FALSE(HasMru());
}

TEST_F(NtfsRun, ReadingNeverWrites) {
  const auto before = Snapshot();
  for (const char* command :
       {"clean --preview --item CleanTempFiles CleanRunMRU", "search unnecessary", "search empty",
        "registry shared-dlls", "registry file-references --thorough", "backup list",
        "plugins list"}) {
    SCOPED_TRACE(command);
    const ProgramResult result = Run(WordsOf(command));
    EXPECT_NE(result.exit_code, 2) << result.output;
    EXPECT_EQ(Snapshot(), before);
  }
}

}  // namespace
}  // namespace quellix
