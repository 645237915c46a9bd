#include "cleaners/volume_items.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cleaners/skeleton.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/precious_names.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/set_for_now.h"

namespace quellix {
namespace {

constexpr bool kRisky = true;

// Far larger than what an archive or a bin is meant for, or thrown away already: these are wiped
// where the user wants that, and deleted else.
RemovalModes ForGood(const RunState& state) { return state.RemovalMode == kWipe ? kWipe : kDelete; }

void CleanBelow(CleaningContext& context, const std::string& folder, std::string_view mask = "*.*",
                FoldersPass folders_pass = FoldersPass::kYes, const Stays& stays = {}) {
  if (StopsRun(context)) return;
  CleanFolder(context, folder, mask, folders_pass, Claim::kVolumeItem, stays);
}

void CleanFile(CleaningContext& context, const std::string& path) {
  if (StopsRun(context) || !context.machine.files.Look(path, Detail::kKind)) return;
  NotePlace(context.state);
  RemoveFile(context, path, Claim::kVolumeItem);
}

std::vector<std::string> DriveRoots(CleaningContext& context) {
  std::vector<std::string> roots;
  for (const Drive& drive : context.machine.system.Drives()) {
    roots.push_back(std::string(1, drive.letter) + ":\\");
  }
  return roots;
}

// Folders in the root of a drive, in order, links left out.
std::vector<std::string> PreviousWindowsIn(CleaningContext& context, const std::string& root) {
  std::vector<std::string> names;
  context.machine.files.Enumerate(root, Detail::kKind, [&names](const Entry& entry) {
    if (entry.info.is_folder && !entry.info.is_link && IsPreviousWindows(entry.name)) {
      names.emplace_back(entry.name);
    }
    return true;
  });
  std::ranges::sort(names);
  return names;
}

// Those of Windows XP and before lie between the hives.
void CleanEventLogs(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const std::string system = context.machine.system.SystemFolder();
  CleanBelow(context, system + "\\winevt\\Logs\\", "*.evtx", FoldersPass::kNo);
  for (const char* name : {"AppEvent.Evt", "SecEvent.Evt", "SysEvent.Evt", "Internet.evt"}) {
    CleanFile(context, system + "\\config\\" + name);
  }
  EndFiles(context, item);
}

void CleanPrefetch(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  CleanBelow(context, context.machine.system.WindowsFolder() + "\\Prefetch\\", "*.*",
             FoldersPass::kNo);
  EndFiles(context, item);
}

void CleanInRoots(CleaningContext& context, const Item& item,
                  std::initializer_list<const char*> names) {
  BeginFiles(context, item);
  const SetForNow for_good(context.state.RemovalMode, ForGood(context.state));
  for (const std::string& root : DriveRoots(context)) {
    for (const char* name : names) CleanFile(context, root + name);
  }
  EndFiles(context, item);
}

void CleanHibernationFile(CleaningContext& context, const Item& item) {
  CleanInRoots(context, item, {"hiberfil.sys"});
}

void CleanPageFile(CleaningContext& context, const Item& item) {
  CleanInRoots(context, item, {"pagefile.sys", "swapfile.sys"});
}

// A bin's own desktop.ini says how Windows shows it; one that was thrown away lies deeper.
void CleanAllBins(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const SetForNow for_good(context.state.RemovalMode, ForGood(context.state));
  const auto stays = [](std::string_view path) {
    return EqualsNoCase(NamePart(path), "desktop.ini") && std::ranges::count(path, '\\') <= 3;
  };
  for (const std::string& root : DriveRoots(context)) {
    for (const char* bin : {"$Recycle.Bin\\", "RECYCLER\\", "RECYCLED\\"}) {
      CleanBelow(context, root + bin, "*.*", FoldersPass::kYes, stays);
    }
  }
  EndFiles(context, item);
}

void CleanOldWindows(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  for (const std::string& root : DriveRoots(context)) {
    for (const std::string& name : PreviousWindowsIn(context, root)) {
      const std::string folder = root + name + "\\";
      CleanBelow(context, folder);
      if (!StopsRun(context)) RemoveEmptyFolder(context, folder);
    }
  }
  EndFiles(context, item);
}

void CleanUpdateDownloads(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const std::string windows = context.machine.system.WindowsFolder();
  for (const char* folder :
       {"\\SoftwareDistribution\\Download\\", "\\SoftwareDistribution\\DeliveryOptimization\\",
        "\\ServiceProfiles\\NetworkService\\AppData\\Local\\Microsoft\\Windows\\"
        "DeliveryOptimization\\Cache\\"}) {
    CleanBelow(context, windows + folder);
  }
  EndFiles(context, item);
}

constexpr Item Make(const char* key, const char* label, const char* caption, const char* error,
                    Cleaner cleaner, ItemGuide guide) {
  return {.run_order = 0,
          .check_state_place = 0,
          .control = "",
          .label = label,
          .key = key,
          .group = Group::kFolderFiles,
          .protection = Protection::kNone,
          .log_caption = caption,
          .error_message = error,
          .in_registry = false,
          .cleaner = cleaner,
          .guide = guide};
}

constexpr std::array kVolumeItems = {
    // The first, so that what others recycle in the same run can be had again.
    Make("VolumeRecycleBins", "Recycle bins of all users", "Recycle bins of all users... ",
         "There was an error in cleaning the recycle bins. ", CleanAllBins,
         {"All that any user has thrown away, on each drive.",
          "what was deleted cannot be restored any more", kRisky}),
    Make("VolumeEventLogs", "Event logs", "Event logs... ",
         "There was an error in cleaning the event logs. ", CleanEventLogs,
         {"The logs of Windows and its programs (*.evtx; before Windows Vista *.evt).",
          "what happened on this Windows can no longer be looked up", kRisky}),
    Make("VolumePrefetch", "Prefetch files", "Prefetch files... ",
         "There was an error in cleaning the prefetch files. ", CleanPrefetch,
         {"What Windows noted of the programs that were started (Windows\\Prefetch).",
          "the next starts of programs are slower"}),
    Make("VolumeHibernationFile", "Hibernation file", "Hibernation file... ",
         "There was an error in cleaning the hibernation file. ", CleanHibernationFile,
         {"hiberfil.sys, with what was in memory at the last hibernation. A volume that is "
          "hibernated is not changed at all.",
          "never archived or recycled"}),
    Make("VolumePageFile", "Page files", "Page files... ",
         "There was an error in cleaning the page files. ", CleanPageFile,
         {"pagefile.sys and swapfile.sys of each drive, with what programs had in memory. Windows "
          "makes them anew at its next start.",
          "never archived or recycled"}),
    Make("VolumeOldWindows", "Previous Windows", "Previous Windows... ",
         "There was an error in cleaning the previous Windows. ", CleanOldWindows,
         {"What an upgrade has kept of the Windows before and of its own work: Windows.old and "
          "$Windows.~BT, whole.",
          "there is no way back to the previous Windows, and documents that were left there are "
          "lost",
          kRisky}),
    Make("VolumeUpdateDownloads", "Update downloads", "Update downloads... ",
         "There was an error in cleaning the update downloads. ", CleanUpdateDownloads,
         {"What Windows Update has downloaded for itself and for other computers.",
          "updates that are not installed yet are downloaded again"})};

}  // namespace

std::span<const Item> VolumeItems() { return kVolumeItems; }

const Item* FindVolumeItem(std::string_view key) {
  const auto found = std::ranges::find_if(
      kVolumeItems, [key](const Item& item) { return EqualsNoCase(item.key, key); });
  return found == kVolumeItems.end() ? nullptr : &*found;
}

}  // namespace quellix
