#include "backup_bench.h"

#include <fstream>
#include <random>
#include <stdexcept>

#include "app/removal.h"
#include "engine.h"
#include "search/drive_scan.h"
#include "support/scripted_view.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

class QuietView : public ScriptedView {
 public:
  void SetStatus(std::string_view) override {}
  void SetProgress(const ProgressBar&) override {}
};

// Half of it can be compressed, as in the logs and caches that are cleaned.
std::string HalfRandom(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = i % 64 < 32 ? static_cast<char>(random()) : static_cast<char>('a' + i % 23);
  }
  return bytes;
}

class BackupBench {
 public:
  BackupBench(const fs::path& home, SideBySide& table)
      : table_(table),
        machine_(TestMachine::Create()),
        ports_(machine_->machine()),
        settings_(ports_),
        archive_(ports_, state_.Backup),
        context_{ports_, settings_, state_, view_, archive_} {
    for (const auto& entry : fs::recursive_directory_iterator(home)) {
      if (entry.path().filename() == "Scratch") scratch_ = entry.path();
    }
    if (scratch_.empty()) throw std::runtime_error("no scratch folder below " + home.string());
    state_.RemovalMode = kBackUp;
    state_.BackupFolder = machine_->Scratch() + "safe\\";
  }

  void Run() {
    Compare("back up 20,000 files of 4 KiB / zip -m", 3, [this] { MakeSmall(20000, 4 << 10); });
    Compare("back up a file of 1 GiB / zip -m", 2, [this] { MakeLarge(); });
    const double few = std::min(SecondsAFile(2000), SecondsAFile(2000));
    table_.Report("us a backed-up file of 200,000 / of 2,000", SecondsAFile(200000), few, "u", 1.5);
  }

 private:
  fs::path Tree() const { return scratch_ / "tree"; }

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
    ClearPending(state_);
    CollectFiles(context_, machine_->Scratch() + "tree\\", "*.*");
    RemovePendingFiles(context_);
    if (!archive_.Close() || state_.SomeFilesLocked) throw std::runtime_error("not backed up");
  }

  void Shell(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
  }

  template <class Make>
  void Compare(const char* name, int rounds, const Make& make) {
    table_.Compare(
        name, 1.0, rounds,
        [this, make] {
          Clear();
          make();
          Shell("sync");
        },
        [this] { BackUp(); },
        [this] {
          Shell("cd '" + Tree().string() + "' && zip -q -r -m '" +
                (scratch_ / "other.zip").string() + "' .");
        });
  }

  double SecondsAFile(int files) {
    Clear();
    MakeSmall(files, 256);
    Shell("sync");
    return SideBySide::Seconds([this] { BackUp(); }) / files * 1e6;
  }

  SideBySide& table_;
  std::unique_ptr<TestMachine> machine_;
  Machine ports_;
  Settings settings_;
  RunState state_;
  QuietView view_;
  ModZip archive_;
  CleaningContext context_;
  fs::path scratch_;
};

}  // namespace

void MeasureBackups(const fs::path& home, SideBySide& table) { BackupBench(home, table).Run(); }

}  // namespace quellix
