#include <algorithm>
#include <iostream>

#include "cli/commands.h"
#include "cli/console_view.h"
#include "platform/preview/preview_machine.h"
#include "platform/text.h"
#include "registry_tools/scan_tools.h"
#include "run/protected_keys.h"

namespace quellix {
namespace {

struct RegistryOptions {
  std::string tool;  // one of ToolNames
  bool thorough = false;
  bool remove = false;
  bool enable = false, disable = false;
  std::vector<std::string> names;  // which of those listed
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

// What tells an entry from others of its name.
std::string FullNameOf(const ScanRow& row) {
  if (!row.own_file.empty()) return row.own_file;
  std::string name = std::string(RootName(row.root)).append("\\").append(row.key);
  if (!row.name.empty()) name.append("\\").append(row.name);
  return name;
}

// The one row that a name means. Throws Error where there is none, or more than one.
size_t RowNamed(const RegistryScan& scan, std::string_view name) {
  std::vector<size_t> found;
  for (size_t i = 0; i < scan.RowCount(); ++i) {
    if (EqualsNoCase(FullNameOf(scan.row(i)), name)) return i;
    if (EqualsNoCase(scan.row(i).texts[0], name)) found.push_back(i);
  }
  if (found.size() == 1) return found[0];
  std::string sentence = "Nothing that is listed is called " + std::string(name) + ".";
  if (!found.empty()) sentence = std::string(name) + " is there more than once. Name one in full:";
  for (const size_t row : found) sentence += "\n" + FullNameOf(scan.row(row));
  throw Error(Error::Kind::kMissing, sentence);
}

std::vector<size_t> RowsNamed(const RegistryScan& scan, const std::vector<std::string>& names) {
  std::vector<size_t> rows;
  for (const std::string& name : names) rows.push_back(RowNamed(scan, name));
  return rows;
}

int TellStayed(const RegistryScan& scan, const char* what) {
  if (!scan.undo_path().empty()) std::cerr << "kept in " << scan.undo_path() << '\n';
  std::cerr << scan.status() << std::endl;
  if (scan.stayed() == 0) return kDone;
  std::cerr << scan.stayed() << what << scan.failure() << std::endl;
  return kFailed;
}

int Delete(RegistryScan& scan, ConsoleScanView& view) {
  scan.DeleteChecked(false);
  if (view.has_problem()) return kFailed;
  if (scan.timer_enabled()) scan.StartScan();
  return TellStayed(scan, " reference(s) could not be deleted: ");
}

// Tells of each that is as it is wanted already, and fails where one cannot be switched.
int Switch(RegistryScan& scan, ScanAction action, const std::vector<std::string>& names) {
  const std::vector<size_t> rows = RowsNamed(scan, names);
  bool failed = false;
  for (const size_t row : rows) {
    const bool can_enable = scan.Offers(ScanAction::kEnable, row);
    const bool can_disable = scan.Offers(ScanAction::kDisable, row);
    const std::string& why = scan.row(row).why_stays;
    if (!can_enable && !can_disable) {
      failed = true;
      std::cerr << scan.row(row).texts[0] << " cannot be switched. " << why << std::endl;
    } else if (!scan.Offers(action, row)) {
      std::cerr << scan.row(row).texts[0] << " is so already" << std::endl;
    }
  }
  scan.Act(action, rows);
  const int code = TellStayed(scan, " could not be switched: ");
  return failed ? kFailed : code;
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

// Does what is asked for. Of a tool that ticks nothing it is done with what is named.
int Change(const RegistryOptions& options, RegistryScan& scan, ConsoleScanView& view) {
  if (options.enable || options.disable)
    return Switch(scan, options.enable ? ScanAction::kEnable : ScanAction::kDisable, options.names);
  for (const size_t row : RowsNamed(scan, options.names)) scan.SetChecked(row, true);
  return Delete(scan, view);
}

// Prints what a registry tool lists. With `remove` those that lead nowhere are deleted, of a tool
// that marks none all it lists.
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
  const bool changes = options.remove || options.enable || options.disable;
  if (options.remove && !failed) TickAllWithoutMark(*scan);
  const Listed listed(*scan);
  const int code = failed ? kFailed : changes ? Change(options, *scan, view) : int{kDone};
  ReportTable table = TableOf(listed, *scan);
  table.summary.emplace_back("preview", options.preview);
  if (changes && !options.preview) {
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

void CheckOptions(const RegistryOptions& options) {
  const ScanTraits& traits = TraitsOf(ToolOf(options.tool));
  const bool switches = options.enable || options.disable;
  const auto refuse = [](const char* option, const char* why) {
    throw CLI::ValidationError(option, why);
  };
  if (options.thorough && !traits.has_thorough) refuse("--thorough", "belongs to file-references.");
  const auto& can = traits.actions;
  if (switches && std::ranges::find(can, ScanAction::kEnable) == can.end())
    refuse("--enable, --disable", "belong to startup.");
  if (options.remove + options.enable + options.disable > 1)
    refuse("--delete, --enable, --disable", "exclude each other.");
  if (!options.names.empty() && traits.ticks)
    refuse("names", "belong to startup, uninstall and associations.");
  const bool acts = switches || (options.remove && !traits.ticks);
  if (acts && options.names.empty()) refuse("names", "of what is listed are required.");
  if (!acts && !options.names.empty()) refuse("names", "need --delete, --enable or --disable.");
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
                    "Delete those that lead nowhere, or those named, kept in a .reg backup (else "
                    "nothing is changed)");
  registry.add_flag("--enable", options->enable, "startup: switch those named on again");
  registry.add_flag("--disable", options->disable, "startup: switch those named off");
  registry.add_option("names", options->names,
                      "startup, uninstall, associations: which ones, by name or by key and name");
  registry.add_flag("--preview", options->preview,
                    "With --delete, --enable or --disable: change nothing");
  commands.AddReport(registry);
  registry.callback([options] { CheckOptions(*options); });
}

}  // namespace quellix
