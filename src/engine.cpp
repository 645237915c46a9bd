#include "engine.h"

#include <string>
#include <utility>
#include <vector>

#include "app/updates.h"
#include "backup/backups.h"
#include "backup/leftovers.h"
#include "platform/error.h"
#include "platform/words.h"
#include "run/run_steps.h"
#include "settings/own_files.h"

namespace quellix {

Engine::Engine(const Machine& machine, RunView& view, BackupArchive* archive)
    : machine_(machine),
      settings_(machine),
      auto_clean_([&system = machine.system] { return system.UtcNow(); }),
      low_disk_(machine),
      backup_(machine, state_),
      context_{machine, settings_, state_, view, archive != nullptr ? *archive : backup_} {
  backup_.OnPause(PauseOf(context_));
}

std::string Engine::Load(Tips* tips) {
  std::string problems;
  is_loaded_ = true;
  try {
    settings_.RequireReadable();
  } catch (const Error& error) {
    is_loaded_ = false;
    problems += Tr("The settings could not be read; their defaults apply. %1", Shown(error)) + "\n";
  }
  LoadRemovalOptions(context_);
  context_.view.ShowLastCleaned(settings_.LastCleanedText());
  if (tips && !tips->Load()) {
    problems +=
        Tr("A file needed is missing. Re-installing this application may fix this problem.") + "\n";
  }
  try {
    selection_.LoadCheckStates(machine_);
    selection_.browsers().Load(machine_);
    selection_.cleaners().Load(machine_);
    selection_.recipes().Load(machine_);
  } catch (const Error& error) {
    is_loaded_ = false;
    problems += Tr("The ticked items could not be read. %1", Shown(error)) + "\n";
  }
  ApplyGeneralSettings();
  return problems;
}

void Engine::ClearLeftovers() {
  std::vector<std::string> folders = FoundFolders(machine_);
  folders.push_back(state_.BackupFolder);
  const Backups backups(machine_);
  folders.insert(folders.end(), backups.folders().begin(), backups.folders().end());
  quellix::ClearLeftovers(machine_.files, folders);
  ClearInstallers(machine_);
  machine_.registry.ClearLeftovers();
}

void Engine::ApplyGeneralSettings() {
  if (!settings_.IsReadable()) return;
  preferences_ = settings_.Load();
  auto_clean_.Start(preferences_.IntervalMinutes());
  low_disk_.Start(preferences_.LowDiskPercent());
  selection_.ApplyProtection(preferences_);
}

// Whatever becomes of the run, no later one is bound by its choice.
void Engine::RunBy(std::shared_ptr<RunChoice> choice, const std::function<void()>& run) {
  state_.Choice = std::move(choice);
  try {
    run();
  } catch (...) {
    state_.Choice.reset();
    throw;
  }
}

void Engine::RunCleaning(std::shared_ptr<RunChoice> choice) {
  RunBy(std::move(choice), [this] { quellix::RunCleaning(context_, selection_); });
}

void Engine::RunOneItem(const Item& item) { quellix::RunOneItem(context_, item); }

void Engine::RunOthers(const OtherChoices& choices, std::shared_ptr<RunChoice> choice) {
  RunBy(std::move(choice), [&] { quellix::RunOthers(context_, choices); });
}

}  // namespace quellix
