#include "plugins/mod_plugin.h"

#include <unordered_set>
#include <utility>

#include "app/backup_step.h"
#include "app/removal.h"
#include "app/run_steps.h"
#include "app/working_folder.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "plugins/plugin_collector.h"
#include "plugins/plugin_list.h"
#include "plugins/plugin_places.h"

namespace quellix {
namespace modPlugin {
namespace {

void Log(CleaningContext& context, std::string_view sentence) {
  context.state.RunLog.append(sentence).append("\r\n");
}

void ProcessIni(CleaningContext& context, const IniEntry& entry) {
  const IniPlace place = FindIni(context.machine, PlacesOf(context), entry);
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

// What one folder adds; nothing when it is missing or refused by now.
void CollectFolder(CleaningContext& context, const std::string& path, const FileEntry& entry,
                   std::string_view mask, std::vector<FileList>& collected) {
  ProtectedPlaces& places = PlacesOf(context);
  try {
    std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(path);
    if (!folder) return;
    NotePlace(context.state);
    const std::string why = places.WhyNot(*folder, mask, entry.recurse, Claim::kRecipe);
    if (!why.empty()) return Log(context, path + " is not cleaned: " + why);
    collected.push_back(CollectPluginFiles(context, std::move(folder), path,
                                           entry.delete_subfolders, entry.recurse, mask));
  } catch (const Error& error) {
    if (error.kind() != Error::Kind::kMissing) Log(context, path + ": " + error.what());
  }
}

void CollectFolders(CleaningContext& context, const FileEntry& entry,
                    std::vector<FileList>& collected) {
  const FilesPlace place = FindFolders(context.machine, PlacesOf(context), entry, [&context] {
    context.view.Yield();
    return context.state.AbortRequested;
  });
  for (const std::string& refusal : place.refusals) Log(context, refusal);
  for (const std::string& folder : place.folders) {
    CollectFolder(context, folder, entry, place.mask, collected);
    if (context.state.AbortRequested) return;
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

// The list without what was seen before, in any case.
void DropSeen(PathList& files, std::unordered_set<std::string>& seen) {
  PathList fresh;
  for (size_t i = 0; i < files.size(); ++i) {
    if (seen.insert(UpCase(files[i])).second) fresh.Append(files[i]);
  }
  files = std::move(fresh);
}

}  // namespace

std::vector<FileList> ProcessRecords(CleaningContext& context, const Plugin& plugin) {
  std::vector<FileList> collected;
  for (const IniEntry& entry : plugin.ini) ProcessIni(context, entry);
  for (const FileEntry& entry : plugin.files) {
    CollectFolders(context, entry, collected);
    if (context.state.AbortRequested) return collected;
  }
  for (const RegistryEntry& entry : plugin.registry) ProcessKey(context, entry);
  return collected;
}

bool ProcessPlugin(CleaningContext& context, std::string_view path,
                   std::vector<FileList>& collected) {
  const std::optional<Plugin> plugin = LoadPluginFile(context.machine, path);
  if (!plugin) return false;
  collected = ProcessRecords(context, *plugin);
  return true;
}

void RemoveCollected(CleaningContext& context, std::vector<FileList> collected) {
  std::unordered_set<std::string> seen;
  for (FileList& list : collected) {
    DropSeen(list.PendingFiles, seen);
    RemovePendingFiles(context, list);
    if (context.state.AbortRequested) return;
  }
  for (const FileList& list : collected) {
    RemovePendingFolders(context, list);
    if (context.state.AbortRequested) return;
  }
}

void RunRecords(CleaningContext& context, const Plugin& plugin) {
  RemoveCollected(context, ProcessRecords(context, plugin));
}

bool RunPlugin(CleaningContext& context, std::string_view path) {
  std::vector<FileList> collected;
  try {
    if (!ProcessPlugin(context, path, collected)) return false;
  } catch (const Error& error) {
    Log(context, std::string(path).append(": ").append(error.what()));
    return true;
  }
  RemoveCollected(context, std::move(collected));
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
