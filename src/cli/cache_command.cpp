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

// A line an entry, its columns with tabs between.
int List(CacheList& list) {
  for (size_t row = 0; row < list.RowCount(); ++row) {
    for (size_t column = 0; column < kCacheColumns; ++column) {
      if (column > 0) std::cout << '\t';
      std::cout << list.Text(row, CacheColumn(column));
    }
    std::cout << '\n';
  }
  std::cout << std::flush;
  return kDone;
}

int Delete(CacheList& list) {
  ConsoleView view;
  const size_t before = list.RowCount();
  list.DeleteAllListed([&view](const Progress&) { return view.Breathe(); });
  std::cout << before - list.RowCount() << " entries deleted, " << list.RowCount() << " left"
            << std::endl;
  if (view.Breathe()) return kFailed;
  for (size_t row = 0; row < list.RowCount(); ++row) {
    std::cerr << "not deleted: " << list.Text(row, CacheColumn::kSource) << '\n';
  }
  return list.RowCount() == 0 ? kDone : kSomeFilesStayed;
}

// What could be read is listed where not all could; then nothing is deleted.
int LoadAnd(int (*action)(CacheList& list), const std::string& kind, const Machine& machine) {
  CacheList list(machine);
  list.LoadCacheEntries(kKinds.at(kind));
  if (list.problem().empty()) return action(list);
  if (action == List) List(list);
  return Fail(list.problem(), kFailed);
}

}  // namespace

void AddCacheCommands(ConsoleCommands& commands) {
  CLI::App& cache = commands.AddGroup("cache", "The browser cache that Windows keeps for its user");
  const auto kind = std::make_shared<std::string>("all");
  const auto add = [&](const char* name, const char* what, int (*action)(CacheList & list)) {
    commands
        .AddTo(cache, name, what,
               [=](const Machine& machine) { return LoadAnd(action, *kind, machine); })
        .add_option("--kind", *kind, "Which entries (all when not given)")
        ->check(OneOf(kKinds));
  };
  add("list", "List entries: source, file, size, hit rate and dates", List);
  add("delete", "Delete entries with their files", Delete);
}

}  // namespace quellix
