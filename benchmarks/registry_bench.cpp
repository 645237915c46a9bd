#include "registry_bench.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "bench_machine.h"
#include "registry_data.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr int kKeys = 20000;
// What programs keep beside many small values, so that the hive comes to 100 MB.
constexpr int kLargeValues = 3500;
constexpr size_t kLargeValue = 16000;
constexpr const char* kSoftware = "C:\\Windows\\System32\\config\\SOFTWARE";

void Dump(const std::string& hive) { RunShell("hivexml '" + hive + "' > /dev/null"); }

// A plain program's way to change a byte of a file: all of it read, written and flushed.
void ReadAndWrite(const std::string& hive) {
  std::ifstream in(hive, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  const std::string copy = hive + ".copy";
  const int fd = open(copy.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const bool done =
      write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) && fsync(fd) == 0;
  close(fd);
  if (!done) throw std::runtime_error("not written: " + copy);
}

// Of a process, in bytes; 0 when it has ended. Files that are mapped are the system's to give up.
double PrivateMemoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("RssAnon:")) return std::stod(line.substr(8)) * 1024;
  }
  return 0;
}

// The most memory of its own that another process holds for it, in bytes.
double MemoryOf(const SideBySide::Step& step) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      step();
    } catch (const std::exception&) {
      _exit(1);
    }
    _exit(0);
  }
  double most = 0;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    most = std::max(most, PrivateMemoryOf(child));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  if (status != 0) throw std::runtime_error("the measured process failed");
  return most;
}

class RegistryBench {
 public:
  explicit RegistryBench(SideBySide& table)
      : table_(table), machine_(VolumeTestMachine::CreateVolume()) {
    MakeRegistry(*machine_, RegistryRoot::kLocalMachine, "SOFTWARE", kKeys);
    machine_->CloseHives();
    hive_ = machine_->Native(kSoftware);
  }

  void References() {
    table_.Compare(
        "references in 200,000 values / hivexml", 0.5, 7, [&] { machine_->CloseHives(); },
        [&] { WalkThoroughly(machine_->machine(), kKeys / 2); }, [&] { Dump(hive_); });
  }

  void Deletion() {
    const std::string large(kLargeValue, 'x');
    for (int i = 0; i < kLargeValues; ++i)
      machine_->SetText(RegistryRoot::kLocalMachine, "SOFTWARE\\Large " + std::to_string(i % 100),
                        std::to_string(i), large);
    machine_->CloseHives();
    const auto size = static_cast<double>(fs::file_size(hive_));
    std::printf("(the hive has %.0f MB)\n", size / 1e6);
    table_.Compare(
        "delete a value of that hive / read, write it", 1.2, 5, [&] { machine_->CloseHives(); },
        [&] { DeleteOne(); }, [&] { ReadAndWrite(hive_); });
    const double idle = PrivateMemoryOf(getpid());
    const double held = MemoryOf([&] { DeleteOne(); });
    table_.Report("MB held for it / those of the hive", (held - idle) / 1e6, size / 1e6, "M", 1.3);
  }

 private:
  void DeleteOne() {
    const std::string name = std::to_string(next_);
    const std::string key = "SOFTWARE\\Large " + std::to_string(next_++ % 100);
    const auto opened =
        machine_->machine().registry.Open(RegistryRoot::kLocalMachine, key, RegistryAccess::kWrite);
    if (!opened || !opened->DeleteValue(name)) throw std::runtime_error("not deleted: " + key);
    machine_->CloseHives();
  }

  SideBySide& table_;
  std::unique_ptr<VolumeTestMachine> machine_;
  std::string hive_;
  int next_ = 0;
};

}  // namespace

void MeasureRegistry(const std::filesystem::path&, SideBySide& table) {
  RegistryBench bench(table);
  bench.References();
  bench.Deletion();
}

}  // namespace quellix
