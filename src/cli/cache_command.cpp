#include <iostream>
#include <map>

#include "browser_tools/cache_list.h"
#include "cli/commands.h"
#include "cli/console_view.h"

namespace quellix {
namespace {

const std::map<std::string, CacheKind> kKinds = {{"all", CacheKind::kAll},
                                                 {"cookies", CacheKind::kCookies},
                                                 {"history", CacheKind::kHistory},
                                                 {"urls", CacheKind::kUrls}};

struct CacheOptions {
  std::string kind = "all";
  bool preview = false;
};

ReportTable TableOf(std::string_view command, const CacheList& list) {
  return {.command = command,
          .columns = {"source", "file", "bytes", "hitRate", "lastAccess", "modified", "expires"},
          .count = list.RowCount(),
          .row = [&list](size_t i) -> std::vector<ReportCell> {
            const UrlCacheEntry& entry = list.Row(i).entry;
            return {entry.source,
                    TextCell(entry.local_file),
                    entry.size,
                    uint64_t{entry.hit_rate},
                    TimeCell(entry.last_access),
                    TimeCell(entry.last_modified),
                    TimeCell(entry.expires)};
          },
          .summary = {}};
}

// A line an entry, its columns with tabs between.
int List(CacheList& list, Report& report) {
  const int code = list.problem().empty() ? kDone : kFailed;
  std::ostream& out = report.text();
  for (size_t row = 0; row < list.RowCount(); ++row) {
    for (size_t column = 0; column < kCacheColumns; ++column) {
      if (column > 0) out << '\t';
      out << list.Text(row, CacheColumn(column));
    }
    out << '\n';
  }
  return report.Finish(TableOf("cache list", list), code);
}

// Reports what stays.
int Delete(CacheList& list, Report& report) {
  ConsoleView view(report.text());
  const size_t before = list.RowCount();
  list.DeleteAllListed([&view](const Progress&) { return view.Breathe(); });
  const size_t left = list.RowCount();
  report.text() << before - left << " entries deleted, " << left << " left" << std::endl;
  ReportTable table = TableOf("cache delete", list);
  table.summary = {{"removed", uint64_t{before - left}}, {"stayed", uint64_t{left}}};
  if (view.Breathe()) return report.Finish(table, kFailed);
  for (size_t row = 0; row < left; ++row) {
    std::cerr << "not deleted: " << list.Text(row, CacheColumn::kSource) << '\n';
  }
  return report.Finish(table, left == 0 ? kDone : kSomeFilesStayed);
}

// What could be read is listed where not all could; then nothing is deleted.
int LoadAnd(int (*action)(CacheList& list, Report& report), const CacheOptions& options,
            const ReportOptions& report_options, const Machine& machine) {
  Report report(report_options);
  if (options.preview) action = List;
  CacheList list(machine);
  list.LoadCacheEntries(kKinds.at(options.kind));
  if (list.problem().empty()) return action(list, report);
  if (action == List) List(list, report);
  return Fail(list.problem(), kFailed);
}

}  // namespace

void AddCacheCommands(ConsoleCommands& commands) {
  CLI::App& cache = commands.AddGroup("cache", "The browser cache that Windows keeps for its user");
  const auto options = std::make_shared<CacheOptions>();
  const auto add = [&](const char* name, const char* what, auto action) -> CLI::App& {
    CLI::App& command = commands.AddTo(cache, name, what, [=, &commands](const Machine& machine) {
      return LoadAnd(action, *options, commands.report_options(), machine);
    });
    command.add_option("--kind", options->kind, "Which entries (all when not given)")
        ->check(OneOf(kKinds));
    commands.AddReport(command);
    return command;
  };
  add("list", "List entries: source, file, size, hit rate and dates", List);
  CLI::App& remove = add("delete", "Delete entries with their files", Delete);
  commands.Changes(remove);
  remove.add_flag("--preview", options->preview, "List what would go; change nothing");
}

}  // namespace quellix
