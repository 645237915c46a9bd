// Registry hives of a volume: whatever is in one, it is walked and deleted from without harm, and
// what is written is a hive that is sound.
#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "registry_tools/scan_tools.h"

using namespace quellix;

namespace {

struct QuietView : ScanView {
  void ShowState() override {}
  void ShowProblem(std::string_view) override { has_problem = true; }
  bool has_problem = false;
};

struct ScanOutcome {
  size_t rows = 0;
  bool has_problem = false;
};

// Lists what leads nowhere in the hive, and deletes it when asked.
ScanOutcome Scan(const VolumeFile& file, bool remove) {
  const Machine machine = file.machine();
  HivePaths paths;
  paths.software = file.path();
  VolumeRegistry registry(static_cast<VolumeFileSystem&>(machine.files), paths);
  QuietView view;
  const Machine fuzzed{machine.files,     registry,         machine.shell,
                       machine.url_cache, machine.profile,  machine.system,
                       machine.session,   machine.cleaners, machine.program_folder};
  const auto scan = MakeScan(ScanTool::kFileReferences, fuzzed, view);
  scan->SetThorough(true);
  scan->StartScan();
  const ScanOutcome outcome{scan->RowCount(), view.has_problem};
  for (size_t i = 0; i < scan->RowCount(); ++i) scan->SetChecked(i, true);
  if (remove) scan->DeleteChecked(false);
  try {
    registry.CloseHives();
  } catch (const Error&) {  // nothing was written then
  }
  return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static VolumeFile file("hive");
  static const bool has_settings = [] {  // the .reg file of each input would fill the disk
    const Machine machine = file.machine();
    machine.files.WriteWholeFile(machine.program_folder + "\\Settings.ini",
                                 "[Backup]\r\nRegistry=0\r\n");
    return true;
  }();
  const std::string_view bytes = BytesOf(data, size);
  file.Write(bytes);
  Scan(file, has_settings);
  const std::string written = ReadNative(file.native());
  if (written == bytes) return 0;
  const ScanOutcome again = Scan(file, false);
  if (again.has_problem) std::abort();
  return 0;
}
