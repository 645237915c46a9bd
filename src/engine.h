#pragma once

#include <string>
#include <string_view>

#include "app/cleaning_run.h"
#include "app/item_catalogue.h"
#include "app/selection.h"
#include "app/settings.h"
#include "backup/mod_zip.h"
#include "search/junk_search.h"

namespace quellix {

inline constexpr std::string_view kApplicationTitle = "Quellix";

// One of everything, wired once. The machine's ports and the view must outlive it.
class Engine {
 public:
  Engine(const Machine& machine, RunView& view);

  // Reads settings and check states. A file that cannot be read leaves its defaults; the sentences
  // that say so are returned, a line each, "" when all is well.
  std::string Load();
  // Stores the check states. Throws Error.
  void Save() const { selection_.SaveCheckStates(machine_); }

  const GeneralSettings& general() const { return general_; }
  Selection& selection() { return selection_; }
  RunState& state() { return state_; }
  Settings& settings() { return settings_; }
  CleaningContext& context() { return context_; }

  // StartRun: the Clean command. StopCleaning: takes effect at the run's next check.
  void RunCleaning();
  void RunOneItem(const Item& item);
  // Hands each find to `sink`; nothing is changed. Throws Error. A stop ends it early.
  void FindJunk(JunkKind kind, ResultSink& sink) { SearchJunk(context_, kind, sink); }
  // Removes a find; see there.
  Removal RemoveFound(const ResultRow& row) {
    return RemoveFind(context_, row.path + row.name, row.kind);
  }
  void StopCleaning() { state_.AbortRequested = true; }

 private:
  Machine machine_;
  Settings settings_;
  RunState state_;
  Selection selection_;
  GeneralSettings general_;
  ModZip backup_;
  CleaningContext context_;
};

}  // namespace quellix
