#include "plugins/mod_plugin.h"

#include <unordered_set>
#include <utility>

#include "app/removal.h"
#include "app/run_steps.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "plugins/plugin_collector.h"
#include "plugins/plugin_list.h"
#include "plugins/plugin_places.h"
#include "registry_tools/registry_eraser.h"
#include "search/drive_scan.h"

namespace quellix {
namespace modPlugin {
namespace {

void Log(CleaningContext& context, std::string_view sentence) {
  context.state.RunLog.append(sentence).append("\r\n");
}

void ProcessIni(CleaningContext& context, const IniEntry& entry) {
  const IniPlace place = FindIni(context.machine.system, entry);
  if (!place.refusal.empty()) return Log(context, place.refusal);
  ProfileStrings& profile = context.machine.profile;
  try {
    if (entry.delete_section) {
      profile.DeleteSection(place.path, entry.section);
    } else {
      profile.DeleteKey(place.path, entry.section, entry.key);
    }
  } catch (const Error& error) {
    Log(context, place.path + ": " + error.what());
  }
}

void CollectFolders(CleaningContext& context, const FileEntry& entry,
                    std::vector<CollectedFolder>& collected) {
  const FilesPlace place = FindFolders(context.machine, entry, [&context] {
    context.view.Yield();
    return context.state.AbortRequested;
  });
  for (const std::string& refusal : place.refusals) Log(context, refusal);
  for (const std::string& folder : place.folders) {
    CollectPluginFiles(context, folder, entry.delete_subfolders, entry.recurse, place.mask);
    if (context.state.AbortRequested) return;
    collected.push_back(
        {folder, context.state.PendingFiles.size(), context.state.PendingFolders.size()});
  }
}

RegistryTarget TargetOf(const RegistryEntry& entry, const KeyPlace& place) {
  using Kind = RegistryTarget::Kind;
  return {entry.delete_subkey ? Kind::kTree : Kind::kValue, *place.root, place.subkey,
          entry.delete_subkey ? "" : entry.value_name};
}

void ProcessKey(CleaningContext& context, const RegistryEntry& entry) {
  const KeyPlace place = FindKey(context.machine.registry, entry);
  if (!place.root) return Log(context, place.refusal);
  RegistryEraser eraser = RegistryEraser::OfRun(context);
  eraser.Guard();
  try {
    eraser.Erase(TargetOf(entry, place));
  } catch (const Error& error) {
    context.state.SomeErrors = true;
    Log(context, entry.key + ": " + error.what());
  }
}

// Appends what `from` has between two places.
void AppendPart(PathList& to, const PathList& from, size_t begin, size_t end) {
  for (size_t i = begin; i < end; ++i) to.Append(from[i]);
}

// The same without what was seen before, in any case.
void AppendNew(PathList& to, const PathList& from, size_t begin, size_t end,
               std::unordered_set<std::string>& seen) {
  for (size_t i = begin; i < end; ++i) {
    if (seen.insert(UpCase(from[i])).second) to.Append(from[i]);
  }
}

}  // namespace

std::vector<CollectedFolder> ProcessRecords(CleaningContext& context, const Plugin& plugin) {
  std::vector<CollectedFolder> collected;
  context.machine.files.Anchor("");
  for (const IniEntry& entry : plugin.ini) ProcessIni(context, entry);
  for (const FileEntry& entry : plugin.files) {
    CollectFolders(context, entry, collected);
    if (context.state.AbortRequested) return collected;
  }
  for (const RegistryEntry& entry : plugin.registry) ProcessKey(context, entry);
  return collected;
}

bool ProcessPlugin(CleaningContext& context, std::string_view path,
                   std::vector<CollectedFolder>& collected) {
  const std::optional<Plugin> plugin = LoadPluginFile(context.machine, path);
  if (!plugin) return false;
  collected = ProcessRecords(context, *plugin);
  return true;
}

void RemoveCollected(CleaningContext& context, const std::vector<CollectedFolder>& collected) {
  RunState& state = context.state;
  const PathList files = std::move(state.PendingFiles);
  const PathList folders = std::move(state.PendingFolders);
  std::unordered_set<std::string> seen;
  size_t done = 0;
  for (const CollectedFolder& part : collected) {
    ClearPending(state);
    AppendNew(state.PendingFiles, files, std::exchange(done, part.files_end), part.files_end, seen);
    context.machine.files.Anchor(part.folder);
    RemovePendingFiles(context);
    if (state.AbortRequested) return;
  }
  done = 0;
  for (const CollectedFolder& part : collected) {
    ClearPending(state);
    AppendPart(state.PendingFolders, folders, std::exchange(done, part.folders_end),
               part.folders_end);
    context.machine.files.Anchor(part.folder);
    RemovePendingFolders(context);
    if (state.AbortRequested) return;
  }
}

void RunRecords(CleaningContext& context, const Plugin& plugin) {
  ClearPending(context.state);
  RemoveCollected(context, ProcessRecords(context, plugin));
}

bool RunPlugin(CleaningContext& context, std::string_view path) {
  ClearPending(context.state);
  std::vector<CollectedFolder> collected;
  try {
    if (!ProcessPlugin(context, path, collected)) return false;
  } catch (const Error& error) {
    Log(context, std::string(path).append(": ").append(error.what()));
    return true;
  }
  RemoveCollected(context, collected);
  return true;
}

void DeleteRegistryValue(Registry& registry, RegistryRoot root, std::string_view subkey,
                         std::string_view value_name) {
  RegistryEraser(registry, RegistryEraser::OnError::kTold)
      .Erase({RegistryTarget::Kind::kValue, root, std::string(subkey), std::string(value_name)});
}

void DeleteRegistryKeyTree(Registry& registry, RegistryRoot root, std::string_view subkey) {
  RegistryEraser(registry, RegistryEraser::OnError::kTold)
      .Erase({RegistryTarget::Kind::kTree, root, std::string(subkey)});
}

}  // namespace modPlugin

void CleanPlugins(CleaningContext& context, const Item& item) {
  context.state.WhyNothing = "No plug-in is ticked.";
  if (!modPlugin::HasPluginList(context.machine)) return;
  BeginItem(context, item);
  ResetItemCounters(context.state);
  for (const auto& plugin : modPlugin::ReadPluginList(context.machine)) {
    if (!plugin.ticked) continue;
    NotePlace(context.state);
    // Looked for in "\Plugins\" and processed from "\plugins\": both name the same folder, and the
    // log shows it as it always was.
    modPlugin::RunPlugin(context, context.machine.program_folder + "\\plugins\\" + plugin.file);
    if (context.state.AbortRequested) return EndRun(context, "Aborted by user");
  }
  EndRun(context, "");
  AppendFilesLine(context, item);
}

}  // namespace quellix
