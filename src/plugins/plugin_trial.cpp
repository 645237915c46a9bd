#include "plugins/plugin_trial.h"

#include "backup/preview_archive.h"
#include "platform/words.h"
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
  const size_t others = rows_.size() - files;
  const std::string size = FormatSize(state_.SpaceGained, 2, true, locale);
  const std::string file_part =
      TrN("%1 file (%2)", "%1 files (%2)", files, std::to_string(files), size);
  const std::string other_part =
      TrN("%1 other thing", "%1 other things", others, std::to_string(others));
  if (state_.AbortRequested)
    // TRANSLATORS: %1 is "2 files (10 KB)", %2 "3 other things".
    return Tr("Stopped; found so far: %1 and %2. Nothing was removed.", file_part, other_part);
  // TRANSLATORS: %1 is "2 files (10 KB)", %2 "3 other things".
  return Tr("Would remove %1 and %2. Nothing was removed.", file_part, other_part);
}

}  // namespace quellix::modPlugin
