#include "engine.h"

#include "platform/error.h"

namespace quellix {

Engine::Engine(const Machine& machine, RunView& view)
    : machine_(machine),
      settings_(machine),
      backup_(machine, state_.Backup),
      context_{machine, settings_, state_, view, backup_} {
  backup_.OnPause([this] {
    context_.view.Yield();
    return state_.AbortRequested;
  });
}

std::string Engine::Load() {
  std::string problems;
  try {
    settings_.RequireReadable();
  } catch (const Error& error) {
    problems +=
        std::string("The settings could not be read; their defaults apply. ") + error.what() + "\n";
  }
  settings_.LoadDeletionSettings(state_);
  if (const std::optional<std::string> last = settings_.LastCleaned()) {
    context_.view.ShowLastCleaned(*last);
  }
  try {
    selection_.LoadCheckStates(machine_);
  } catch (const Error& error) {
    problems += std::string("The ticked items could not be read. ") + error.what() + "\n";
  }
  general_ = settings_.LoadGeneralSettings();
  selection_.ApplyProtection(general_);
  return problems;
}

void Engine::RunCleaning() { quellix::RunCleaning(context_, selection_); }

void Engine::RunOneItem(const Item& item) { quellix::RunOneItem(context_, item); }

}  // namespace quellix
