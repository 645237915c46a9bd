#include "backup_bench.h"

#include <fstream>
#include <random>
#include <stdexcept>

#include "backup/backups.h"
#include "bench_machine.h"
#include "run/removal.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

// Half of it can be compressed, as in the logs and caches that are cleaned.
std::string HalfRandom(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = i % 64 < 32 ? static_cast<char>(random()) : static_cast<char>('a' + i % 23);
  }
  return bytes;
}

class BackupBench : BenchMachine {
 public:
  BackupBench(const fs::path& home, SideBySide& table) : BenchMachine(home, table) {
    state_.RemovalMode = kBackUp;
    state_.BackupFolder = machine_->Scratch() + "safe\\";
  }

  void Run() {
    Compare("back up 20,000 files of 4 KiB / zip -m", 3, [this] { MakeSmall(20000, 4 << 10); });
    Compare("back up a file of 1 GiB / zip -m", 2, [this] { MakeLarge(); });
    const double few = std::min(SecondsAFile(2000), SecondsAFile(2000));
    table_.Report("us a backed-up file of 200,000 / of 2,000", SecondsAFile(200000), few, "u", 1.5);
  }

  void RunRestores() {
    const double restored = std::min(SecondsARestore(2000), SecondsARestore(2000));
    table_.Report("us a restored file of 200,000 in one folder / of 2,000", SecondsARestore(200000),
                  restored, "u", 1.5);
  }

 private:
  void Clear() {
    fs::remove_all(Tree());
    fs::remove_all(scratch_ / "safe");
    fs::remove(scratch_ / "other.zip");
    fs::create_directories(Tree());
  }

  void MakeSmall(int files, size_t size) {
    const std::string bytes = HalfRandom(1 << 20, 1);
    for (int i = 0; i < files; ++i) {
      const fs::path folder = Tree() / std::to_string(i / 100);
      if (i % 100 == 0) fs::create_directories(folder);
      const size_t from = static_cast<size_t>(i) * 61 % (bytes.size() - size);
      std::ofstream(folder / std::to_string(i)) << bytes.substr(from, size);
    }
  }

  void MakeLarge() {
    std::ofstream file(Tree() / "large.bin");
    for (unsigned i = 0; i < 1024; ++i) file << HalfRandom(1 << 20, i);
  }

  void BackUp() {
    state_.BackupDrive.clear();
    ScanTree();
    RemovePendingFiles(context_, list_);
    archive_.Close();
    if (state_.SomeFilesLocked) throw std::runtime_error("not backed up");
  }

  template <class Make>
  void Compare(const char* name, int rounds, const Make& make) {
    table_.Compare(
        name, 1.0, rounds,
        [this, make] {
          Clear();
          make();
          RunShell("sync");
        },
        [this] { BackUp(); },
        [this] {
          RunShell("cd '" + Tree().string() + "' && zip -q -r -m '" +
                   (scratch_ / "other.zip").string() + "' .");
        });
  }

  double SecondsAFile(int files) {
    Clear();
    MakeSmall(files, 256);
    RunShell("sync");
    return SideBySide::Seconds([this] { BackUp(); }) / files * 1e6;
  }

  double SecondsARestore(int files) {
    Clear();
    for (int i = 0; i < files; ++i) std::ofstream(Tree() / std::to_string(i)) << i;
    BackUp();
    Backups backups(ports_, state_.BackupFolder);
    NoPrompts prompts;
    uint64_t restored = 0;
    const double seconds = SideBySide::Seconds([&] {
      for (const BackupInfo& info : backups.List()) {
        restored += backups.Restore(info.name, {}, prompts).restored;
      }
    });
    if (restored != static_cast<uint64_t>(files)) throw std::runtime_error("not restored");
    return seconds / files * 1e6;
  }
};

}  // namespace

void MeasureBackups(const fs::path& home, SideBySide& table) { BackupBench(home, table).Run(); }
void MeasureRestores(const fs::path& home, SideBySide& table) {
  BackupBench(home, table).RunRestores();
}

}  // namespace quellix
