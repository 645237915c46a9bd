#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "engine.h"
#include "search/drive_scan.h"
#include "side_by_side.h"
#include "support/scripted_view.h"
#include "support/test_machine.h"

namespace quellix {

// Shows and keeps nothing, as a console run does.
class QuietView : public ScriptedView {
 public:
  void SetStatus(std::string_view) override {}
  void SetProgress(const ProgressBar&) override {}
  void ShowCritical(std::string_view text) override { throw std::runtime_error(std::string(text)); }
};

inline void RunShell(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

// A test machine below `home`, which TMPDIR names, and what a benchmark needs of it.
class BenchMachine {
 protected:
  BenchMachine(const std::filesystem::path& home, SideBySide& table)
      : table_(table),
        machine_(TestMachine::Create()),
        ports_(machine_->machine()),
        settings_(ports_),
        archive_(ports_, state_),
        context_{ports_, settings_, state_, view_, archive_},
        folder_(machine_->Scratch() + "tree\\") {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home)) {
      if (entry.path().filename() == "Scratch") scratch_ = entry.path();
    }
    if (scratch_.empty()) throw std::runtime_error("no scratch folder below " + home.string());
  }

  std::filesystem::path Tree() const { return scratch_ / "tree"; }

  void ScanTree() {
    list_ = CollectFiles(context_, ports_.files.OpenFolder(folder_), folder_, "*.*");
  }

  SideBySide& table_;
  std::unique_ptr<TestMachine> machine_;
  Machine ports_;
  Settings settings_;
  RunState state_;
  QuietView view_;
  ModZip archive_;
  CleaningContext context_;
  FileList list_;
  std::filesystem::path scratch_;
  std::string folder_;  // the tree as the engine names it
};

}  // namespace quellix
