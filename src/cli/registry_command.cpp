#include <algorithm>
#include <iostream>

#include "cli/commands.h"
#include "cli/console_view.h"
#include "platform/preview/preview_machine.h"
#include "registry_tools/scan_tools.h"
#include "run/protected_keys.h"

namespace quellix {
namespace {

struct RegistryOptions {
  std::string tool;  // one of ToolNames
  bool thorough = false;
  bool remove = false;
  bool preview = false;
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

void PrintLines(std::ostream& out, const RegistryScan& scan) {
  for (size_t i = 0; i < scan.RowCount(); ++i) {
    out << Word(scan.row(i).mark);
    for (size_t c = 0; c < scan.traits().columns.size(); ++c) out << '\t' << scan.row(i).texts[c];
    out << '\n';
  }
}

std::string_view StateName(RowMark mark) {
  if (mark == RowMark::kNone) return "unmarked";
  return mark == RowMark::kNotJudged ? "notJudged" : Word(mark);
}

// As listed, whatever is deleted afterwards.
struct Listed {
  explicit Listed(const RegistryScan& scan) : columns(scan.traits().columns) {
    for (size_t i = 0; i < scan.RowCount(); ++i) rows.push_back(scan.row(i));
  }

  // The columns of the tool, as its list shows them.
  std::string Details(const ScanRow& row) const {
    std::string text;
    for (size_t c = 0; c < columns.size(); ++c)
      text.append(c == 0 ? "" : "; ").append(columns[c].title).append(": ").append(row.texts[c]);
    return text;
  }

  std::span<const ScanColumn> columns;
  std::vector<ScanRow> rows;
};

ReportTable TableOf(const Listed& listed, const RegistryScan& scan) {
  return {.command = "registry",
          .columns = {"state", "key", "value", "file", "ticked", "details"},
          .count = listed.rows.size(),
          .row = [&listed](size_t i) -> std::vector<ReportCell> {
            const ScanRow& row = listed.rows[i];
            return {std::string(StateName(row.mark)),
                    std::string(RootName(row.root)) + "\\" + row.key,
                    TextCell(row.name),
                    TextCell(row.file),
                    row.checked,
                    listed.Details(row)};
          },
          .summary = {{"tool", std::string(scan.traits().name)}, {"status", scan.status()}}};
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

// Prints what a registry tool lists. With `remove` those that lead nowhere are deleted, of a tool
// that ticks none all it lists.
int Scan(const RegistryOptions& options, const ReportOptions& report_options,
         const Machine& machine) {
  Report report(report_options);
  ConsoleScanView view;
  const auto scan = MakeScan(ToolOf(options.tool), machine, view);
  scan->SetThorough(options.thorough);
  scan->StartScan([&view](const Progress&) { return view.stopped(); });
  PrintLines(report.text(), *scan);
  report.text() << std::flush;
  std::cerr << scan->status() << std::endl;
  const bool failed = view.stopped() || view.has_problem();
  if (options.remove && !failed) TickAllWithoutMark(*scan);
  const Listed listed(*scan);
  const int code = failed ? kFailed : options.remove ? Delete(*scan, view) : int{kDone};
  ReportTable table = TableOf(listed, *scan);
  table.summary.emplace_back("preview", options.preview);
  if (options.remove && !options.preview) {
    table.summary.emplace_back("stayed", uint64_t{scan->stayed()});
    table.summary.emplace_back("archive", TextCell(scan->undo_path()));
  }
  return report.Finish(table, code);
}

// The same without a change.
int PreviewScan(const RegistryOptions& options, const ReportOptions& report_options,
                const Machine& machine) {
  PreviewMachine preview(machine);
  return Scan(options, report_options, preview.machine());
}

}  // namespace

void AddRegistryCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<RegistryOptions>();
  CLI::App& registry = commands.Add("registry", "List registry references that lead nowhere",
                                    [options, &commands](const Machine& machine) {
                                      const auto scan = options->preview ? PreviewScan : Scan;
                                      return scan(*options, commands.report_options(), machine);
                                    });
  commands.Changes(registry);
  registry.add_option("tool", options->tool, "Which references")
      ->required()
      ->check(CLI::IsMember(ToolNames()));
  registry.add_flag("--thorough", options->thorough,
                    "file-references: examine every value of every key");
  registry.add_flag("--delete", options->remove,
                    "Delete those that lead nowhere, kept in a .reg backup (else nothing is "
                    "changed)");
  registry.add_flag("--preview", options->preview, "With --delete: change nothing");
  commands.AddReport(registry);
  registry.callback([options] {
    if (!options->thorough || TraitsOf(ToolOf(options->tool)).has_thorough) return;
    throw CLI::ValidationError("--thorough", "belongs to file-references.");
  });
}

}  // namespace quellix
