#include <algorithm>
#include <iostream>
#include <map>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "engine.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/stayed.h"

namespace quellix {
namespace {

const std::map<std::string, JunkKind> kKinds = {{"empty", JunkKind::kEmptyFiles},
                                                {"empty-folders", JunkKind::kEmptyFolders},
                                                {"shortcuts", JunkKind::kDeadShortcuts},
                                                {"unnecessary", JunkKind::kUnnecessaryFiles}};

struct SearchOptions {
  std::string kind;  // one of kKinds
  bool remove = false;
  bool preview = false;
};

struct Find {
  ResultRow row;
  bool removed = false;
  std::string reason = {};  // why it stayed
};

// A line a find, its columns with tabs between; the finds are kept.
class Finds : public ResultSink {
 public:
  explicit Finds(std::ostream& out) : out_(out) {}

  void Add(ResultRow row) override {
    out_ << row.path << row.name << '\t' << row.bytes << '\t' << row.date_time << '\t'
         << row.attributes << '\t' << row.file_type << '\t' << row.category << '\n';
    all.push_back({std::move(row)});
  }

  std::vector<Find> all;

 private:
  std::ostream& out_;
};

// Removes the finds until the user stops; the totals and what stayed go to standard error, the
// finds being the output. The number of those that stay.
size_t RemoveAll(Engine& engine, std::vector<Find>& finds) {
  size_t stayed = 0;
  for (Find& find : finds) {
    if (StopsRun(engine.context())) break;
    const Removal removal = engine.RemoveFound(find.row);
    find.removed = removal.outcome == Removal::kRemoved;
    if (removal.outcome != Removal::kStays) continue;
    ++stayed;
    find.reason = removal.reason.english;
    std::cerr << "not deleted: " << find.row.path << find.row.name << ": " << find.reason << '\n';
  }
  CloseBackup(engine.context());
  const RunState& state = engine.state();
  const auto folders = std::ranges::count_if(finds, [](const Find& find) {
    return find.removed && find.row.kind == JunkKind::kEmptyFolders;
  });
  if (folders > 0) std::cerr << "Folders Deleted: " << folders << '\n';
  std::cerr << ReplaceNoCase(state.RunLog, "\r", "") << "Files Deleted: " << state.RunFilesDeleted
            << " Space Gained: "
            << FormatSize(state.RunSpaceGained, 2, true,
                          engine.context().machine.system.UserLocale())
            << ReplaceNoCase(WipedLine(state), "\r", "") << std::endl;
  return stayed;
}

ReportTable TableOf(const std::vector<Find>& finds, bool preview) {
  return {.command = "search",
          .columns = {"place", "bytes", "modified", "attributes", "fileType", "category", "removed",
                      "note"},
          .count = finds.size(),
          .row = [&finds](size_t i) -> std::vector<ReportCell> {
            const ResultRow& row = finds[i].row;
            return {row.path + row.name,
                    row.bytes,
                    TimeCell(row.last_write),
                    row.attributes,
                    row.file_type,
                    std::string(row.category),
                    finds[i].removed,
                    TextCell(finds[i].reason)};
          },
          .summary = {{"preview", preview}}};
}

// Prints the finds as they come. With `remove` they are then removed by the removal mode of the
// settings, unless the search was stopped.
int Search(const SearchOptions& options, const ReportOptions& report_options,
           const Machine& machine) {
  Report report(report_options);
  ConsoleRun run(machine, RunKindOf(options.remove, options.preview), report.text());
  Engine& engine = run.engine();
  Finds finds(report.text());
  engine.FindJunk(kKinds.at(options.kind), finds);
  size_t stayed = 0;
  if (options.remove && !engine.state().AbortRequested) stayed = RemoveAll(engine, finds.all);
  const auto finish = [&](ExitCode code) {
    return report.Finish(TableOf(finds.all, options.preview), code);
  };
  if (engine.state().AbortRequested) {
    std::cerr << run.view().status() << std::endl;
    return finish(kFailed);
  }
  if (!engine.is_loaded() || !engine.state().RunLog.empty()) return finish(kFailed);
  return finish(stayed == 0 ? kDone : kSomeFilesStayed);
}

}  // namespace

void AddSearchCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<SearchOptions>();
  CLI::App& search = commands.Add("search", "Search whole drives for junk files",
                                  [options, &commands](const Machine& machine) {
                                    return Search(*options, commands.report_options(), machine);
                                  });
  commands.Changes(search);
  search.add_option("kind", options->kind, "What to search for")->required()->check(OneOf(kKinds));
  search.add_flag("--delete", options->remove, "Delete what is found (else nothing is changed)");
  search.add_flag("--preview", options->preview, "With --delete: change nothing");
  commands.AddReport(search);
}

}  // namespace quellix
