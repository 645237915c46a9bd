#include "registry_bench.h"

#include <cstdlib>

#include "registry_data.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

constexpr int kKeys = 20000;

void Dump(const std::string& hive) {
  if (std::system(("hivexml '" + hive + "' > /dev/null").c_str()) != 0) {
    throw std::runtime_error("hivexml failed on " + hive);
  }
}

}  // namespace

void MeasureRegistry(const std::filesystem::path&, SideBySide& table) {
  const auto machine = VolumeTestMachine::CreateVolume();
  MakeRegistry(*machine, RegistryRoot::kLocalMachine, "SOFTWARE", kKeys);
  machine->CloseHives();
  const std::string hive = machine->Native("C:\\Windows\\System32\\config\\SOFTWARE");
  table.Compare(
      "references in 200,000 values / hivexml", 1.0, 7, [&] { machine->CloseHives(); },
      [&] { WalkThoroughly(machine->machine(), kKeys / 2); }, [&] { Dump(hive); });
}

}  // namespace quellix
