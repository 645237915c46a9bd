#pragma once

#include <stdexcept>

#include "registry_tools/scan_tools.h"
#include "support/test_machine.h"

namespace quellix {

// Keys with ten values each, as programs leave them: one in ten names a file, and of these half
// are gone.
inline void MakeRegistry(TestMachine& machine, RegistryRoot root, const std::string& branch,
                         int keys) {
  const std::string there = machine.Scratch() + "program files\\";
  for (int i = 0; i < 100; ++i) machine.MakeFile(there + std::to_string(i) + ".dll", "x");
  for (int key = 0; key < keys; ++key) {
    const std::string path = branch + "\\Vendor " + std::to_string(key / 200) + "\\{component " +
                             std::to_string(key) + "}";
    for (int i = 0; i < 9; ++i) {
      machine.SetText(root, path, "Setting number " + std::to_string(i),
                      "a text of some length " + std::to_string(key));
    }
    const std::string folder = key % 2 == 0 ? there : machine.Scratch() + "program gone\\";
    machine.SetText(root, path, "Library", folder + std::to_string(key % 100) + ".dll");
  }
}

// Shows nothing.
class QuietScanView : public ScanView {
 public:
  void ShowState() override {}
  void ShowProblem(std::string_view text) override { throw std::runtime_error(std::string(text)); }
};

inline void WalkThoroughly(const Machine& machine, size_t rows_expected) {
  QuietScanView view;
  const auto scan = MakeScan(ScanTool::kFileReferences, machine, view);
  scan->SetThorough(true);
  scan->StartScan();
  if (scan->RowCount() < rows_expected) throw std::runtime_error("references were not found");
}

}  // namespace quellix
