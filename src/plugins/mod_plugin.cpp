#include "plugins/mod_plugin.h"

#include <algorithm>
#include <functional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/plugin_collector.h"
#include "plugins/plugin_list.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_exclusions.h"
#include "plugins/recipe_keys.h"
#include "registry_tools/registry_eraser.h"
#include "run/programs_in_use.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/working_folder.h"
#include "settings/own_files.h"

namespace quellix {
namespace modPlugin {
namespace {

constexpr const char* kThisPlugin = Mark("This plug-in");

RunEntry ToRunEntry(const std::string& path, const IniEntry& entry) {
  RunEntry made{.kind = EntryKind::kIniSection, .place = path, .part = "[" + entry.section + "]"};
  if (entry.delete_section) return made;
  made.kind = EntryKind::kIniKey;
  made.part += entry.key;
  return made;
}

void ProcessIni(CleaningContext& context, const IniEntry& entry) {
  const IniPlace place = FindIni(context.machine, PlacesOf(context), entry);
  if (!place.refusal.empty()) return LogLine(context.state, Logged(place.refusal));
  RunEntry erased = ToRunEntry(place.path, entry);
  if (!IsChosen(context.state, erased)) return;
  ProfileStrings& profile = context.machine.profile;
  try {
    const bool found = entry.delete_section
                           ? profile.DeleteSection(place.path, entry.section)
                           : profile.DeleteKey(place.path, entry.section, entry.key);
    if (found) NoteEntry(context.state, std::move(erased));
  } catch (const Error& error) {
    LogLine(context.state, Log("%1: %2", place.path, SentenceOf(error)));
  }
}

// Which of the masks may be taken from a folder; why others may not is told.
std::vector<std::string> MasksFor(CleaningContext& context, Folder& folder, const std::string& path,
                                  bool recurse, std::vector<std::string> masks) {
  std::erase_if(masks, [&](const std::string& mask) {
    const Sentence why = PlacesOf(context).WhyNot(folder, mask, recurse, Claim::kRecipe);
    if (!why.empty()) LogLine(context.state, Logged(Refusal(path + "\\" + mask, why)));
    return !why.empty();
  });
  return masks;
}

// A preview's looks at its files begin while further folders are read.
void Add(CleaningContext& context, FileList list, Collected& collected) {
  collected.lists.push_back(std::move(list));
  if (context.state.IsPreview)
    collected.expected.push_back(ExpectLooks(context, {&collected.lists.back(), 1}));
}

// What one folder adds; nothing when it is missing. It is judged as it is held open.
void CollectFolder(CleaningContext& context, const std::string& path, const FileEntry& entry,
                   const std::vector<std::string>& wanted, const Exclusions& exclusions,
                   Collected& collected) {
  try {
    std::shared_ptr<Folder> folder = context.machine.files.OpenFolder(path);
    if (!folder) return;
    NotePlace(context.state);
    const auto masks = MasksFor(context, *folder, path, entry.recurse, wanted);
    if (masks.empty()) return;
    const bool goes_itself = entry.remove_self && !PlacesOf(context).IsNoted(*folder) &&
                             !exclusions.In(*folder, path).LeavesFolder(WithBackslash(path));
    const EmptiedFolder itself{path, folder->Id()};
    FileList list = CollectPluginFiles(context, std::move(folder), path, entry.delete_subfolders,
                                       entry.recurse, masks, &exclusions);
    const bool is_empty = list.PendingFiles.empty() && list.PendingFolders.empty();
    if (!is_empty) Add(context, std::move(list), collected);
    if (goes_itself) collected.emptied.push_back(itself);
  } catch (const Error& error) {
    if (error.kind() == Error::Kind::kMissing) return;
    for (const std::string& mask : wanted)
      LogLine(context.state, Logged(Refusal(path + "\\" + mask, SentenceOf(error))));
  }
}

// Whether two records differ in nothing but their masks.
bool AreOfSameFolders(const FileEntry& a, const FileEntry& b) {
  return a.recurse == b.recurse && a.delete_subfolders == b.delete_subfolders &&
         a.remove_self == b.remove_self && a.both_sides == b.both_sides &&
         FolderPart(a.location) == FolderPart(b.location);
}

// Records of the same folders, which are read once.
void CollectFolders(CleaningContext& context, std::span<const FileEntry> entries,
                    const Exclusions& exclusions, Collected& collected) {
  std::vector<std::pair<std::string, std::vector<std::string>>> folders;
  std::unordered_map<std::string, size_t> rows;
  for (const FileEntry& entry : entries) {
    const FilesPlace place = FindFolders(context.machine, PlacesOf(context), entry,
                                         PauseOf(context), Judging::kWhenOpened);
    for (const Sentence& refusal : place.refusals) LogLine(context.state, Logged(refusal));
    for (const std::string& folder : place.folders) {
      const auto [row, is_new] = rows.try_emplace(folder, folders.size());
      if (is_new) folders.push_back({folder, {}});
      folders[row->second].second.push_back(place.mask);
    }
  }
  for (const auto& [folder, masks] : folders) {
    CollectFolder(context, folder, entries.front(), masks, exclusions, collected);
    if (context.state.AbortRequested) return;
  }
}

RegistryTarget TargetOf(const RegistryEntry& entry, const KeyPlace& place) {
  using Kind = RegistryTarget::Kind;
  return {entry.delete_subkey ? Kind::kTree : Kind::kValue, *place.root, place.subkey,
          entry.delete_subkey ? "" : entry.value_name};
}

void EraseKey(CleaningContext& context, const RegistryEntry& entry, const KeyPlace& place,
              const Exclusions& exclusions) {
  if (!place.root) return LogLine(context.state, Logged(place.refusal));
  RegistryEraser eraser = RegistryEraser::OfRun(context);
  eraser.Guard();
  try {
    eraser.Erase(exclusions.Without(context.machine.registry, TargetOf(entry, place)));
  } catch (const Error& error) {
    context.state.SomeErrors = true;
    LogLine(context.state, Log("%1: %2", entry.key, SentenceOf(error)));
  }
}

void ProcessKeys(CleaningContext& context, const RegistryEntry& entry,
                 const Exclusions& exclusions) {
  for (const KeyPlace& place : FindKeys(context.machine.registry, entry, PauseOf(context))) {
    if (context.state.AbortRequested) return;
    EraseKey(context, entry, place, exclusions);
  }
}

// Whether one of two folders lies in the other, or is the same.
bool Overlap(std::string_view a, std::string_view b) {
  const size_t size = std::min(a.size(), b.size());
  return EqualsNoCase(a.substr(0, size), b.substr(0, size));
}

// Of few lists whether one may hold what another has; of many that is not asked.
bool MayRepeat(const std::vector<FileList>& lists, const FileList& list) {
  constexpr size_t kFew = 64;
  return lists.size() > kFew || std::ranges::any_of(lists, [&list](const FileList& other) {
           return &other != &list && Overlap(other.folder_path, list.folder_path);
         });
}

// The list without what was seen before, in any case. A stop leaves out the rest.
void DropSeen(PathList& files, std::unordered_set<std::string>& seen, const Pause& pause) {
  PathList fresh;
  for (size_t i = 0; i < files.size() && !pause(); ++i) {
    if (seen.insert(UpCase(files[i])).second) fresh.Append(files[i]);
  }
  files = std::move(fresh);
}

// Leaves each file in one list alone.
void DropRepeated(CleaningContext& context, Collected& collected) {
  const auto may_repeat = [&](const FileList& list) { return MayRepeat(collected.lists, list); };
  if (std::ranges::none_of(collected.lists, may_repeat)) return;
  collected.expected.clear();  // uses the lists
  std::unordered_set<std::string> seen;
  for (FileList& list : collected.lists) {
    if (may_repeat(list)) DropSeen(list.PendingFiles, seen, PauseOf(context));
  }
  if (context.state.IsPreview) collected.expected.push_back(ExpectLooks(context, collected.lists));
}

// The first of a recipe's programs that runs and goes on running; "" for none.
std::string RunningProgram(CleaningContext& context, const Plugin& plugin) {
  const std::string what = Tr(plugin.description.empty() ? kThisPlugin : plugin.description);
  for (const std::string& name : plugin.programs) {
    const auto runs = [&] { return context.machine.system.IsProgramRunning(name); };
    if (!IsOutOfTheWay(context, {name, what, {.file_name = name}}, runs)) return name;
  }
  return {};
}

// Whether a recipe may be carried out now; why not is told.
bool MayRun(CleaningContext& context, const Plugin& plugin, const Exclusions& exclusions) {
  for (const Sentence& refusal : exclusions.refusals()) LogLine(context.state, Logged(refusal));
  const std::string what = Log(plugin.description.empty() ? kThisPlugin : plugin.description);
  const bool is_clear = exclusions.refusals().empty() && !plugin.has_unknown_exclusion;
  const std::string program = is_clear ? RunningProgram(context, plugin) : "";
  if (!program.empty()) {
    LogLine(context.state, Log("%1 is not cleaned: %2 runs; close it first.", what, program));
  } else if (!is_clear) {
    LogLine(context.state, Log("%1 is not cleaned: what it is to leave is not known.", what));
  }
  const bool may = program.empty() && is_clear;
  context.state.SomeErrors = context.state.SomeErrors || !may;
  return may;
}

// Through the folder that it lies in, as a folder cannot go while it is held open.
void RemoveEmptied(CleaningContext& context, const EmptiedFolder& emptied) {
  try {
    FileList list{OpenFolderOf(context.machine.files, emptied.path),
                  std::string(FolderPart(emptied.path)),
                  {},
                  {}};
    if (list.folder->IdOf(NamePart(emptied.path)) != emptied.id) return;
    list.PendingFolders.Append(emptied.path + "\\");
    RemovePendingFolders(context, list);
  } catch (const Error&) {  // it has gone, or lies in nothing that can be opened
  }
}

}  // namespace

Collected ProcessRecords(CleaningContext& context, const Plugin& plugin) {
  Collected collected;
  collected.is_found = IsFound(context.machine, plugin);
  if (!collected.is_found) return collected;
  const Exclusions exclusions(context.machine, plugin.exclusions, PauseOf(context));
  if (!MayRun(context, plugin, exclusions) || context.state.AbortRequested) return collected;
  collected.is_carried_out = true;
  for (const IniEntry& entry : plugin.ini) ProcessIni(context, entry);
  for (std::span<const FileEntry> rest = plugin.files; !rest.empty();) {
    const auto other = std::ranges::find_if_not(
        rest, [&](const FileEntry& entry) { return AreOfSameFolders(entry, rest.front()); });
    const auto count = static_cast<size_t>(other - rest.begin());
    CollectFolders(context, rest.first(count), exclusions, collected);
    if (context.state.AbortRequested) return collected;
    rest = rest.subspan(count);
  }
  for (const RegistryEntry& entry : plugin.registry) ProcessKeys(context, entry, exclusions);
  return collected;
}

bool ProcessPlugin(CleaningContext& context, std::string_view path, Collected& collected) {
  const std::optional<Plugin> plugin = LoadPluginFile(context.machine, path);
  if (!plugin) return false;
  collected = ProcessRecords(context, *plugin);
  return true;
}

void RemoveCollected(CleaningContext& context, Collected collected) {
  DropRepeated(context, collected);
  for (const FileList& list : collected.lists) {
    RemovePendingFiles(context, list);
    if (context.state.AbortRequested) return;
  }
  collected.expected.clear();
  for (const FileList& list : collected.lists) {
    RemovePendingFolders(context, list);
    if (context.state.AbortRequested) return;
  }
  collected.lists.clear();
  std::ranges::stable_sort(collected.emptied, std::greater(), [](const EmptiedFolder& emptied) {
    return std::ranges::count(emptied.path, '\\');
  });
  for (const EmptiedFolder& emptied : collected.emptied) RemoveEmptied(context, emptied);
}

void LogNotFound(CleaningContext& context) {
  LogLine(context.state, Log("What it cleans was not found here."));
}

void RunRecords(CleaningContext& context, const Plugin& plugin) {
  Collected collected = ProcessRecords(context, plugin);
  if (!collected.is_found) LogNotFound(context);
  RemoveCollected(context, std::move(collected));
}

bool RunPlugin(CleaningContext& context, std::string_view path) {
  Collected collected;
  context.state.Entries->BeginRule(NamePart(path));
  try {
    if (!ProcessPlugin(context, path, collected)) return false;
  } catch (const Error& error) {
    LogLine(context.state, Log("%1: %2", path, SentenceOf(error)));
    return true;
  }
  RemoveCollected(context, std::move(collected));
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
  context.state.WhyNothing = Log("No plug-in is ticked.");
  if (!modPlugin::HasPluginList(context.machine)) return;
  BeginItem(context, item);
  ResetItemCounters(context.state);
  for (const auto& plugin : modPlugin::ReadPluginList(context.machine)) {
    if (!plugin.ticked) continue;
    NotePlace(context.state);
    // Looked for in "\Plugins\" and processed from "\plugins\": both name the same folder, and the
    // log shows it as it always was.
    modPlugin::RunPlugin(context, FoundPath(context.machine, "plugins\\" + plugin.file));
    if (context.state.AbortRequested) return EndRun(context, Mark("Aborted by user"));
  }
  EndRun(context, "");
  AppendFilesLine(context, item.log_caption);
}

}  // namespace quellix
