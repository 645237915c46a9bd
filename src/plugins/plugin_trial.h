#pragma once

#include <string>
#include <vector>

#include "platform/preview/preview_machine.h"
#include "platform/words.h"
#include "plugins/plugin_file.h"
#include "run/run_state.h"
#include "settings/settings.h"

namespace quellix::modPlugin {

// What a recipe would remove now, found by processing it on a preview of the machine: nothing is
// changed. One object for one trial.
class PluginTrial {
 public:
  explicit PluginTrial(const Machine& machine);

  // Returns when all is found or the user has stopped it.
  void Run(const Plugin& plugin, RunView& view);

  size_t count() const { return rows_.size(); }
  // What goes, and where it is.
  std::string What(size_t row) const { return Tr(KindText(rows_[row]->kind)); }
  std::string Where(size_t row) const { return PlaceText(*rows_[row]); }
  // Files with their size, and other things; whether the user stopped.
  std::string Summary() const;
  // Sentences about what is not cleaned, a line each; "" for none.
  const std::string& notes() const { return state_.RunLog; }

 private:
  PreviewMachine preview_;
  Settings settings_;
  RunState state_;
  std::vector<const RunEntry*> rows_;
};

}  // namespace quellix::modPlugin
