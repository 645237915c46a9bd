#include "backup/c_un_zip.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "backup/backup_names.h"
#include "backup/entry_path.h"
#include "backup/restore.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

BackupEntry ToBackupEntry(const ZipEntry& entry) {
  BackupEntry result;
  result.path = EntryPath(entry.name);
  result.size = entry.size;
  result.last_write = LastWriteOf(entry);
  result.attributes = entry.attributes & kRestoredAttributes;
  result.refusal = RefusalOf(entry.name).value_or("");
  return result;
}

}  // namespace

std::optional<OverwriteMode> ParseOverwriteMode(std::string_view word) {
  struct Row {
    const char* word;
    OverwriteMode mode;
  };
  static constexpr Row kRows[] = {{"Always", OverwriteMode::kAlways},
                                  {"Newer", OverwriteMode::kNewer},
                                  {"Never", OverwriteMode::kNever},
                                  {"Ask", OverwriteMode::kAsk}};
  for (const Row& row : kRows) {
    if (EqualsNoCase(word, row.word)) return row.mode;
  }
  return std::nullopt;
}

std::string cUnZip::PathOf(std::string_view archive) const {
  if (archive.find_first_of("\\/:") != std::string_view::npos || archive.empty()) {
    throw Error(Error::Kind::kMissing,
                "\"" + std::string(archive) + "\" is no archive of the backup folder.");
  }
  return folder_ + std::string(archive);
}

BackupInfo cUnZip::Describe(std::string_view archive) {
  const std::string path = PathOf(archive);
  BackupInfo info;
  info.name = archive;
  info.root = RootOfArchive(archive).value_or("");
  try {
    info.entries = OpenDirectory(machine_.files, path, info.repair).count;
  } catch (const Error& error) {
    info.problem = error.what();
  }
  const FileInfo file = machine_.files.Look(path).value_or(FileInfo{});
  info.size = file.size;
  info.date = DateOfArchive(archive).value_or(ToLocalTime(file.last_write));
  return info;
}

std::vector<BackupInfo> cUnZip::ListArchives() {
  std::vector<std::string> names;
  machine_.files.Enumerate(WithoutBackslash(folder_), Detail::kKind, [&](const Entry& entry) {
    if (!entry.info.is_folder && MatchesMask(entry.name, "*.zip")) names.emplace_back(entry.name);
    return true;
  });
  std::vector<BackupInfo> archives;
  archives.reserve(names.size());
  for (const std::string& name : names) archives.push_back(Describe(name));
  const auto key = [](const BackupInfo& info) {
    const LocalTime& d = info.date;
    return std::tuple(-d.year, -d.month, -d.day, -d.hour, -d.minute, -d.second, info.name);
  };
  std::sort(archives.begin(), archives.end(),
            [&](const BackupInfo& a, const BackupInfo& b) { return key(a) < key(b); });
  return archives;
}

std::vector<BackupEntry> cUnZip::ListEntries(std::string_view archive) {
  std::optional<Repair> repair;
  std::vector<BackupEntry> entries;
  VisitEntries(OpenDirectory(machine_.files, PathOf(archive), repair), [&](const ZipEntry& entry) {
    if (!entry.name.ends_with('/')) entries.push_back(ToBackupEntry(entry));
    return true;
  });
  return entries;
}

std::string cUnZip::ExtractTemporary(std::string_view archive, std::string_view entry_path) {
  NoPrompts prompts;
  const std::string name(archive.substr(0, archive.rfind('.')));
  const std::string folder = machine_.system.TempFolder() + "Quellix\\" + name;
  const RestoreResult result =
      Restore(archive, {std::string(entry_path)}, folder, OverwriteMode::kAlways, prompts);
  if (!result.problems.empty()) throw Error(Error::Kind::kOther, result.problems[0]);
  return folder + "\\" + std::string(entry_path);
}

RestoreResult cUnZip::Restore(std::string_view archive, const std::vector<std::string>& entry_paths,
                              std::string_view to, OverwriteMode mode, Prompts& prompts) {
  const std::string path = PathOf(archive);
  const std::optional<std::string> root = RootOfArchive(archive);
  if (to.empty() && !root) {
    throw Error(Error::Kind::kOther, "The name " + std::string(archive) +
                                         " does not tell the drive; name a folder to restore to.");
  }
  std::optional<Repair> repair;
  const ZipDirectory directory = OpenDirectory(machine_.files, path, repair);
  const auto file = machine_.files.Open(path, OpenMode::kRead);
  const auto less = [](const std::string& a, const std::string& b) {
    return UpCase(a) < UpCase(b);
  };
  std::set<std::string, decltype(less)> wanted(entry_paths.begin(), entry_paths.end(), less),
      left = wanted;
  Restorer restorer(machine_.files, *file, to.empty() ? *root : WithBackslash(to), mode, prompts);
  VisitEntries(directory, [&](const ZipEntry& entry) {
    const std::string entry_path = EntryPath(entry.name);
    left.erase(entry_path);
    return (!wanted.empty() && !wanted.contains(entry_path)) || restorer.Restore(entry);
  });
  RestoreResult result = restorer.Take();
  for (const std::string& name : left) {
    if (!result.cancelled) result.problems.push_back("\"" + name + "\" is not in the archive.");
  }
  return result;
}

void cUnZip::Delete(std::string_view archive) { machine_.files.RemoveFile(PathOf(archive)); }

std::optional<Repair> cUnZip::RepairIfNeeded(std::string_view archive) {
  std::optional<Repair> repair;
  OpenDirectory(machine_.files, PathOf(archive), repair);
  return repair;
}

}  // namespace quellix
