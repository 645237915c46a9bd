#include "plugins/mod_plugin.h"

#include <unordered_set>
#include <utility>

#include "app/backup_step.h"
#include "app/removal.h"
#include "app/run_steps.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "plugins/plugin_collector.h"
#include "plugins/plugin_list.h"
#include "plugins/plugin_places.h"
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

void ProcessKey(CleaningContext& context, const RegistryEntry& entry) {
  const KeyPlace place = FindKey(entry);
  if (!place.root) return Log(context, place.refusal);
  try {
    if (entry.delete_subkey) {
      KeepRegistryTree(context, *place.root, place.subkey);
      DeleteRegistryKeyTree(context.machine.registry, *place.root, place.subkey);
    } else {
      KeepRegistryValues(context, *place.root, place.subkey, entry.value_name);
      DeleteRegistryValue(context.machine.registry, *place.root, place.subkey, entry.value_name);
    }
  } catch (const Error& error) {
    Log(context, entry.key + ": " + error.what());
  }
}

void DeleteTreeBelow(RegistryKey& key) {
  while (const std::optional<std::string> name = key.SubKeyAt(0)) {
    if (key.IsLink(*name)) throw Error(Error::Kind::kDenied, *name + " leads to another key.");
    if (const auto child = key.Open(*name, RegistryAccess::kWrite)) DeleteTreeBelow(*child);
    if (!key.DeleteSubKey(*name)) return;
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
    RemovePendingFiles(context);
    if (state.AbortRequested) return;
  }
  done = 0;
  for (const CollectedFolder& part : collected) {
    ClearPending(state);
    AppendPart(state.PendingFolders, folders, std::exchange(done, part.folders_end),
               part.folders_end);
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
  // Only a value that is there needs a key that may be written.
  const auto readable = registry.Open(root, subkey, RegistryAccess::kRead);
  if (readable == nullptr || !readable->QueryValue(value_name)) return;
  const auto key = registry.Open(root, subkey, RegistryAccess::kWrite);
  if (key == nullptr) return;
  key->DeleteValue(value_name);
  key->Flush();
}

void DeleteRegistryKeyTree(Registry& registry, RegistryRoot root, std::string_view subkey) {
  const auto key = registry.Open(root, subkey, RegistryAccess::kWrite);
  if (key == nullptr) return;
  const auto parent =
      registry.Open(root, WithoutBackslash(FolderPart(subkey)), RegistryAccess::kWrite);
  if (parent == nullptr) return;
  if (parent->IsLink(NamePart(subkey))) {
    throw Error(Error::Kind::kDenied, "It leads to another key.");
  }
  DeleteTreeBelow(*key);
  parent->DeleteSubKey(NamePart(subkey));
  parent->Flush();
}

}  // namespace modPlugin

void CleanPlugins(CleaningContext& context, const Item& item) {
  if (!modPlugin::HasPluginList(context.machine)) return;
  BeginItem(context, item);
  ResetItemCounters(context.state);
  for (const auto& plugin : modPlugin::ReadPluginList(context.machine)) {
    if (!plugin.ticked) continue;
    // Looked for in "\Plugins\" and processed from "\plugins\": both name the same folder, and the
    // log shows it as it always was.
    modPlugin::RunPlugin(context, context.machine.program_folder + "\\plugins\\" + plugin.file);
    if (context.state.AbortRequested) return EndRun(context, "Aborted by user");
  }
  EndRun(context, "");
  AppendFilesLine(context, item);
}

}  // namespace quellix
