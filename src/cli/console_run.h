#pragma once

#include <optional>

#include "backup/preview_archive.h"
#include "cli/console_view.h"
#include "engine.h"
#include "platform/preview/preview_machine.h"
#include "run/exit_code.h"

namespace quellix {

// Without what a terminal would obey, which names in a hive may hold.
std::string Printable(std::string text);

enum class RunKind {
  kReal,
  kPreview,
  kListing,  // removes nothing
};

// Of a command that lists, and removes what it lists where that is asked for.
inline RunKind RunKindOf(bool removes, bool previews) {
  if (!removes) return RunKind::kListing;
  return previews ? RunKind::kPreview : RunKind::kReal;
}

// Prints on standard error what could not be read; such a run ends with kFailed. Throws Error when
// something is to be removed and the settings cannot be read: they may ask for a backup of it.
void LoadEngine(Engine& engine, bool removes);

// One engine of a console. As a preview nothing is changed: what would go is recorded and printed.
class ConsoleRun {
 public:
  // Loads the engine as above. What a person reads goes to `out`.
  ConsoleRun(const Machine& machine, RunKind kind, std::ostream& out);

  Engine& engine() { return *engine_; }
  ConsoleView& view() { return *view_; }
  // What a preview found, a line each, with the log of the run. Where a person reads it, recipes of
  // lists count as seen from now on.
  void PrintPreview();
  // How the run ends.
  ExitCode Outcome();

 private:
  Machine machine_;
  std::ostream& out_;
  std::unique_ptr<ConsoleView> view_;
  std::optional<PreviewMachine> preview_;
  std::optional<PreviewArchive> archive_;
  std::optional<Engine> engine_;
};

}  // namespace quellix
