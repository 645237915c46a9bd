#include "cli/registry_command.h"

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/console_plugins.h"
#include "cli/console_view.h"
#include "registry_tools/scan_tools.h"
#include "run/protected_keys.h"

namespace quellix {
namespace {

class ConsoleScanView : public ScanView {
 public:
  void OnStop(const std::function<void()>& stop) {
    console_.OnStop([this, stop] {
      stopped_ = true;
      stop();
    });
  }
  bool stopped() const { return stopped_; }
  bool has_problem() const { return has_problem_; }

  void Yield() override { console_.Yield(); }
  void ShowState() override {}
  void ShowProblem(std::string_view sentence) override {
    has_problem_ = true;
    std::cerr << sentence << std::endl;
  }

 private:
  ConsoleView console_;
  bool stopped_ = false, has_problem_ = false;
};

std::string_view Word(RowMark mark) {
  if (mark == RowMark::kNotJudged) return "not judged";
  return mark == RowMark::kValid ? "valid" : "orphaned";
}

void PrintLines(const RegistryScan& scan) {
  for (size_t i = 0; i < scan.RowCount(); ++i) {
    std::cout << Word(scan.row(i).mark);
    for (size_t c = 0; c < scan.traits().columns.size(); ++c) {
      std::cout << '\t' << scan.row(i).texts[c];
    }
    std::cout << '\n';
  }
}

nlohmann::ordered_json ToJson(const RegistryScan& scan) {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (size_t i = 0; i < scan.RowCount(); ++i) {
    nlohmann::ordered_json row;
    for (size_t c = 0; c < scan.traits().columns.size(); ++c) {
      row[scan.traits().columns[c].title] = scan.row(i).texts[c];
    }
    row["state"] = Word(scan.row(i).mark);
    row["checked"] = scan.row(i).checked;
    rows.push_back(std::move(row));
  }
  return {{"tool", scan.traits().name}, {"status", scan.status()}, {"rows", std::move(rows)}};
}

// What the user has named as a whole by --delete is ticked where the tool ticks nothing; but what
// Windows depends on nobody has looked at one by one.
void TickAllWithoutMark(RegistryScan& scan) {
  size_t left = 0;
  for (size_t i = 0; i < scan.RowCount(); ++i) {
    const ScanRow& row = scan.row(i);
    if (row.mark != RowMark::kNone) continue;
    const bool keeps = ProtectedKeys::IsInKeptTree(row.root, row.key);
    scan.SetChecked(i, !keeps);
    left += keeps;
  }
  if (left == 0) return;
  std::cerr << left << " reference(s) in keys that Windows depends on are left\n";
}

int Delete(RegistryScan& scan, ConsoleScanView& view) {
  TickAllWithoutMark(scan);
  scan.DeleteChecked(false);
  if (view.has_problem()) return kFailed;
  if (!scan.undo_path().empty()) std::cerr << "kept in " << scan.undo_path() << '\n';
  const size_t stayed = scan.stayed();
  const std::string why = scan.failure();
  if (scan.timer_enabled()) scan.StartScan();
  std::cerr << scan.status() << std::endl;
  if (stayed == 0) return kDone;
  std::cerr << stayed << " reference(s) could not be deleted: " << why << std::endl;
  return kFailed;
}

}  // namespace

std::vector<std::string> ScanToolNames() {
  std::vector<std::string> names;
  for (const ScanTool tool : kScanTools) names.emplace_back(TraitsOf(tool).name);
  return names;
}

int RunRegistry(const RegistryCommand& command, const ConsolePlatform& platform) {
  const auto tool = std::ranges::find_if(
      kScanTools, [&](ScanTool each) { return command.tool == TraitsOf(each).name; });
  if (command.thorough && !TraitsOf(*tool).has_thorough) {
    return Fail("--thorough belongs to file-references.", kWrongUsage);
  }
  const std::unique_ptr<OpenMachine> opened = platform.open(command.machine);
  ConsoleScanView view;
  const auto scan = MakeScan(*tool, opened->machine(), view);
  view.OnStop([&scan] { scan->StopScan(); });
  scan->SetThorough(command.thorough);
  scan->StartScan();
  if (command.json) {
    std::cout << ToJson(*scan).dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
              << '\n';
  } else {
    PrintLines(*scan);
  }
  std::cout << std::flush;
  std::cerr << scan->status() << std::endl;
  if (view.stopped() || view.has_problem()) return kFailed;
  return command.remove ? Delete(*scan, view) : kDone;
}

}  // namespace quellix
