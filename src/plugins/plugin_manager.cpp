#include "plugins/plugin_manager.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/mod_plugin.h"
#include "plugins/plugin_file.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "settings/own_files.h"
#include "settings/settings.h"

namespace quellix::modPlugin {
namespace {

constexpr size_t kMostLines = 12;  // of a log that a message box shows

// Processing starts from the folder's name in small letters, and the log shows it so.
std::string ProcessedPath(const Machine& machine, const std::string& file) {
  return FoundPath(machine, "plugins\\" + file);
}

std::string Kilobytes(CleaningContext& context) {
  return FormatNumber(context.state.SpaceGained / 1024, 2, context.machine.system.UserLocale());
}

void EndProcessing(CleaningContext& context) {
  if (context.state.AbortRequested) {
    context.backup.DeleteBackupArchive();
  } else {
    CloseBackup(context);
  }
  ShowIdle(context, context.state.AbortRequested ? Tr("Aborted by user") : "");
}

auto FindRow(std::vector<InstalledPlugin>& rows, std::string_view file) {
  return std::ranges::find_if(
      rows, [file](const InstalledPlugin& plugin) { return EqualsNoCase(plugin.file, file); });
}

// What a run by plug-ins has to say beside its totals, with lines of its log.
std::string Problems(const RunState& state) {
  std::string text;
  if (state.FilesNotBackedUp > 0)
    text =
        "\r\n" + Tr("Deleted without a backup: %1 file(s)", std::to_string(state.FilesNotBackedUp));
  for (const std::string_view sentence : StayedSentences(state)) text += "\r\n" + Tr(sentence);
  text += StayedNames(state, kMostLines, Tongue::kShown);
  const std::vector<std::string> lines = Split(state.RunLog, '\n');
  for (size_t i = 0; i + 1 < lines.size(); ++i) {
    if (i == kMostLines) {
      const size_t left = lines.size() - 1 - i;
      return text + "\r\n" +
             TrN("and %1 more lines like these.", "and %1 more lines like these.", left,
                 std::to_string(left));
    }
    text += "\r\n" + lines[i].substr(0, lines[i].find('\r'));
  }
  return text;
}

}  // namespace

void PluginManager::Load() {
  rows_.clear();
  guides_.clear();
  is_read_ = false;
  try {
    rows_ = ReadPluginList(machine_);
    is_read_ = true;
  } catch (const Error& error) {
    prompts_.Inform(Tr("The list of plug-ins could not be read. %1", Shown(error)));
  }
  ShowCount();
}

void PluginManager::Save() {
  if (!is_read_ && rows_.empty()) return;
  try {
    if (!is_read_) AddUnread();
    WritePluginList(machine_, rows_);
  } catch (const Error& error) {
    prompts_.Inform(Tr("The list of plug-ins could not be saved. %1", Shown(error)));
  }
}

// What was added while the list could not be read goes behind what stands there.
void PluginManager::AddUnread() {
  std::vector<InstalledPlugin> rows = ReadPluginList(machine_);
  for (const InstalledPlugin& added : rows_) {
    if (FindRow(rows, added.file) == rows.end()) rows.push_back(added);
  }
  rows_ = std::move(rows);
  is_read_ = true;
}

// The editor's count line has "plug-in(s)"; people know both spellings.
void PluginManager::ShowCount() {
  status_ =
      TrN("%1 plugin(s) listed", "%1 plugin(s) listed", rows_.size(), std::to_string(rows_.size()));
}

std::string PluginManager::PathOf(size_t row) const {
  return PluginPath(machine_, rows_[row].file);
}

const PluginGuide& PluginManager::GuideOf(size_t row) {
  const auto [guide, is_new] = guides_.try_emplace(rows_[row].file);
  if (is_new) guide->second = ReadGuide(machine_, rows_[row].file);
  return guide->second;
}

void PluginManager::Toggle(size_t row) {
  rows_[row].ticked = !rows_[row].ticked;
  ShowCount();
  const PluginGuide& guide = GuideOf(row);
  if (!rows_[row].ticked || guide.cost.empty()) return;
  // TRANSLATORS: %1 is a clause, such as "saved passwords are lost".
  status_ = guide.loses_data ? Tr("This cannot be had again: %1", Tr(guide.cost))
                             : Tr("This has a cost: %1", Tr(guide.cost));
}

void PluginManager::TickAll(bool ticked) {
  const bool ticks_all = !ticked || Settings(machine_).Load().select_risky;
  for (size_t row = 0; row < rows_.size(); ++row) {
    if (ticks_all || !GuideOf(row).loses_data) rows_[row].ticked = ticked;
  }
}

void PluginManager::Add() {
  const std::string folder = machine_.program_folder + "\\Plugins\\";
  const std::string title = Tr("Quellix plugins ( *.cdp )");
  const FileFilter filter = {title, "*.cdp"};
  const auto path = prompts_.AskFile(std::span(&filter, 1), folder);
  if (!path) return;
  const bool came_with_it =
      EqualsNoCase(FolderPart(*path), machine_.installed_folder + "\\Plugins\\");
  if (!came_with_it && !EqualsNoCase(FolderPart(*path), folder)) {
    return prompts_.Inform(Tr("The plugin should be in Plugin Folder") + "\r\n" + folder);
  }
  try {
    rows_.push_back({false, std::string(NamePart(*path)), ReadDescription(machine_, *path)});
    ShowCount();
  } catch (const Error&) {
    prompts_.Inform(Tr("There was an error in loading the Plugin."));
  }
}

// The question that has always been asked, and what it is about.
std::string PluginManager::QuestionFor(std::span<const size_t> rows) const {
  std::string text = Tr("Are you sure you want to delete selected Plugin(s)?") + "\r\n";
  for (size_t i = 0; i < std::min(rows.size(), kMostLines); ++i) {
    text.append("\r\n").append(ShownName(rows_[rows[i]].file));
  }
  if (rows.size() <= kMostLines) return text;
  return text + "\r\n" + Tr("and %1 more", std::to_string(rows.size() - kMostLines));
}

bool PluginManager::Delete(std::span<const size_t> rows) {
  if (rows.empty() || !prompts_.AskYesNo(QuestionFor(rows))) return false;
  std::string problems;
  std::vector<size_t> gone;
  for (const size_t row : rows) {
    const std::string path = ProcessedPath(machine_, rows_[row].file);
    try {
      if (machine_.files.Look(path, Detail::kKind)) machine_.files.RemoveFile(path);
      gone.push_back(row);
    } catch (const Error& error) {
      problems.append(problems.empty() ? "" : "\r\n").append(Shown(error));
    }
  }
  std::ranges::sort(gone, std::greater());
  for (const size_t row : gone) rows_.erase(rows_.begin() + static_cast<long>(row));
  ShowCount();
  if (!problems.empty()) prompts_.Inform(problems);
  return true;
}

void PluginManager::AddSaved(std::string_view file, std::string_view description) {
  guides_.erase(std::string(file));
  const auto row = FindRow(rows_, file);
  if (row == rows_.end()) {
    rows_.push_back({true, std::string(file), std::string(description)});
  } else {
    row->description = description;
  }
  status_ = TrN("%1 plug-in(s) listed", "%1 plug-in(s) listed", rows_.size(),
                std::to_string(rows_.size()));
}

void PluginManager::Process(CleaningContext& context, std::span<const size_t> rows,
                            const std::function<void()>& show) {
  if (rows.empty()) return;
  const RunState& state = context.state;
  if (!BeginRun(context, static_cast<int>(rows.size()))) {
    status_ = Tr("Nothing was removed");
    return show();
  }
  for (const size_t row : rows) {
    status_ = Tr("Processing plugin %1", ShownName(rows_[row].file));
    show();
    if (!RunPlugin(context, ProcessedPath(machine_, rows_[row].file))) {
      LogLine(context.state, Log("%1: there is no such plug-in.", rows_[row].file));
    }
    if (state.AbortRequested) break;
  }
  EndProcessing(context);
  const std::string files = std::to_string(state.FilesDeleted);
  const std::string gained = state.SpaceGained > 0 ? Kilobytes(context) + " KB" : Tr("none");
  // TRANSLATORS: %2 is "12.00 KB" or "none".
  status_ = state.AbortRequested
                ? Tr("Aborted by user. Total Files Deleted: %1 Space Gained: %2", files, gained)
                : Tr("Processed selected plugin(s) Total Files Deleted: %1 Space Gained: %2", files,
                     gained);
  show();
  const std::string problems = Problems(state);
  if (!problems.empty() && !state.IsPreview) prompts_.Inform(status_ + problems);
}

std::string ProcessTickedPlugins(CleaningContext& context) {
  const std::vector<InstalledPlugin> plugins = ReadPluginList(context.machine);
  const RunState& state = context.state;
  if (!BeginRun(context, 1)) return {};
  context.view.SetStatus(Tr("Working...Processing Plugins."));
  for (const InstalledPlugin& plugin : plugins) {
    if (plugin.ticked) RunPlugin(context, ProcessedPath(context.machine, plugin.file));
    if (state.AbortRequested) break;
  }
  EndProcessing(context);
  if (state.AbortRequested) return {};
  return Tr("Files Deleted: %1", std::to_string(state.FilesDeleted)) + "\r\n" +
         Tr("Space Gained: %1  KB", Kilobytes(context)) + "\r\n" +
         Tr("Backed Up: %1 file(s)", std::to_string(state.FilesBackedUp)) + Problems(state);
}

}  // namespace quellix::modPlugin
