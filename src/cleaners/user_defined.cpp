#include "cleaners/user_defined.h"

#include <algorithm>
#include <vector>

#include "cleaners/skeleton.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "search/drive_scan.h"
#include "settings/list_files.h"

namespace quellix {
namespace {

std::vector<std::string> TrimmedEntries(CleaningContext& context, std::string_view name,
                                        std::string_view default_name) {
  std::vector<std::string> entries;
  for (const std::string& line : ReadListFile(context.machine, name, default_name)) {
    const std::string_view entry = TrimBlanks(line);
    if (!entry.empty()) entries.emplace_back(entry);
  }
  return entries;
}

std::vector<std::string> FoldersToClean(CleaningContext& context) {
  std::vector<std::string> folders = TrimmedEntries(context, "UDFO.txt", "DefUDFO.txt");
  for (std::string& folder : folders) folder = WithBackslash(folder);
  folders.push_back(context.machine.system.TempFolder());
  folders.push_back(context.machine.system.WindowsFolder() + "\\temp\\");
  const std::string app_data =
      FolderFromRegistry(context, RegistryRoot::kCurrentUser, kShellFolders, "AppData");
  if (!app_data.empty()) folders.push_back(app_data + "Microsoft\\Office\\Recent\\");
  return folders;
}

bool IsIgnored(std::string_view folder, const std::vector<std::string>& ignored) {
  return std::ranges::any_of(
      ignored, [folder](const std::string& part) { return ContainsNoCase(folder, part); });
}

}  // namespace

void CleanUserFiles(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  context.state.WhyNothing = Log("None of the listed files is there.");
  FileList list;
  for (const std::string& path : TrimmedEntries(context, "UDFI.txt", "DefUDFI.txt")) {
    const std::optional<FileInfo> info = context.machine.files.Look(path, Detail::kKind);
    if (info && !info->is_folder) list.PendingFiles.Append(path);
  }
  if (!list.PendingFiles.empty()) NotePlace(context.state);
  RemovePendingFiles(context, list, Claim::kOwnList);
  EndFiles(context, item);
}

void CleanUserFolders(CleaningContext& context, const Item& item) {
  BeginFiles(context, item);
  const std::vector<std::string> ignored = TrimmedEntries(context, "UDIFO.txt", "");
  for (const std::string& folder : FoldersToClean(context)) {
    if (IsIgnored(folder, ignored)) continue;
    context.state.Entries->BeginRule(folder);
    CleanFolder(context, folder, "*.*", FoldersPass::kNo, Claim::kOwnList);
  }
  EndFiles(context, item);
}

}  // namespace quellix
