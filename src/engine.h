#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "app/cleaning_run.h"
#include "app/item_catalogue.h"
#include "app/low_disk.h"
#include "app/selection.h"
#include "app/startup.h"
#include "app/tips.h"
#include "backup/mod_zip.h"
#include "search/junk_search.h"
#include "settings/settings.h"

namespace quellix {

inline constexpr std::string_view kApplicationTitle = "Quellix";

// One of everything, wired once. The machine's ports, the view and the archive must outlive it.
class Engine {
 public:
  // With `archive`, files are backed up there and not in zip archives.
  Engine(const Machine& machine, RunView& view, BackupArchive* archive = nullptr);

  // Reads settings and check states. A file that cannot be read leaves its defaults; the sentences
  // that say so are returned, a line each, "" when all is well. `tips` are read as well where there
  // is a window to show them.
  std::string Load(Tips* tips = nullptr);
  // Clears away what killed runs left in the program's folder, the backup folder and where a killed
  // restore was at work. Never throws.
  void ClearLeftovers();
  // Whether Load could read settings and check states. Otherwise nothing should be removed unasked.
  bool is_loaded() const { return is_loaded_; }
  // Reads the general settings and puts them to use: protections, and automatic cleaning, which
  // begins a new interval. While they cannot be read, everything goes on as it was.
  void ApplyGeneralSettings();
  // Stores the check states. Throws Error.
  void Save() {
    selection_.SaveCheckStates(machine_);
    selection_.browsers().Save(machine_);
    selection_.cleaners().Save(machine_);
    selection_.recipes().Save(machine_);
  }

  const Preferences& preferences() const { return preferences_; }
  Selection& selection() { return selection_; }
  AutoClean& auto_clean() { return auto_clean_; }
  LowDiskClean& low_disk() { return low_disk_; }
  RunState& state() { return state_; }
  Settings& settings() { return settings_; }
  CleaningContext& context() { return context_; }

  // StartRun: the Clean command; of what a preview found, what was chosen there alone.
  // StopCleaning: takes effect at the run's next check.
  void RunCleaning(std::shared_ptr<RunChoice> choice = nullptr);
  void RunOneItem(const Item& item);
  // Of what stands beside the items the chosen alone.
  void RunOthers(const OtherChoices& choices, std::shared_ptr<RunChoice> choice = nullptr);
  // Hands each find to `sink`; nothing is changed. Throws Error. A stop ends it early.
  void FindJunk(JunkKind kind, ResultSink& sink) { SearchJunk(context_, kind, sink); }
  // Removes a find; see there.
  Removal RemoveFound(const ResultRow& row) {
    return RemoveFind(context_, row.path + row.name, row.kind);
  }
  void StopCleaning() { state_.AbortRequested = true; }

 private:
  void RunBy(std::shared_ptr<RunChoice> choice, const std::function<void()>& run);

  Machine machine_;
  Settings settings_;
  RunState state_;
  Selection selection_;
  Preferences preferences_;
  AutoClean auto_clean_;
  LowDiskClean low_disk_;
  ModZip backup_;
  CleaningContext context_;
  bool is_loaded_ = false;
};

}  // namespace quellix
