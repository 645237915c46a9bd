#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "cli/console_view.h"
#include "engine.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

const std::map<std::string, JunkKind> kKinds = {{"empty", JunkKind::kEmptyFiles},
                                                {"shortcuts", JunkKind::kDeadShortcuts},
                                                {"unnecessary", JunkKind::kUnnecessaryFiles}};

struct SearchOptions {
  std::string kind;  // one of kKinds
  bool remove = false;
  bool json = false;
};

struct Find {
  ResultRow row;
  bool removed = false;
};

// A line a find, its columns with tabs between; the finds are kept.
class Finds : public ResultSink {
 public:
  explicit Finds(bool print) : print_(print) {}

  void Add(ResultRow row) override {
    if (print_) {
      std::cout << row.path << row.name << '\t' << row.bytes << '\t' << row.date_time << '\t'
                << row.attributes << '\t' << row.file_type << '\t' << row.category << '\n';
    }
    all.push_back({std::move(row)});
  }

  std::vector<Find> all;

 private:
  bool print_;
};

// Removes the finds until the user stops; the totals and what stayed go to standard error, the
// finds being the output. The number of those that stay.
size_t RemoveAll(Engine& engine, std::vector<Find>& finds) {
  size_t stayed = 0;
  for (Find& find : finds) {
    if (StopsRun(engine.context())) break;
    const Removal removal = engine.RemoveFound(find.row);
    find.removed = removal.outcome != Removal::kStays;
    if (find.removed) continue;
    ++stayed;
    std::cerr << "not deleted: " << find.row.path << find.row.name << ": " << removal.reason
              << '\n';
  }
  CloseBackup(engine.context());
  const RunState& state = engine.state();
  std::cerr << ReplaceNoCase(state.RunLog, "\r", "") << "Files Deleted: " << state.RunFilesDeleted
            << " Space Gained: "
            << FormatSize(state.RunSpaceGained, 2, true,
                          engine.context().machine.system.UserLocale())
            << std::endl;
  return stayed;
}

void PrintJson(const std::vector<Find>& finds) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const auto& [row, removed] : finds) {
    list.push_back({{"name", row.name},
                    {"bytes", row.bytes},
                    {"dateTime", row.date_time},
                    {"attributes", row.attributes},
                    {"path", row.path},
                    {"fileType", row.file_type},
                    {"category", row.category},
                    {"deleted", removed}});
  }
  // Names that are no text keep the rest readable.
  std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

// Prints the finds as they come, or at the end as JSON. With `remove` they are then removed by the
// removal mode of the settings, unless the search was stopped.
int Search(const SearchOptions& options, const Machine& machine) {
  ConsoleView view;
  Engine engine(machine, view);
  LoadEngine(engine, options.remove);
  Finds finds(!options.json);
  engine.FindJunk(kKinds.at(options.kind), finds);
  size_t stayed = 0;
  if (options.remove && !engine.state().AbortRequested) {
    stayed = RemoveAll(engine, finds.all);
  }
  if (options.json) PrintJson(finds.all);
  std::cout << std::flush;
  if (engine.state().AbortRequested) {
    std::cerr << view.status() << std::endl;
    return kFailed;
  }
  if (!engine.is_loaded() || !engine.state().RunLog.empty()) return kFailed;
  return stayed == 0 ? kDone : kSomeFilesStayed;
}

}  // namespace

void AddSearchCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<SearchOptions>();
  CLI::App& search =
      commands.Add("search", "Search whole drives for junk files",
                   [options](const Machine& machine) { return Search(*options, machine); });
  search.add_option("kind", options->kind, "What to search for")->required()->check(OneOf(kKinds));
  search.add_flag("--delete", options->remove, "Delete what is found (else nothing is changed)");
  search.add_flag("--json", options->json, "Print the finds as JSON");
}

}  // namespace quellix
