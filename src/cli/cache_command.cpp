#include "cli/cache_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>

#include "browser_tools/cache_list.h"
#include "cli/console_plugins.h"
#include "cli/console_view.h"

namespace quellix {
namespace {

const std::map<std::string, CacheKind> kKinds = {{"all", CacheKind::kAll},
                                                 {"cookies", CacheKind::kCookies},
                                                 {"history", CacheKind::kHistory},
                                                 {"urls", CacheKind::kUrls}};

// A line an entry, its columns with tabs between.
int List(const CacheList& list) {
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
  bool stopped = false;
  view.OnStop([&] { stopped = true; });
  const size_t before = list.RowCount();
  list.DeleteAllListed([&] {
    view.Yield();
    return !stopped;
  });
  std::cout << before - list.RowCount() << " entries deleted, " << list.RowCount() << " left"
            << std::endl;
  if (stopped) return kFailed;
  for (size_t row = 0; row < list.RowCount(); ++row) {
    std::cerr << "not deleted: " << list.Text(row, CacheColumn::kSource) << '\n';
  }
  return list.RowCount() == 0 ? kDone : kSomeFilesStayed;
}

}  // namespace

CacheCommand::CacheCommand(CLI::App& app, const ConsolePlatform& platform) : platform_(platform) {
  cache_ = app.add_subcommand("cache", "The browser cache that Windows keeps for its user");
  cache_->require_subcommand(1);
  list_ = AddCommand("list", "List entries: source, file, size, hit rate and dates");
  delete_ = AddCommand("delete", "Delete entries with their files");
}

CLI::App* CacheCommand::AddCommand(const char* name, const char* what) {
  CLI::App* const command = cache_->add_subcommand(name, what);
  std::vector<std::string> kinds;
  for (const auto& [kind, value] : kKinds) kinds.push_back(kind);
  command->add_option("--kind", kind_, "Which entries (all when not given)")
      ->check(CLI::IsMember(kinds));
  AddMachineOptions(*command, machine_, platform_);
  return command;
}

bool CacheCommand::IsParsed() const { return cache_->parsed(); }

int CacheCommand::Run() {
  const std::unique_ptr<OpenMachine> opened = platform_.open(machine_);
  CacheList list(opened->machine());
  list.LoadCacheEntries(kKinds.at(kind_));
  if (!list.problem().empty()) {
    if (list_->parsed()) List(list);
    return Fail(list.problem(), kFailed);
  }
  return list_->parsed() ? List(list) : Delete(list);
}

}  // namespace quellix
