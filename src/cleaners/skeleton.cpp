#include "cleaners/skeleton.h"

#include <algorithm>

#include "app/removal.h"
#include "platform/path.h"
#include "platform/text.h"
#include "search/drive_scan.h"

namespace quellix {
namespace {

constexpr std::string_view kSystemRoot = "%SYSTEMROOT%";

// Whether `folder` is `other` or holds it.
bool Holds(std::string_view folder, std::string_view other) {
  const std::string inner = WithBackslash(other);
  return !other.empty() && inner.size() >= folder.size() &&
         EqualsNoCase(std::string_view(inner).substr(0, folder.size()), folder);
}

bool IsTooPreciousToClean(CleaningContext& context, std::string_view folder) {
  System& system = context.machine.system;
  const bool is_root = std::ranges::count(folder, '\\') < 2;
  return is_root || Holds(folder, system.WindowsFolder()) || Holds(folder, system.SystemFolder()) ||
         Holds(folder, system.Environment("USERPROFILE").value_or(""));
}

void AppendCount(std::string& log, size_t count) {
  log += "Files Deleted: " + std::to_string(count);
}

}  // namespace

std::string ExpandSystemRoot(CleaningContext& context, std::string_view path) {
  if (!ContainsNoCase(path, kSystemRoot)) return std::string(path);
  const std::string system_folder = context.machine.system.SystemFolder();
  if (system_folder.empty()) return {};
  return ReplaceNoCase(path, kSystemRoot, system_folder);
}

void CleanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                 FoldersPass folders_pass) {
  if (!context.machine.files.Look(folder)) return;
  if (IsTooPreciousToClean(context, folder)) {
    context.state.RunLog.append(folder).append(
        " is not cleaned: it is a whole drive, or it holds Windows or the user's profile.\r\n");
    return;
  }
  ClearPending(context.state);
  CollectFiles(context, folder, mask);
  RemovePendingFiles(context);
  if (folders_pass == FoldersPass::kYes) RemovePendingFolders(context);
}

void ResetItemCounters(RunState& state) {
  state.FilesDeleted = 0;
  state.SpaceGained = 0;
}

void AppendFilesLine(CleaningContext& context, const Item& item) {
  std::string& log = context.state.RunLog;
  log += item.log_caption;
  AppendCount(log, context.state.FilesDeleted);
  log += " Space Gained: " +
         FormatSize(context.state.SpaceGained, 2, true, context.machine.system.UserLocale()) +
         "\r\n";
}

void AppendCountLine(CleaningContext& context, const Item& item, size_t count) {
  context.state.RunLog += item.log_caption;
  AppendCount(context.state.RunLog, count);
  context.state.RunLog += "\r\n";
}

void AppendCaptionLine(CleaningContext& context, const Item& item) {
  context.state.RunLog.append(item.log_caption).append("\r\n");
}

}  // namespace quellix
