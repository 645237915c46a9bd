#include "cleaners/folder_cleaners.h"

#include <utility>

#include "cleaners/jump_list.h"
#include "cleaners/skeleton.h"
#include "cleaners/user_lists.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/removal.h"
#include "run/run_limits.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

using enum RegistryRoot;

constexpr const char* kCrashControl = "System\\CurrentControlSet\\Control\\CrashControl\\";
constexpr const char* kPrinters = "System\\CurrentControlSet\\Control\\Print\\Printers\\";
constexpr const char* kActiveXCache =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ActiveX Cache\\";
constexpr const char* kRecentDocs =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs\\";
constexpr const char* kKeepPins = Mark("Jump lists with pinned entries stay (Options)");

// The lists by kind of file, and those of the dialogs that open and save files. Before Windows 8
// they stay, as users of older versions know it.
constexpr std::pair kWindows8(6, 2);
constexpr const char* kTodaysRecentLists[] = {
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs\\*",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSavePidlMRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSavePidlMRU\\*",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\LastVisitedPidlMRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\LastVisitedPidlMRULegacy",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\CIDSizeMRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\FirstFolder",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StreamMRU"};

// An item that is one folder with all that is in it.
void CleanOneFolder(CleaningContext& context, const Item& item, std::string_view folder,
                    const Stays& stays = {}) {
  BeginFiles(context, item);
  CleanFolder(context, folder, "*.*", FoldersPass::kYes, Claim::kItem, stays);
  EndFiles(context, item);
}

// Says how Windows shows the folder, and is no trace.
bool IsDesktopIni(std::string_view path) { return EqualsNoCase(NamePart(path), "desktop.ini"); }

// Whether a jump list stays for its pinned entries, which then is noted. What does not tell, or
// cannot be read, may have some.
bool StaysForItsPins(CleaningContext& context, std::string_view path) {
  if (!IsJumpList(NamePart(path))) return false;
  try {
    const std::optional<std::string> bytes = context.machine.files.ReadWholeFile(path);
    if (!bytes || PinsOf(NamePart(path), *bytes) == Pins::kNone) return false;
  } catch (const Error&) {  // then it is not removed either
  }
  NoteEntry(context.state, {.fate = Fate::kKept, .place = std::string(path), .note = kKeepPins});
  return true;
}

void ClearRecentLists(CleaningContext& context) {
  UserLists lists(context);
  lists.AddValues(kRecentDocs);
  const WindowsVersion version = context.machine.system.Version();
  if (std::pair(version.major, version.minor) >= kWindows8) {
    for (const char* key : kTodaysRecentLists) lists.AddToday(key);
  }
  lists.Erase();
}

std::string WindowsDrive(CleaningContext& context) {
  const std::string windows = context.machine.system.WindowsFolder();
  return windows.substr(0, windows.find('\\') + 1);
}

// The dump file goes whatever the removal mode says, unarchived and uncounted: it is far larger
// than what an archive or the bin is meant for.
void DeleteDumpFile(CleaningContext& context, const std::string& full) {
  const std::optional<FileInfo> dump = context.machine.files.Look(full, Detail::kSize);
  if (!dump) return;
  NotePlace(context.state);
  RunEntry entry = FileEntry(full, *dump);
  if (!IsChosen(context.state, entry)) return;
  const FileList alone;
  try {
    WorkingFolder(context, alone, Claim::kItem).Of(full).RemoveFile(NamePart(full));
    NoteEntry(context.state, std::move(entry));
  } catch (const Error& error) {
    NoteStayed(context.state, full, error);
  }
}

// What the spooler noted of the print jobs whose files are gone, each beside its job: 00002.SHD of
// 00002.SPL. Of a job that stays they are needed, and those of others belong to jobs that wait.
FileList SettingsOfGone(CleaningContext& context, const FileList& jobs) {
  FileList settings{jobs.folder, jobs.folder_path, {}, {}};
  RunLimits limits(context);
  for (size_t i = 0; i < jobs.PendingFiles.size() && !StopsRun(context); ++i) {
    std::string path(jobs.PendingFiles[i]);
    if (context.machine.files.Look(path, Detail::kKind)) continue;
    const bool is_lower = path.back() == 'l';
    path.replace(path.size() - 2, 2, is_lower ? "hd" : "HD");
    const std::optional<FileInfo> info = context.machine.files.Look(path, Detail::kSize);
    if (!info || info->is_folder) continue;
    const std::string folder(FolderPart(path));
    if (!limits.Leaves(nullptr, folder, {NamePart(path), *info})) {
      settings.PendingFiles.Append(path);
    }
  }
  return settings;
}

// Of small dumps: Windows' own, those of drivers that hung, and those of programs.
std::vector<std::string> DumpFolders(CleaningContext& context) {
  System& system = context.machine.system;
  std::vector<std::string> folders =
      FoldersFromRegistry(context, kLocalMachine, kCrashControl, "MinidumpDir");
  folders.push_back(system.WindowsFolder() + "\\LiveKernelReports\\");
  if (const auto local = system.Environment("LOCALAPPDATA")) {
    folders.push_back(*local + "\\CrashDumps\\");
  }
  return folders;
}

}  // namespace

void CleanTempFiles(CleaningContext& context, const Item& item) {
  CleanOneFolder(context, item, context.machine.system.TempFolder());
}

void CleanMemoryDumps(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const std::string file =
      modRegistry::ReadRegString(RegistryOf(context), kLocalMachine, kCrashControl, "DumpFile");
  for (const std::string& path : ExpandSystemRootBothWays(context.machine.system, file)) {
    DeleteDumpFile(context, path);
  }
  for (const std::string& folder : DumpFolders(context)) {
    CleanFolder(context, folder, "*.dmp", FoldersPass::kNo);
  }
  EndFiles(context, item);
}

void CleanPrinterFiles(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const FileList jobs = CollectAllowed(
      context, FolderFromRegistry(context, kLocalMachine, kPrinters, "DefaultspoolDirectory"),
      "*.spl");
  if (jobs.folder) RemovePendingFiles(context, jobs);
  const FileList settings = SettingsOfGone(context, jobs);
  if (!settings.PendingFiles.empty()) RemovePendingFiles(context, settings);
  EndFiles(context, item);
}

void CleanRecentDocuments(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  size_t pinned = 0;
  const auto stays = [&](std::string_view path) {
    if (IsDesktopIni(path)) return true;
    const bool has_pins = context.state.KeepPins && StaysForItsPins(context, path);
    pinned += has_pins ? 1 : 0;
    return has_pins;
  };
  CleanFolder(context, FolderFromRegistry(context, kCurrentUser, kShellFolders, "Recent"), "*.*",
              FoldersPass::kNo, Claim::kItem, stays);
  ClearRecentLists(context);
  EndFiles(context, item);
  if (pinned > 0) {
    LogLine(context.state,
            Log("Jump lists that stay with their pinned entries: %1", std::to_string(pinned)));
  }
}

void CleanActiveX(CleaningContext& context, const Item& item) {
  CleanOneFolder(context, item, FolderFromRegistry(context, kLocalMachine, kActiveXCache, "0"),
                 IsDesktopIni);
}

void CleanOfflinePages(CleaningContext& context, const Item& item) {
  CleanOneFolder(context, item, context.machine.system.WindowsFolder() + "\\Offline Web Pages\\",
                 IsDesktopIni);
}

// There is no search drive by drive, as in the recycle bin and the indexer: it was tied to a drive
// type that no drive has, and users' logs are compared with those of earlier versions.
void CleanActiveSetup(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  for (const std::string& home : {WindowsDrive(context), context.machine.system.TempFolder()}) {
    for (const char* part :
         {"msdownld.tmp\\", "Windows\\msdownld.tmp\\", "WINNT\\msdownld.tmp\\"}) {
      CleanFolder(context, home + part, "*.*", FoldersPass::kYes);
      RemoveEmptyFolder(context, home + part);
    }
  }
  EndFiles(context, item);
}

void CleanIndexer(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  if (!context.machine.system.IsServiceRunning("cisvc")) {
    const std::string drive = WindowsDrive(context);
    std::vector<std::string> homes = {drive};
    context.machine.files.Enumerate(drive, Detail::kKind, [&](const Entry& entry) {
      if (entry.info.is_folder && !entry.info.is_link) {
        homes.push_back(drive + std::string(entry.name) + "\\");
      }
      return true;
    });
    for (const std::string& home : homes) {
      CleanFolder(context, home + "catalog.wci\\", "*.*", FoldersPass::kNo);
    }
  }
  EndFiles(context, item);
}

void CleanRecycleBin(CleaningContext& context, const Item& item) {
  RunState& state = context.state;
  BeginFiles(context, item);
  const RecycleBinContent content = context.machine.shell.QueryRecycleBin();
  RunEntry entry{.kind = EntryKind::kRecycleBin,
                 .count = static_cast<uint32_t>(std::min<uint64_t>(content.items, INT32_MAX)),
                 .bytes = content.bytes,
                 .part = std::to_string(content.items) + (content.items == 1 ? " item" : " items")};
  if (content.items > 0 && !IsChosen(state, entry)) {
    NotePlace(state);
    return EndFiles(context, item);
  }
  context.machine.shell.EmptyRecycleBin();
  NotePlace(state);
  if (content.items > 0) NoteEntry(state, std::move(entry));
  state.FilesDeleted = static_cast<int32_t>(content.items);
  state.SpaceGained = static_cast<double>(content.bytes);
  state.RunFilesDeleted += state.FilesDeleted;
  state.RunSpaceGained += state.SpaceGained;
  EndFiles(context, item);
}

}  // namespace quellix
