#include "backup/c_un_zip.h"

#include <set>

#include "backup/backup_names.h"
#include "backup/entry_path.h"
#include "backup/restore.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

BackupEntry ToBackupEntry(const ZipEntry& entry, System& system) {
  BackupEntry result;
  result.path = EntryPath(entry.name);
  result.size = entry.size;
  result.last_write = LastWriteOf(entry, system);
  result.attributes = entry.attributes & (kReadOnly | kHidden | kSystem | kArchive);
  result.refusal = RefusalOf(entry.name, entry.own).value_or("");
  return result;
}

// The entries that are asked for; all when none is named.
class Wanted {
 public:
  explicit Wanted(const std::vector<std::string>& paths)
      : paths_(paths.begin(), paths.end()), missing_(paths_) {}

  bool Has(const std::string& path) const { return paths_.empty() || paths_.contains(path); }
  void Found(const std::string& path) { missing_.erase(path); }
  void AddProblems(RestoreResult& result) const {
    if (result.cancelled) return;
    for (const std::string& path : missing_) {
      result.problems.push_back(Tr("\"%1\" is not in the archive.", path));
    }
  }

 private:
  struct Less {
    bool operator()(const std::string& a, const std::string& b) const {
      return UpCase(a) < UpCase(b);
    }
  };
  const std::set<std::string, Less> paths_;
  std::set<std::string, Less> missing_;
};

// What is done to an archive as a whole.
Pause OnArchive(const Pause& pause, std::string_view path, const char* work) {
  return [&pause, name = NamePart(path), work](const Progress& progress) {
    return pause({progress.done, progress.total, name, work});
  };
}

}  // namespace

std::unique_ptr<ZipReader> cUnZip::Open(const std::string& path, const Pause& pause) const {
  std::optional<quellix::Repair> found;
  return OpenZip(machine_.files, path, found, OnArchive(pause, path, Mark("Reading")));
}

bool cUnZip::Takes(std::string_view name) const { return MatchesMask(name, "*.zip"); }

BackupInfo cUnZip::Describe(const std::string& path, const Pause& pause) {
  BackupInfo info;
  info.name = NamePart(path);
  info.root = RootOfArchive(info.name).value_or("");
  try {
    std::optional<quellix::Repair> found;
    const Pause reading = OnArchive(pause, path, Mark("Reading"));
    info.entries = OpenZip(machine_.files, path, found, reading)->count();
    if (found) info.incomplete = Tr("The archive is incomplete: %1.", found->Counts().shown);
  } catch (const Error& error) {
    info.problem = Shown(error);
  }
  const FileInfo file = machine_.files.Look(path).value_or(FileInfo{});
  info.size = file.size;
  const auto date = DateOfArchive(info.name);
  info.date = date ? *date : machine_.system.ToLocalTime(file.last_write);
  return info;
}

std::vector<BackupEntry> cUnZip::ListEntries(const std::string& path, const Pause& pause) {
  std::vector<BackupEntry> entries;
  const auto reader = Open(path, pause);
  VisitAll(*reader, OnArchive(pause, path, Mark("Reading")), [&](const ZipEntry& entry) {
    if (!entry.name.ends_with('/')) entries.push_back(ToBackupEntry(entry, machine_.system));
  });
  return entries;
}

std::string cUnZip::Repair(const std::string& path, const Pause& pause) {
  const auto repair =
      RepairArchive(machine_.files, path, OnArchive(pause, path, Mark("Repairing")));
  return repair ? Tr("The archive is repaired: %1.", repair->Counts().shown) : "";
}

std::string cUnZip::ExtractTemporary(const std::string& path, std::string_view entry_path,
                                     const Pause& pause) {
  NoPrompts prompts;
  const std::string_view name = NamePart(path);
  const std::string folder =
      machine_.system.TempFolder() + "Quellix\\" + std::string(name.substr(0, name.rfind('.')));
  const RestoreOrder order{{std::string(entry_path)}, folder, OverwriteMode::kAlways};
  const auto copying = [&pause](Progress progress) {
    progress.work = Mark("Copying");
    return pause(progress);
  };
  const RestoreResult result = Restore(path, order, prompts, copying, nullptr);
  if (result.cancelled) throw Error(Error::Kind::kOther, Say("Stopped at your wish."));
  if (!result.problems.empty()) throw Error(Error::Kind::kOther, result.problems[0]);
  return folder + "\\" + std::string(entry_path);
}

RestoreResult cUnZip::Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                              const Pause& pause) {
  RestoreNotes notes(machine_.files, FolderPart(path));
  return Restore(path, order, prompts, pause, &notes);
}

RestoreResult cUnZip::Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                              const Pause& pause, RestoreNotes* notes) {
  const std::optional<std::string> root = RootOfArchive(NamePart(path));
  if (order.to.empty() && !root) {
    throw Error(
        Error::Kind::kOther,
        Say("The name %1 does not tell the drive; name a folder to restore to.", NamePart(path)));
  }
  const auto reader = Open(path, pause);
  Wanted wanted(order.entry_paths);
  uint64_t total = 0;
  VisitAll(*reader, OnArchive(pause, path, Mark("Reading")), [&](const ZipEntry& entry) {
    if (wanted.Has(EntryPath(entry.name))) total += StepsOf(entry);
  });
  const std::string folder = order.to.empty() ? *root : WithBackslash(order.to);
  ProtectedPlaces places(machine_, FolderPart(path));
  Restorer restorer(machine_, *reader, {folder, order.mode, places, notes}, prompts);
  restorer.OnPause(pause, total);
  reader->Visit([&](const ZipEntry& entry) {
    const std::string entry_path = EntryPath(entry.name);
    wanted.Found(entry_path);
    return wanted.Has(entry_path) ? restorer.Restore(entry) : restorer.PassOver();
  });
  RestoreResult result = restorer.Take();
  wanted.AddProblems(result);
  return result;
}

}  // namespace quellix
