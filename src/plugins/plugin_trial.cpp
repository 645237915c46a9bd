#include "plugins/plugin_trial.h"

#include "backup/preview_archive.h"
#include "plugins/mod_plugin.h"
#include "run/removal.h"
#include "run/run_steps.h"

namespace quellix::modPlugin {

PluginTrial::PluginTrial(const Machine& machine)
    : preview_(machine), settings_(preview_.machine()) {}

void PluginTrial::Run(const Plugin& plugin, RunView& view) {
  PreviewArchive archive(preview_.machine().files);
  CleaningContext context{preview_.machine(), settings_, state_, view, archive};
  LoadRemovalOptions(context);
  RunRecords(context, plugin);
  for (const RunEntry& entry : state_.Entries->all) {
    if (entry.fate == Fate::kRemoved) rows_.push_back(&entry);
  }
}

std::string PluginTrial::Summary() const {
  const auto files = static_cast<size_t>(state_.FilesDeleted);
  const Locale locale = preview_.machine().system.UserLocale();
  std::string text = state_.AbortRequested ? "Stopped; found so far: " : "Would remove ";
  text += std::to_string(files) + (files == 1 ? " file (" : " files (") +
          FormatSize(state_.SpaceGained, 2, true, locale) + ") and " +
          std::to_string(rows_.size() - files) +
          (rows_.size() - files == 1 ? " other thing." : " other things.");
  return text + " Nothing was removed.";
}

}  // namespace quellix::modPlugin
