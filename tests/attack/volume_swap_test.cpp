#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "attack/volume_traced_run.h"
#include "cli/console_fixture.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 8, kFiles = 25;

// Someone who may write to what is cleaned swaps its folders for links, again and again.
struct Swap : testing::Test {
  std::string Temp(int folder) const {
    return temp_ + "/a/Sub " + std::to_string(folder) + "/deep";
  }
  std::string Victim(int folder) const { return outside_.path() + "/" + std::to_string(folder); }
  std::string Link(int folder) const { return temp_ + "/../link " + std::to_string(folder); }
  static std::string File(int file) { return "/file " + std::to_string(file) + ".tmp"; }

  void Seed() {
    for (int folder = 0; folder < kFolders; ++folder) {
      for (const std::string& place : {Temp(folder), Victim(folder)}) {
        fs::create_directories(place);
        for (int file = 0; file < kFiles; ++file) WriteNative(place + File(file), "kept");
      }
      fs::remove_all(Link(folder));
      fs::create_directory_symlink(Victim(folder), Link(folder));
    }
  }
  void SwapUntil(const std::atomic<bool>& done) {
    while (!done) {
      for (int folder = 0; folder < kFolders; ++folder) {
        const std::string place = Temp(folder), link = Link(folder);
        if (renameat2(AT_FDCWD, place.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0) {
          ++swaps_;
        }
      }
    }
  }
  void ExpectVictimsWhole() {
    for (int folder = 0; folder < kFolders; ++folder) {
      for (int file = 0; file < kFiles; ++file)
        ASSERT_EQ(ReadNative(Victim(folder) + File(file)), "kept");
    }
  }

  const TemporaryFolder outside_;
  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  const std::string temp_ =
      test_->Native(std::string("C:\\Users\\") + kTesterName + "\\AppData\\Local\\Temp");
  std::atomic<uint64_t> swaps_ = 0;
};

TEST_F(Swap, NothingOutsideGoesWhateverTheMethod) {
  for (const char* method : {"delete", "recycle", "wipe", "backup"}) {
    SCOPED_TRACE(method);
    for (size_t round = 0; round < Rounds(2); ++round) {
      Seed();
      StoreMachine(*test_);
      const std::vector<std::string> arguments = {"clean", "--method", method, "--item",
                                                  "CleanTempFiles"};
      std::atomic<bool> done = false;
      std::thread attacker([&] { SwapUntil(done); });
      RunQuellixctl(With(arguments, MachineArguments(*test_)));
      done = true;
      attacker.join();
      ExpectVictimsWhole();
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(swaps_, 0u);
  RecordProperty("swaps", std::to_string(swaps_));
}

}  // namespace
}  // namespace quellix
