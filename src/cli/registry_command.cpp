#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/console_view.h"
#include "registry_tools/scan_tools.h"
#include "run/protected_keys.h"

namespace quellix {
namespace {

struct RegistryOptions {
  std::string tool;  // one of ToolNames
  bool thorough = false;
  bool remove = false;
  bool json = false;
};

class ConsoleScanView : public ScanView {
 public:
  bool stopped() { return console_.Breathe(); }
  bool has_problem() const { return has_problem_; }

  void ShowState() override {}
  void ShowProblem(std::string_view sentence) override {
    has_problem_ = true;
    std::cerr << sentence << std::endl;
  }

 private:
  ConsoleView console_;
  bool has_problem_ = false;
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

std::vector<std::string> ToolNames() {
  std::vector<std::string> names;
  for (const ScanTool tool : kScanTools) names.emplace_back(TraitsOf(tool).name);
  return names;
}

ScanTool ToolOf(std::string_view name) {
  return *std::ranges::find_if(kScanTools,
                               [&](ScanTool each) { return name == TraitsOf(each).name; });
}

// Prints what a registry tool lists, a line a reference, or as JSON. With `remove` those that lead
// nowhere are deleted, of a tool that ticks none all it lists.
int Scan(const RegistryOptions& options, const Machine& machine) {
  const ScanTool tool = ToolOf(options.tool);
  ConsoleScanView view;
  const auto scan = MakeScan(tool, machine, view);
  scan->SetThorough(options.thorough);
  scan->StartScan([&view](const Progress&) { return view.stopped(); });
  if (options.json) {
    std::cout << ToJson(*scan).dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
              << '\n';
  } else {
    PrintLines(*scan);
  }
  std::cout << std::flush;
  std::cerr << scan->status() << std::endl;
  if (view.stopped() || view.has_problem()) return kFailed;
  return options.remove ? Delete(*scan, view) : kDone;
}

}  // namespace

void AddRegistryCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<RegistryOptions>();
  CLI::App& registry =
      commands.Add("registry", "List registry references that lead nowhere",
                   [options](const Machine& machine) { return Scan(*options, machine); });
  registry.add_option("tool", options->tool, "Which references")
      ->required()
      ->check(CLI::IsMember(ToolNames()));
  registry.add_flag("--thorough", options->thorough,
                    "file-references: examine every value of every key");
  registry.add_flag("--delete", options->remove,
                    "Delete those that lead nowhere, kept in a .reg backup (else nothing is "
                    "changed)");
  registry.add_flag("--json", options->json, "Print the references as JSON");
  registry.callback([options] {
    if (!options->thorough || TraitsOf(ToolOf(options->tool)).has_thorough) return;
    throw CLI::ValidationError("--thorough", "belongs to file-references.");
  });
}

}  // namespace quellix
