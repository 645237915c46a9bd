
#include "attack/volume_traced_run.h"
#include "cli/console_fixture.h"
#include "platform/volume/hive_check.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

// Runs that are killed somewhere between their changes.
struct Kill : testing::Test {
  void Seed() {
    for (int i = 0; i < 12; ++i) {
      const std::string name = "file " + std::to_string(i) + ".tmp";
      contents_[name] = name + std::string(static_cast<size_t>(i) * 1000, 'x');
      // The second half is another item's, which goes on with the archive of the first.
      const std::string folder = i < 6 ? temp_ + "Sub " + std::to_string(i % 3) : mine_;
      test_->MakeFile(folder + "\\" + name, contents_[name]);
    }
    test_->MakeFile(test_->machine().program_folder + "\\UDFO.txt", mine_);
    test_->SetText(kUser, kRunMruKey, "MRUList", "a");
    test_->SetText(kUser, kRunMruKey, "a", "cmd\\1");
    test_->CloseHives();
    // A log as a running Windows leaves it, with what the hive holds already.
    const std::string hive = ReadNative(user_hive_);
    WriteNative(user_hive_ + ".LOG1",
                HiveLog(hive, HiveLogEntry(HiveSequence(user_hive_), "", hive)));
  }
  std::vector<std::string> Arguments(const std::vector<std::string>& command) {
    return With(command, MachineArguments(*test_));
  }
  TracedRun CleanKilledAt(size_t change, const std::string& method) {
    std::vector<std::string> command = {
        QUELLIXCTL, "clean",          "--method",         method,
        "--item",   "CleanTempFiles", "CleanUserFolders", "CleanRunMRU"};
    return RunTraced(Arguments(command), change);
  }
  std::string Backups() { return test_->options().settings + "/Backup"; }
  // The contents of all files below a folder of this system, by name.
  static std::map<std::string, std::string> Contents(const std::string& folder) {
    std::map<std::string, std::string> contents;
    if (!fs::exists(folder)) return contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) {
        contents[entry.path().filename().string()] = ReadNative(entry.path().string());
      }
    }
    return contents;
  }
  // Every file is where it was or in an archive that can be read.
  void ExpectNothingLost() {
    const TemporaryFolder restored;
    if (fs::exists(Backups())) {
      for (const auto& archive : fs::directory_iterator(Backups())) {
        if (archive.path().extension() != ".zip") continue;
        RunQuellixctl(Arguments({"backup", "restore", archive.path().filename().string(), "--to",
                                 restored.path(), "--overwrite", "always"}));
      }
    }
    std::map<std::string, std::string> found = Contents(restored.path());
    for (const std::string& folder : {temp_, mine_}) found.merge(Contents(test_->Native(folder)));
    for (const auto& [name, content] : contents_) EXPECT_EQ(found[name], content) << name;
  }
  void ExpectNothingLyingAbout() {
    for (const std::string& root : {test_->options().volume, test_->options().settings}) {
      for (const auto& entry : fs::recursive_directory_iterator(root)) {
        EXPECT_FALSE(IsTemporaryName(entry.path().filename().string())) << entry.path();
        EXPECT_NE(entry.path().extension(), ".quellix-old") << entry.path();
      }
    }
  }

  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  const std::string temp_ = std::string("C:\\Users\\") + kTesterName + "\\AppData\\Local\\Temp\\";
  const std::string user_hive_ =
      test_->Native(std::string("C:\\Users\\") + kTesterName + "\\NTUSER.DAT");
  const std::string mine_ = test_->Scratch() + "mine";
  std::map<std::string, std::string> contents_;
};

TEST_F(Kill, EveryFileIsOnTheDiskOrInTheArchiveAndTheNextRunFinishes) {
  Seed();
  const TracedRun whole = CleanKilledAt(SIZE_MAX, "backup");
  ASSERT_EQ(whole.exit_code, 0);
  ASSERT_GT(whole.changes, 30u);
  ExpectNothingLost();
  size_t killed = 0;  // a run that finds less to do ends before its last calls
  const size_t rounds = std::min(Rounds(12), whole.changes);
  for (size_t round = 0; round < rounds; ++round) {
    // Spread over the run; with many rounds each call has its turn.
    const size_t change = (round * whole.changes + whole.changes / 2) / rounds;
    SCOPED_TRACE(change);
    fs::remove_all(Backups());
    Seed();
    killed += CleanKilledAt(change, "backup").killed;
    EXPECT_TRUE(IsSoundHive(ReadNative(user_hive_)));
    ExpectNothingLost();
    EXPECT_EQ(CleanKilledAt(SIZE_MAX, "backup").exit_code, 0);
    EXPECT_TRUE(test_->Tree(temp_).empty() && test_->Tree(mine_).empty());
    EXPECT_TRUE(test_->ValueNames(kUser, kRunMruKey).empty());
    test_->CloseHives();
    ExpectNothingLost();
    ExpectNothingLyingAbout();
    for (const char* file : {"", ".LOG1"}) {
      EXPECT_EQ(ReadNative(user_hive_ + file).find(ToUtf16Bytes("cmd\\1")), std::string::npos);
    }
    if (HasFailure()) break;
  }
  EXPECT_GE(killed * 4, rounds * 3);
}

}  // namespace
}  // namespace quellix
