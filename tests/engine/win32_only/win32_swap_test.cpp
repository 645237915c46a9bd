#include <atomic>
#include <cstddef>
#include <thread>

#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "run/removal.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr int kFolders = 30, kRounds = 2;

// A folder that someone holds with the right to rename it, wherever it goes.
class HeldFolder {
 public:
  explicit HeldFolder(const std::string& path)
      : folder_(CreateFileW(Wide(path).c_str(), DELETE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {}
  bool RenameTo(const std::string& path) const {
    struct {
      FILE_RENAME_INFO head;
      wchar_t more[MAX_PATH];
    } to{};
    const std::wstring wide = Wide(path);
    to.head.FileNameLength = static_cast<DWORD>(wide.size() * sizeof(wchar_t));
    wide.copy(to.head.FileName, wide.size());
    return SetFileInformationByHandle(folder_.Get(), FileRenameInfo, &to, sizeof to) != 0;
  }

 private:
  UniqueFile folder_;
};

// Someone who may write to what is cleaned exchanges a folder of it for one in which links stand
// for its folders, again and again.
struct Win32SwapTest : RunFixture {
  static std::string Sub(int folder) { return "\\" + std::to_string(folder); }
  std::string Victim(int folder) const { return scratch + "outside" + Sub(folder); }

  void SeedFiles() {
    for (int folder = 0; folder < kFolders; ++folder) {
      for (const char* file : {"\\deep\\1.tmp", "\\deep\\2.tmp"}) {
        machine->MakeFile(cleaned_ + Sub(folder) + file, "seen");
        machine->MakeFile(Victim(folder) + file, "kept");
      }
    }
  }
  // Ends with both in their own places.
  void SwapUntil(const std::atomic<bool>& done) {
    const HeldFolder cleaned(cleaned_), planted(planted_);
    while (!done) {
      if (!cleaned.RenameTo(scratch + "away")) continue;
      if (planted.RenameTo(cleaned_)) {
        ++swaps_;
        while (!planted.RenameTo(planted_)) std::this_thread::yield();
      }
      while (!cleaned.RenameTo(cleaned_)) std::this_thread::yield();
    }
  }

  const std::string temp_ = scratch + "temp", cleaned_ = temp_ + "\\a";
  const std::string planted_ = scratch + "planted";
  std::atomic<int> swaps_ = 0;
};

TEST_F(Win32SwapTest, NothingOutsideGoesWhileFoldersAreSwappedForLinks) {
  SeedFiles();
  const Names outside = machine->Tree(scratch + "outside");
  for (int folder = 0; folder < kFolders; ++folder)
    machine->MakeFolderLink(planted_ + Sub(folder), Victim(folder));
  for (const RemovalModes mode : {kDelete, kWipe, kRecycle}) {
    // The bin takes paths: Wine lets a folder be moved although something is open below it.
    if (mode == kRecycle && !machine->Can(Ability::kChangeMovedFolders)) continue;
    for (int round = 0; round < kRounds; ++round) {
      SCOPED_TRACE("mode " + std::to_string(mode));
      SeedFiles();
      engine.state().RemovalMode = mode;
      const FileList list = Collect(temp_);
      ASSERT_EQ(list.PendingFiles.size(), 2u * kFolders);
      std::atomic<bool> done = false;
      std::thread attacker([&] { SwapUntil(done); });
      RemovePendingFiles(context, list);
      done = true;
      attacker.join();
      ASSERT_EQ(machine->Tree(scratch + "outside"), outside);
    }
  }
  EXPECT_GT(swaps_, 0);
  RecordProperty("swaps", swaps_);
  engine.state().RemovalMode = kDelete;
  RemovePendingFiles(context, Collect(temp_));
  EXPECT_EQ(machine->Tree(temp_).size(), 1u + 2 * kFolders);  // the folders alone
}

}  // namespace
}  // namespace quellix
