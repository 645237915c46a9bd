#include "volumes_bench.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include "bench_machine.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr int kVolumes = 10, kFiles = 200;
constexpr size_t kFileSize = 256 << 10;

std::string VolumeAt(const fs::path& home, int number) {
  return (home / ("volume " + std::to_string(number))).string();
}

fs::path TempOf(const fs::path& volume) {
  return volume / "Users" / kTesterName / "AppData" / "Local" / "Temp";
}

void FillTemp(const fs::path& volume) {
  const std::string bytes(kFileSize, 'x');
  for (int i = 0; i < kFiles; ++i)
    std::ofstream(TempOf(volume) / (std::to_string(i) + ".tmp"), std::ios::binary) << bytes;
}

// Wiped, which keeps one processor busy; what is only deleted goes by two threads as it is.
void Clean(const fs::path& home, int jobs) {
  std::string command = "'" QUELLIXCTL "' clean --item CleanTempFiles --method wipe --settings '" +
                        (home / "settings").string() + "' --jobs " + std::to_string(jobs);
  for (int i = 0; i < kVolumes; ++i) command += " --volume '" + VolumeAt(home, i) + "'";
  RunShell(command + " > /dev/null");
  for (int i = 0; i < kVolumes; ++i) {
    if (!fs::is_empty(TempOf(VolumeAt(home, i)))) throw std::runtime_error("files stayed");
  }
}

}  // namespace

void MeasureVolumes(const fs::path& home, SideBySide& table) {
  for (int i = 0; i < kVolumes; ++i) SeedWindows(VolumeAt(home, i));
  fs::create_directories(home / "settings");
  std::ofstream(home / "settings" / "Settings.ini") << "[General]\nExtraS=1\nWipeStep=65536\n";
  table.Compare(
      "wipe files of ten volumes, --jobs 2 / in turn", 0.6, 5,
      [&home] {
        for (int i = 0; i < kVolumes; ++i) FillTemp(VolumeAt(home, i));
      },
      [&home] { Clean(home, 2); }, [&home] { Clean(home, 1); });
}

}  // namespace quellix
